// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

#include "host/db/object_id.h"
#include "host/ge/matrix.h"

#include <vector>

namespace merix::ed {

/// Applies the map to entities; the user is told how many could not take it, and these stay as they are.
void transformEntities(const std::vector<MxDbObjectId>& ids, const MxGeMatrix3d& map);

/// The reflection in the line through `point` along a vector of the plane that is not null. A line along an axis leaves
/// the other coordinate as it is, to the last digit.
MxGeMatrix3d mirrorAbout(const MxGePoint3d& point, const MxGeVector3d& along);

/// MOVE, COPY, ROTATE, SCALE and MIRROR.
void registerTransformCommands(CommandStack& stack);

} // namespace merix::ed
