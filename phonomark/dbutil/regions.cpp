// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/regions.h"

#include "host/ed/input.h"
#include "host/ui/windows.h"

bool PtInRegion(const MxGePoint3d& point, const MxDbExtents& extents) {
    const MxGePoint3d &low = extents.minPoint(), &high = extents.maxPoint();
    return low.x <= point.x && point.x <= high.x && low.y <= point.y && point.y <= high.y;
}

bool RegionInRegion(const MxDbExtents& inner, const MxDbExtents& outer) {
    return inner.maxPoint().x <= outer.maxPoint().x && inner.maxPoint().y <= outer.maxPoint().y &&
           outer.minPoint().x <= inner.minPoint().x && outer.minPoint().y <= inner.minPoint().y;
}

bool RegionInDwgView(const MxDbExtents& extents) {
    const QRect client = mxuiViewRect();
    MxGePoint3d topLeft, bottomRight;
    if (client.isEmpty() || !mxedCoordFromPixelToWorld(0, client.x(), client.y(), topLeft) ||
        !mxedCoordFromPixelToWorld(0, client.x() + client.width(), client.y() + client.height(), bottomRight))
        return false;
    MxDbExtents visible;
    visible.addPoint(topLeft);
    visible.addPoint(bottomRight);
    return RegionInRegion(extents, visible);
}

bool RectInRect(const tagRECT* inner, const tagRECT* outer) {
    const auto across = [&](int x) { return outer->left <= x && x <= outer->right; };
    const auto down = [&](int y) { return outer->top <= y && y <= outer->bottom; };
    return across(inner->left) && across(inner->right) && down(inner->top) && down(inner->bottom);
}
