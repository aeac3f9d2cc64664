// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/extents.h"

namespace merix::ge {

/// The exact box of the arc center + u cos t + v sin t for t from 0 over `sweep` radians, either sign. With |sweep| of
/// a full turn or more it is the whole ellipse.
MxDbExtents arcExtents(const MxGePoint3d& center, const MxGeVector3d& u, const MxGeVector3d& v, double sweep);

} // namespace merix::ge
