// SPDX-License-Identifier: MIT
#include "merix/gi/band.h"

#include <algorithm>

namespace merix::gi {

namespace {

struct Direction {
    double x = 0.0, y = 0.0;
};

Direction directionOf(const MxGePoint2d& a, const MxGePoint2d& b) {
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    return {(b.x - a.x) / length, (b.y - a.y) / length};
}

/// Corners sharper than this are cut off, as a mitre would reach too far.
constexpr double kLongestMitre = 4.0;

/// One side (+1 left, -1 right) of the corner at `p` between directions `in` and `out`.
void addCorner(std::vector<MxGePoint2d>& side, const BandPoint& p, const Direction& in, const Direction& out,
               double sign) {
    const double half = sign * p.width / 2, turn = 1.0 + in.x * out.x + in.y * out.y;
    if (turn > 2.0 / (kLongestMitre * kLongestMitre)) {
        side.push_back({p.point.x - (in.y + out.y) / turn * half, p.point.y + (in.x + out.x) / turn * half});
        return;
    }
    side.push_back({p.point.x - in.y * half, p.point.y + in.x * half});
    side.push_back({p.point.x - out.y * half, p.point.y + out.x * half});
}

} // namespace

std::vector<MxGePoint2d> bandOutline(std::vector<BandPoint> chain, bool closed) {
    // A change of width in place (two widths at one point) is kept as two points a hair apart in the ring only.
    const auto same = [](const BandPoint& a, const BandPoint& b) { return a.point == b.point && a.width == b.width; };
    chain.erase(std::unique(chain.begin(), chain.end(), same), chain.end());
    if (closed && chain.size() > 1 && chain.front().point == chain.back().point)
        chain.pop_back();
    const std::size_t n = chain.size();

    // Directions of the segments; one of no length takes the direction of the one before.
    const std::size_t segments = n < 2 ? 0 : closed ? n : n - 1;
    std::vector<Direction> along(segments);
    bool any = false;
    for (std::size_t i = 0; i < segments; ++i) {
        const MxGePoint2d &a = chain[i].point, &b = chain[(i + 1) % n].point;
        if (!(a == b)) {
            along[i] = directionOf(a, b);
            if (!any)
                std::fill(along.begin(), along.begin() + static_cast<std::ptrdiff_t>(i), along[i]);
            any = true;
        } else if (i > 0) {
            along[i] = along[i - 1];
        }
    }
    if (!any)
        return {};

    std::vector<MxGePoint2d> left, right;
    for (std::size_t i = 0; i < n; ++i) {
        const bool first = i == 0 && !closed, last = i + 1 == n && !closed;
        const Direction& out = along[last ? i - 1 : i];
        const Direction& in = first ? out : along[i == 0 ? segments - 1 : i - 1];
        addCorner(left, chain[i], in, out, 1.0);
        addCorner(right, chain[i], in, out, -1.0);
    }
    if (closed) {
        left.push_back(left.front());
        right.push_back(right.front());
    }
    left.insert(left.end(), right.rbegin(), right.rend());
    return left;
}

} // namespace merix::gi
