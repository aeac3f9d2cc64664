// SPDX-License-Identifier: MIT
#include "merix/ui/highlights.h"

#include "merix/ed/selection.h"

#include <algorithm>

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
    const bool known = std::find(m_ids.begin(), m_ids.end(), id) != m_ids.end();
    if (known == highlighted)
        return;
    if (highlighted)
        m_ids.push_back(id);
    else
        std::erase(m_ids, id);
    Q_EMIT changed();
}

void Highlights::objectErased(MxDbObject& object, bool erasing) {
    if (!erasing || !object.data().isEntity)
        return;
    const MxDbObjectId id = object.objectId();
    if (std::erase(m_ids, id))
        Q_EMIT changed();
    if (ed::Selection::instance().contains(id))
        ed::Selection::instance().remove({id});
}

} // namespace merix::ui
