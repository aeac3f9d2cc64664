// SPDX-License-Identifier: MIT
// Circular and elliptic arcs in the drawing plane, and their flattening into chords.
#pragma once

#include "host/ge/extents.h"

#include <vector>

namespace merix::ge {

/// The arc center + u cos t + v sin t for t from `start` over `sweep` (radians, either sign). Any affine image of a
/// circular arc is of this form.
struct Curve {
    MxGePoint2d center, u, v;
    double start = 0.0, sweep = 0.0;

    MxGePoint2d at(double t) const {
        const double c = std::cos(t), s = std::sin(t);
        return {center.x + u.x * c + v.x * s, center.y + u.y * c + v.y * s};
    }
    /// The larger half axis of the ellipse: no point of the curve is farther from its centre.
    double reach() const {
        const double uu = u.x * u.x + u.y * u.y, vv = v.x * v.x + v.y * v.y, uv = u.x * v.x + u.y * v.y;
        return std::sqrt((uu + vv + std::hypot(uu - vv, 2 * uv)) / 2);
    }
};

/// The arc of a polyline segment; `bulge` is not 0 and the points differ.
Curve curveOfBulge(const MxGePoint2d& from, const MxGePoint2d& to, double bulge);

/// Appends points of the curve, both ends included, so that no chord is farther than `tolerance` (greater than 0)
/// from it. Parts that stay outside `window`, when given, are left coarse: what is seen of a huge arc costs no more
/// than what is seen of a small one.
void flatten(const Curve& curve, double tolerance, const MxDbExtents* window, std::vector<MxGePoint2d>& points);

/// The exact box of the curve.
MxDbExtents extents(const Curve& curve);

} // namespace merix::ge
