// SPDX-License-Identifier: MIT
#include "merix/ui/highlights.h"

#include "merix/ed/selection.h"

namespace merix::ui {

Highlights::Highlights(MxDbDatabase& database)
    : m_database(database.imp()) {
    m_database.addListener(this);
}

Highlights::~Highlights() {
    m_database.removeListener(this);
}

void Highlights::entityHighlighted(MxDbObject& entity, bool highlighted) {
    const MxDbObjectId id = entity.objectId();
    if (highlighted ? m_ids.insert(id).second : m_ids.erase(id) > 0)
        Q_EMIT changed();
}

void Highlights::objectErased(MxDbObject& object, bool erasing) {
    if (!erasing || !object.data().isEntity)
        return;
    const MxDbObjectId id = object.objectId();
    if (m_ids.erase(id) > 0)
        Q_EMIT changed();
    if (ed::Selection::instance().contains(id))
        ed::Selection::instance().remove({id});
}

} // namespace merix::ui
