// SPDX-License-Identifier: MIT
// Object coordinate systems: planar entities keep their points in a system that follows from their normal alone.
#pragma once

#include "merix/ge/affine.h"

namespace merix::ge {

/// The map from the object coordinate system of `normal` to world coordinates (the arbitrary axis algorithm of DXF).
/// A normal of no length is taken as the z axis.
Affine ocsToWorld(const MxGeVector3d& normal);

/// True for the normal of nearly all entities, whose object coordinates are world coordinates.
inline bool isWorldZ(const MxGeVector3d& normal) {
    return normal.x == 0.0 && normal.y == 0.0 && normal.z > 0.0;
}

} // namespace merix::ge
