// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/extents.h"

#include <functional>
#include <optional>

namespace merix::ge {

/// What a drawing view shows: pixels have their origin in the upper-left corner, y down. World z is 0.
struct ViewTransform {
    MxGePoint2d center;           ///< world point in the middle of the view
    double unitsPerPixel = 1.0;   ///< world length of one pixel, greater than 0
    double width = 0, height = 0; ///< pixels
    double pixelRatio = 1.0;      ///< its pixels, which are the screen's, in one of the windows'

    MxGePoint3d toWorld(double px, double py) const {
        return {center.x + (px - width / 2) * unitsPerPixel, center.y - (py - height / 2) * unitsPerPixel, 0.0};
    }
    MxGePoint2d toPixel(const MxGePoint3d& p) const {
        return {(p.x - center.x) / unitsPerPixel + width / 2, height / 2 - (p.y - center.y) / unitsPerPixel};
    }
    MxDbExtents worldRect() const {
        return {{center.x - width * unitsPerPixel / 2, center.y - height * unitsPerPixel / 2, 0},
                {center.x + width * unitsPerPixel / 2, center.y + height * unitsPerPixel / 2, 0}};
    }
    /// Zooms so that the world point under the pixel stays there.
    void zoomAbout(double px, double py, double factor);
    /// Shows `box` whole with a margin (part of the view on each side).
    void fit(const MxDbExtents& box, double margin = 0.04);
    bool operator==(const ViewTransform&) const = default;
};

/// What shows all that `measure` finds, where marks of a size in pixels make the box depend on the view that it is
/// measured for. Where there is nothing but such marks on one place, the scale of `start` stays, which else has no
/// influence. Nothing when the box is empty.
std::optional<ViewTransform> fitMeasured(const ViewTransform& start,
                                         const std::function<MxDbExtents(const ViewTransform&)>& measure);

} // namespace merix::ge
