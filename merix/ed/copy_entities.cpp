// SPDX-License-Identifier: MIT
#include "merix/ed/copy_entities.h"

#include "merix/db/clone.h"
#include "merix/ed/drawing_access.h"

namespace merix::ed {

namespace {

void tellLeftOut(std::size_t count) {
    if (count > 0)
        tell(count == 1 ? QStringLiteral("1 cannot be copied.") : QStringLiteral("%1 cannot be copied.").arg(count));
}

} // namespace

void copyEntities(const std::vector<MxDbObjectId>& ids, const MxGeMatrix3d& map) {
    tellLeftOut(ids.size() - db::cloneEntities(ids, drawing().currentSpace, map).size());
}

bool copyToDrawing(const std::vector<MxDbObjectId>& ids, MxDbDatabase& target, const MxGePoint3d& base) {
    const auto clones = db::wblockEntities(ids, target, base);
    tellLeftOut(ids.size() - clones.size());
    return !clones.empty();
}

std::unique_ptr<MxDbDatabase> emptyDrawing() {
    auto database = std::make_unique<MxDbDatabase>();
    const db::WorkingDatabaseScope scope(database.get());
    database->imp().createDefaults();
    database->imp().undo.setEnabled(false);
    return database;
}

} // namespace merix::ed
