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

namespace {

constexpr double kSameScale = 1e-6; ///< relative: a thousandth of a pixel across a view
constexpr double kSamePlace = 1e-3; ///< pixels
/// What calls for a scale as fine has no size: what is left of it is the rounding of its coordinates.
constexpr double kMarksAlone = 10.0 * kFinest;
constexpr int kMostSteps = 24;
/// Marks may take this part of the view; what they mark has the rest, though they then reach beyond the edge.
constexpr double kMostForMarks = 0.95;

/// `found`, or `start` where nobody could tell the two apart: showing all twice is showing it once.
ViewTransform settled(const ViewTransform& start, const ViewTransform& found) {
    const double step = kSamePlace * start.unitsPerPixel;
    const bool isSame = std::abs(found.unitsPerPixel - start.unitsPerPixel) <= kSameScale * start.unitsPerPixel &&
                        std::abs(found.center.x - start.center.x) <= step &&
                        std::abs(found.center.y - start.center.y) <= step;
    return isSame ? start : found;
}

} // namespace

/// The scale that a box calls for grows with the scale that it is measured at, along a line that only ever bends
/// upwards: extents are the largest of sums of a place and a number of pixels. Secants from below therefore meet the
/// wanted scale, at which both are the same, from below, and for a straight line at once.
std::optional<ViewTransform> fitMeasured(const ViewTransform& start,
                                         const std::function<MxDbExtents(const ViewTransform&)>& measure) {
    const auto fittedAt = [&](double scale) -> std::optional<ViewTransform> {
        ViewTransform trial = start;
        trial.unitsPerPixel = scale;
        const MxDbExtents box = measure(trial);
        if (box.isEmpty())
            return {};
        trial.fit(box);
        return trial;
    };
    double shown = kFinest;
    auto fitted = fittedAt(shown);
    double next = fitted ? fitted->unitsPerPixel : shown;
    for (int step = 0; fitted && step < kMostSteps; ++step) {
        if (next <= kMarksAlone || std::abs(next - shown) <= kSameScale * shown)
            break;
        const double shownBefore = shown, neededBefore = fitted->unitsPerPixel;
        shown = next;
        fitted = fittedAt(shown);
        if (!fitted)
            break;
        const double growth = (fitted->unitsPerPixel - neededBefore) / (shown - shownBefore);
        const double rest = fitted->unitsPerPixel - growth * shown;
        next = rest / (1.0 - std::min(growth, kMostForMarks));
    }
    if (fitted && next <= kMarksAlone) {
        next = start.unitsPerPixel;
        fitted = fittedAt(next);
    }
    if (!fitted)
        return {};
    fitted->unitsPerPixel = next;
    return settled(start, *fitted);
}

} // namespace merix::ge
