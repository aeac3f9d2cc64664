// SPDX-License-Identifier: MIT
// Rectangle tests in the drawing's plane: bounds belong to the rectangle, z is ignored.
#pragma once

#include "host/ge/extents.h"

bool PtInRegion(const MxGePoint3d& point, const MxDbExtents& extents);
bool RegionInRegion(const MxDbExtents& inner, const MxDbExtents& outer);

/// True when `extents` lie wholly inside what the active drawing view shows; false without a view. Main thread only.
bool RegionInDwgView(const MxDbExtents& extents);
