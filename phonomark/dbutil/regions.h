// SPDX-License-Identifier: MIT
// Rectangle tests in the drawing's plane: bounds belong to the rectangle, z is ignored.
#pragma once

#include "host/ge/extents.h"

/// A rectangle of pixels by its sides; which of left and right, top and bottom is the greater does not matter to the
/// one inside.
struct tagRECT {
    int left = 0, top = 0, right = 0, bottom = 0;
};

bool PtInRegion(const MxGePoint3d& point, const MxDbExtents& extents);
bool RegionInRegion(const MxDbExtents& inner, const MxDbExtents& outer);

/// True when `extents` lie wholly inside what the active drawing view shows; false without a view. Main thread only.
bool RegionInDwgView(const MxDbExtents& extents);

/// True when all sides of `inner` lie between those of `outer`, or on them.
bool RectInRect(const tagRECT* inner, const tagRECT* outer);
