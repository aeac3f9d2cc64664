// SPDX-License-Identifier: MIT
#include "phonomark/entity/icons.h"

#include <array>
#include <vector>

namespace {

constexpr double kSixteenth = 0.0625;
constexpr double kStrokeWidth = 0.0078125;
constexpr double kQuarterArc = 0.414214;
constexpr double kHalfTurn = 3.14159265;
constexpr double kHalfRoot = 0.70710678; ///< sine and cosine of 45 degrees

} // namespace

MxGePoint3d MarkerIcon::at(double x, double y) const {
    const double unit = m_side * kSixteenth;
    return {m_corner.x + x * unit, m_corner.y + y * unit, m_corner.z};
}

/// The filled area within a closed outline.
void MarkerIcon::area(const Place* places, std::size_t count) const {
    std::vector<MxGiPolylineVertex> vertices;
    for (std::size_t i = 0; i < count; ++i) {
        const MxGePoint3d point = at(places[i].x, places[i].y);
        vertices.push_back({{point.x, point.y}, places[i].bulge, 0.0, 0.0});
    }
    m_geometry.pline(vertices.data(), vertices.size(), true);
}

/// A closed line of constant width.
void MarkerIcon::stroke(const Place* places, std::size_t count) const {
    const double width = m_side * kStrokeWidth;
    std::vector<MxGiPolylineVertex> vertices;
    for (std::size_t i = 0; i < count; ++i) {
        const MxGePoint3d point = at(places[i].x, places[i].y);
        vertices.push_back({{point.x, point.y}, places[i].bulge, width, width});
    }
    m_geometry.pline(vertices.data(), vertices.size(), true);
}

void MarkerIcon::halfDisc(double x, double y, double radius, double startDirection) const {
    m_geometry.circularArc(at(x, y), radius * m_side * kSixteenth, MxGeVector3d::kZAxis, {startDirection, 0.0, 0.0},
                           kHalfTurn);
}

void MarkerIcon::drawMicrophone() const {
    // The head, a capsule; its middle reaches a little into the round ends, so that no seam shows.
    halfDisc(8, 11.5, 2.5, 1);
    constexpr std::array<Place, 4> head{{{5.5, 8.75}, {10.5, 8.75}, {10.5, 11.75}, {5.5, 11.75}}};
    area(head.data(), head.size());
    halfDisc(8, 9, 2.5, -1);
    // The cradle around it, the stem and the foot.
    constexpr std::array<Place, 6> cradle{{{3.5, 9, kQuarterArc},
                                           {8, 4.5, kQuarterArc},
                                           {12.5, 9},
                                           {11.5, 9, -kQuarterArc},
                                           {8, 5.5, -kQuarterArc},
                                           {4.5, 9}}};
    area(cradle.data(), cradle.size());
    constexpr std::array<Place, 4> stem{{{7.5, 2.5}, {8.5, 2.5}, {8.5, 5}, {7.5, 5}}};
    area(stem.data(), stem.size());
    constexpr std::array<Place, 4> foot{{{5, 2}, {11, 2}, {11, 3}, {5, 3}}};
    area(foot.data(), foot.size());
}

void MarkerIcon::drawLoudspeaker() const {
    constexpr std::array<Place, 6> box{{{2, 6}, {4.5, 6}, {8, 3}, {8, 13}, {4.5, 10}, {2, 10}}};
    area(box.data(), box.size());
    wave(2.5);
    wave(5.5);
}

/// A quarter ring, a little more than a sixteenth thick, about the loudspeaker's mouth.
void MarkerIcon::wave(double inner) const {
    constexpr double x = 7.25, y = 8, thickness = 1.25;
    const double near = inner * kHalfRoot, far = (inner + thickness) * kHalfRoot;
    const std::array<Place, 4> ring{{{x + near, y + near},
                                     {x + far, y + far, -kQuarterArc},
                                     {x + far, y - far},
                                     {x + near, y - near, kQuarterArc}}};
    area(ring.data(), ring.size());
}

void MarkerIcon::drawFrame(bool withCorners) const {
    constexpr std::array<Place, 8> rounded{{{1, 0},
                                            {15, 0, kQuarterArc},
                                            {16, 1},
                                            {16, 15, kQuarterArc},
                                            {15, 16},
                                            {1, 16, kQuarterArc},
                                            {0, 15},
                                            {0, 1, kQuarterArc}}};
    stroke(rounded.data(), rounded.size());
    if (!withCorners)
        return;
    constexpr double low = 1, high = 15, arm = 2;
    for (const double x : {low, high}) {
        for (const double y : {low, high}) {
            const double inX = x == low ? arm : -arm, inY = y == low ? arm : -arm;
            const std::array corner{at(x + inX, y), at(x, y), at(x, y + inY)};
            m_geometry.worldLine(corner.data(), corner.size());
        }
    }
}
