// SPDX-License-Identifier: MIT
// Circles and arcs from the points that a person gives, in the plane of the drawing.
#pragma once

#include "host/ge/geometry.h"

#include <optional>

namespace merix::ed {

struct CirclePlace {
    MxGePoint3d center;
    double radius = 0.0;
};

/// The circle through three points; nothing when they lie on a line.
std::optional<CirclePlace> circleThrough(const MxGePoint3d& a, const MxGePoint3d& b, const MxGePoint3d& c);

/// The angle of `to` seen from `from`, radians in (-pi, pi].
double directionTo(const MxGePoint3d& from, const MxGePoint3d& to);

/// An angle brought to [0, 2 pi).
double positiveAngle(double radians);

/// The bulge (tangent of a quarter of the sweep, counter-clockwise above 0) of the arc that leaves `from` in the
/// direction `tangent` and ends in `to`; 0 when the end lies straight ahead, nothing when it lies straight behind.
std::optional<double> tangentBulge(const MxGePoint3d& from, double tangent, const MxGePoint3d& to);

/// The bulge of the arc from `from` through `middle` to `to`; 0 when they lie on a line.
double bulgeThrough(const MxGePoint3d& from, const MxGePoint3d& middle, const MxGePoint3d& to);

/// The direction in which a segment of that bulge ends.
double endDirection(const MxGePoint3d& from, const MxGePoint3d& to, double bulge);

} // namespace merix::ed
