// SPDX-License-Identifier: MIT
#include "merix/ed/arc_geometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace merix::ed {

namespace {

constexpr double kPi = std::numbers::pi;

/// Twice the area of the triangle, above 0 when it is counter-clockwise.
double turn(const MxGePoint3d& a, const MxGePoint3d& b, const MxGePoint3d& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// So flat that the circle would be told from a line by rounding alone.
bool isFlat(const MxGePoint3d& a, const MxGePoint3d& b, const MxGePoint3d& c) {
    constexpr double kTolerance = 1e-12;
    const double across = (b - a).length() * (c - a).length();
    return !(std::fabs(turn(a, b, c)) > kTolerance * across) || !((c - b).length() > 0.0);
}

} // namespace

std::optional<CirclePlace> circleThrough(const MxGePoint3d& a, const MxGePoint3d& b, const MxGePoint3d& c) {
    if (isFlat(a, b, c))
        return std::nullopt;
    // Counted from a, where the numbers are small.
    const double bx = b.x - a.x, by = b.y - a.y, cx = c.x - a.x, cy = c.y - a.y;
    const double area = 2.0 * (bx * cy - by * cx);
    const double b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
    const MxGeVector3d toCenter((cy * b2 - by * c2) / area, (bx * c2 - cx * b2) / area, 0.0);
    return CirclePlace{a + toCenter, toCenter.length()};
}

double directionTo(const MxGePoint3d& from, const MxGePoint3d& to) {
    return std::atan2(to.y - from.y, to.x - from.x);
}

double positiveAngle(double radians) {
    const double angle = std::fmod(radians, 2.0 * kPi);
    return angle < 0.0 ? angle + 2.0 * kPi : angle;
}

std::optional<double> tangentBulge(const MxGePoint3d& from, double tangent, const MxGePoint3d& to) {
    constexpr double kTolerance = 1e-9;
    // Between the tangent and the chord lies half the sweep.
    double half = positiveAngle(directionTo(from, to) - tangent);
    if (half > kPi)
        half -= 2.0 * kPi;
    if (std::fabs(half) > kPi - kTolerance)
        return std::nullopt;
    return std::fabs(half) < kTolerance ? 0.0 : std::tan(half / 2.0);
}

double bulgeThrough(const MxGePoint3d& from, const MxGePoint3d& middle, const MxGePoint3d& to) {
    if (isFlat(from, middle, to))
        return 0.0;
    // The angle at the middle point is half of what is left of the full turn.
    const MxGeVector3d u = from - middle, v = to - middle;
    const double atMiddle = std::acos(std::clamp(u.dot(v) / (u.length() * v.length()), -1.0, 1.0));
    const double bulge = std::tan((kPi - atMiddle) / 2.0);
    return turn(from, middle, to) > 0.0 ? bulge : -bulge;
}

double endDirection(const MxGePoint3d& from, const MxGePoint3d& to, double bulge) {
    return directionTo(from, to) + 2.0 * std::atan(bulge);
}

} // namespace merix::ed
