// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object_id.h"
#include "host/ge/matrix.h"

#include <memory>
#include <vector>

class MxDbDatabase;

namespace merix::ed {

/// False for a map that overflowed: nothing is where it leads.
bool isFinite(const MxGeMatrix3d& map);

/// Copies entities into the current space of the drawing, brought to their place by `map`. The user is told how many
/// are never copied.
void copyEntities(const std::vector<MxDbObjectId>& ids, const MxGeMatrix3d& map);

/// The same into the model space of another drawing, whose origin `base` becomes. False when nothing was copied.
bool copyToDrawing(const std::vector<MxDbObjectId>& ids, MxDbDatabase& target, const MxGePoint3d& base);

/// A drawing that is no document: for what is copied out. It keeps no undo.
std::unique_ptr<MxDbDatabase> emptyDrawing();

} // namespace merix::ed
