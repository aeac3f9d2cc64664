// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/entity.h"

namespace merix::ed {

/// Moves those defining points of an entity (open for write) that lie in `box`; one that lies in it whole is moved. A
/// circle, a text or an insert goes with its centre or insertion point, or stays.
Mx::ErrorStatus stretch(MxDbEntity& entity, const MxDbExtents& box, const MxGeVector3d& by);

} // namespace merix::ed
