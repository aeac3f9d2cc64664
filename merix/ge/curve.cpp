// SPDX-License-Identifier: MIT
#include "merix/ge/curve.h"

#include <numbers>

namespace merix::ge {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kDeepest = 24; ///< halvings of a quarter turn: finer than a double's angle is of use

struct Flattener {
    const Curve& curve;
    double tolerance, reach;
    const MxDbExtents* window;
    std::vector<MxGePoint2d>& points;

    bool outside(const MxGePoint2d& a, const MxGePoint2d& b, double sag) const {
        return window &&
               (std::max(a.x, b.x) + sag < window->minPoint().x || std::min(a.x, b.x) - sag > window->maxPoint().x ||
                std::max(a.y, b.y) + sag < window->minPoint().y || std::min(a.y, b.y) - sag > window->maxPoint().y);
    }
    void divide(double from, const MxGePoint2d& a, double to, const MxGePoint2d& b, int depth) {
        // The chord's distance from the arc is at most this part of the larger half axis.
        const double quarter = (to - from) / 4, sine = std::sin(quarter), sag = reach * 2 * sine * sine;
        if (sag <= tolerance || depth == kDeepest || outside(a, b, sag)) {
            points.push_back(b);
            return;
        }
        const double middle = (from + to) / 2;
        const MxGePoint2d m = curve.at(middle);
        divide(from, a, middle, m, depth + 1);
        divide(middle, m, to, b, depth + 1);
    }
};

} // namespace

Curve curveOfBulge(const MxGePoint2d& from, const MxGePoint2d& to, double bulge) {
    const double dx = to.x - from.x, dy = to.y - from.y;
    // The centre lies on the bisector of the chord, at this many chord lengths to its left.
    const double offset = (1.0 - bulge * bulge) / (4.0 * bulge);
    const MxGePoint2d center{(from.x + to.x) / 2 - dy * offset, (from.y + to.y) / 2 + dx * offset};
    const double radius = std::hypot(from.x - center.x, from.y - center.y);
    return {center, {radius, 0}, {0, radius}, std::atan2(from.y - center.y, from.x - center.x), 4.0 * std::atan(bulge)};
}

void flatten(const Curve& curve, double tolerance, const MxDbExtents* window, std::vector<MxGePoint2d>& points) {
    const double reach = curve.reach();
    MxGePoint2d before = curve.at(curve.start);
    points.push_back(before);
    if (!(tolerance > 0.0) || !std::isfinite(reach) || !std::isfinite(curve.sweep))
        return;
    const double sweep = std::clamp(curve.sweep, -2 * kPi, 2 * kPi);
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / (kPi / 2) - 1e-9)));
    Flattener work{curve, tolerance, reach, window, points};
    for (int i = 0; i < pieces; ++i) {
        const double from = curve.start + sweep * i / pieces, to = curve.start + sweep * (i + 1) / pieces;
        const MxGePoint2d end = curve.at(to);
        work.divide(from, before, to, end, 0);
        before = end;
    }
}

MxDbExtents extents(const Curve& curve) {
    MxDbExtents box;
    const auto add = [&](double t) {
        const MxGePoint2d p = curve.at(t);
        box.addPoint({p.x, p.y, 0});
    };
    add(curve.start);
    add(curve.start + curve.sweep);
    const double low = std::min(curve.start, curve.start + curve.sweep), turn = std::abs(curve.sweep);
    // The turning points in x and in y lie half a turn apart each.
    for (const double extreme : {std::atan2(curve.v.x, curve.u.x), std::atan2(curve.v.y, curve.u.y)}) {
        const double first = extreme + kPi * std::ceil((low - extreme) / kPi);
        for (int i = 0; i < 3 && first + i * kPi <= low + turn; ++i)
            add(first + i * kPi);
    }
    return box;
}

} // namespace merix::ge
