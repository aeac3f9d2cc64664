// SPDX-License-Identifier: MIT
#include "merix/ed/copy_entities.h"

#include "merix/db/clone.h"
#include "merix/ed/drawing_access.h"

#include <cmath>

namespace merix::ed {

namespace {

void tellLeftOut(std::size_t count) {
    if (count > 0)
        tell(count == 1 ? QStringLiteral("1 cannot be copied.") : QStringLiteral("%1 cannot be copied.").arg(count));
}

} // namespace

bool isFinite(const MxGeMatrix3d& map) {
    // What is no number, or infinite, stays so in a sum.
    return std::isfinite(map.x.x + map.x.y + map.x.z + map.y.x + map.y.y + map.y.z + map.z.x + map.z.y + map.z.z +
                         map.origin.x + map.origin.y + map.origin.z);
}

void copyEntities(const std::vector<MxDbObjectId>& ids, const MxGeMatrix3d& map) {
    if (!isFinite(map)) {
        tell(QStringLiteral("That is out of range."));
        return;
    }
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
