// SPDX-License-Identifier: MIT
#include "merix/gi/display_list.h"

#include <algorithm>

namespace merix::gi {

namespace {

/// The pick box and what can be asked of it.
struct Aperture {
    MxDbExtents box;

    bool crossedBy(const MxGePoint2d& a, const MxGePoint2d& b) const {
        // Liang-Barsky: the part of the segment inside each pair of sides.
        double enter = 0.0, leave = 1.0;
        const auto cut = [&](double from, double step, double low, double high) {
            if (step == 0.0)
                return from >= low && from <= high;
            double t0 = (low - from) / step, t1 = (high - from) / step;
            if (t0 > t1)
                std::swap(t0, t1);
            enter = std::max(enter, t0), leave = std::min(leave, t1);
            return enter <= leave;
        };
        return cut(a.x, b.x - a.x, box.minPoint().x, box.maxPoint().x) &&
               cut(a.y, b.y - a.y, box.minPoint().y, box.maxPoint().y);
    }
    bool crossedBy(const MxGePoint2d* points, std::size_t count) const {
        for (std::size_t i = 0; i + 1 < count; ++i)
            if (crossedBy(points[i], points[i + 1]))
                return true;
        return count == 1 && crossedBy(points[0], points[0]);
    }
    /// By the winding number of the box's middle.
    bool coveredBy(const MxGePoint2d* points, std::size_t count) const {
        const double x = (box.minPoint().x + box.maxPoint().x) / 2, y = (box.minPoint().y + box.maxPoint().y) / 2;
        int winding = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const MxGePoint2d &a = points[i], &b = points[(i + 1) % count];
            const double side = (b.x - a.x) * (y - a.y) - (x - a.x) * (b.y - a.y);
            if (a.y <= y && b.y > y && side > 0)
                ++winding;
            else if (a.y > y && b.y <= y && side < 0)
                --winding;
        }
        return winding != 0;
    }
};

bool touchesText(const PlacedText& text, const Aperture& aperture) {
    const QRectF letters(0, -text.outline.descent, text.outline.advance, text.outline.ascent + text.outline.descent);
    const QPolygonF corners = text.toWorld.map(QPolygonF(letters));
    std::vector<MxGePoint2d> ring;
    for (const QPointF& corner : corners)
        ring.push_back({corner.x(), corner.y()});
    return aperture.crossedBy(ring.data(), ring.size()) || aperture.coveredBy(ring.data(), ring.size());
}

} // namespace

bool touches(const DisplayList& list, const MxGePoint3d& at, double aperture) {
    return touches(list, {{at.x - aperture, at.y - aperture, 0}, {at.x + aperture, at.y + aperture, 0}}, aperture / 8);
}

bool touches(const DisplayList& list, const MxDbExtents& sought, double tolerance) {
    const Aperture box{sought};
    std::vector<MxGePoint2d> chords;
    for (const Primitive& primitive : list.primitives) {
        const MxGePoint2d* points = list.points.data() + primitive.first;
        bool hit = false;
        switch (primitive.kind) {
        case Primitive::Kind::kStroke:
            hit = box.crossedBy(points, primitive.count);
            break;
        case Primitive::Kind::kFill:
            hit = box.crossedBy(points, primitive.count) || box.coveredBy(points, primitive.count);
            break;
        case Primitive::Kind::kCurve:
            chords.clear();
            ge::flatten(list.curves[primitive.first], std::max(tolerance, 1e-12), &box.box, chords);
            hit = box.crossedBy(chords.data(), chords.size());
            break;
        case Primitive::Kind::kBand: {
            const Band& band = list.bands[primitive.first];
            const MxGePoint2d* ring = list.points.data() + band.outline;
            hit = box.crossedBy(ring, band.outlineCount) || box.coveredBy(ring, band.outlineCount);
            break;
        }
        case Primitive::Kind::kText:
            hit = touchesText(list.texts[primitive.first], box);
            break;
        }
        if (hit)
            return true;
    }
    return false;
}

} // namespace merix::gi
