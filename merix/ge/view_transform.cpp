// SPDX-License-Identifier: MIT
#include "merix/ge/view_transform.h"

namespace merix::ge {

namespace {
/// Beyond these a double no longer tells neighbouring pixels of an ordinary drawing apart, or sums overflow.
constexpr double kFinest = 1e-9, kCoarsest = 1e12;
} // namespace

void ViewTransform::zoomAbout(double px, double py, double factor) {
    if (!(factor > 0.0) || !std::isfinite(factor))
        return;
    const MxGePoint3d fixed = toWorld(px, py);
    unitsPerPixel = std::clamp(unitsPerPixel / factor, kFinest, kCoarsest);
    center = {fixed.x - (px - width / 2) * unitsPerPixel, fixed.y + (py - height / 2) * unitsPerPixel};
}

void ViewTransform::fit(const MxDbExtents& box, double margin) {
    if (box.isEmpty() || width <= 0 || height <= 0)
        return;
    center = {(box.minPoint().x + box.maxPoint().x) / 2, (box.minPoint().y + box.maxPoint().y) / 2};
    const double room = 1.0 - 2.0 * std::clamp(margin, 0.0, 0.45);
    const double across = (box.maxPoint().x - box.minPoint().x) / (width * room);
    const double up = (box.maxPoint().y - box.minPoint().y) / (height * room);
    const double needed = std::max(across, up);
    // A single point has no size that could be fitted: the scale stays.
    if (needed > 0.0)
        unitsPerPixel = std::clamp(needed, kFinest, kCoarsest);
}

} // namespace merix::ge
