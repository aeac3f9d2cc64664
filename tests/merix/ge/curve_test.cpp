// SPDX-License-Identifier: MIT
#include "merix/ge/curve.h"

#include <gtest/gtest.h>

#include <numbers>

using namespace merix::ge;

namespace {

constexpr double kPi = std::numbers::pi;

Curve circle(double radius) {
    return {{0, 0}, {radius, 0}, {0, radius}, 0, 2 * kPi};
}

std::vector<MxGePoint2d> flat(const Curve& curve, double tolerance, const MxDbExtents* window = nullptr) {
    std::vector<MxGePoint2d> points;
    flatten(curve, tolerance, window, points);
    return points;
}

TEST(Curve, ChordsStayWithinTheTolerance) {
    for (const double tolerance : {1.0, 0.1, 0.001}) {
        const auto points = flat(circle(50), tolerance);
        for (std::size_t i = 0; i + 1 < points.size(); ++i) {
            const double middle = std::hypot((points[i].x + points[i + 1].x) / 2, (points[i].y + points[i + 1].y) / 2);
            EXPECT_LE(50 - middle, tolerance * (1 + 1e-9));
            EXPECT_NEAR(std::hypot(points[i].x, points[i].y), 50, 1e-9);
        }
    }
}

TEST(Curve, FinerToleranceGivesMoreChords) {
    EXPECT_LT(flat(circle(50), 1.0).size(), flat(circle(50), 0.01).size());
}

TEST(Curve, EndsAreOnTheCurve) {
    const Curve arc{{10, 20}, {5, 0}, {0, 5}, kPi / 2, -kPi};
    const auto points = flat(arc, 0.01);
    EXPECT_NEAR(points.front().y, 25, 1e-12);
    EXPECT_NEAR(points.back().y, 15, 1e-12);
    EXPECT_NEAR(points[points.size() / 2].x, 15, 1e-12);
}

TEST(Curve, WhatIsOutsideTheWindowStaysCoarse) {
    const MxDbExtents window({1e9 - 1, -1, 0}, {1e9 + 1, 1, 0});
    const auto points = flat(circle(1e9), 1e-3, &window);
    EXPECT_LT(points.size(), 400U);
    for (const MxGePoint2d& p : points) {
        if (std::abs(p.y) < 1 && p.x > 0) {
            EXPECT_NEAR(p.x, 1e9, 1e-3);
        }
    }
}

TEST(Curve, BulgeOfOneIsAHalfCircleToTheRightOfTheChord) {
    const Curve arc = curveOfBulge({0, 0}, {10, 0}, 1.0);
    EXPECT_NEAR(arc.center.x, 5, 1e-12);
    EXPECT_NEAR(arc.center.y, 0, 1e-12);
    EXPECT_NEAR(arc.sweep, kPi, 1e-12);
    const MxGePoint2d middle = arc.at(arc.start + arc.sweep / 2);
    EXPECT_NEAR(middle.x, 5, 1e-12);
    EXPECT_NEAR(middle.y, -5, 1e-12);
}

TEST(Curve, NegativeBulgeRunsClockwise) {
    const Curve arc = curveOfBulge({0, 0}, {10, 0}, -std::tan(kPi / 8));
    EXPECT_NEAR(arc.sweep, -kPi / 2, 1e-12);
    EXPECT_NEAR(arc.at(arc.start).x, 0, 1e-12);
    EXPECT_NEAR(arc.at(arc.start + arc.sweep).x, 10, 1e-12);
    EXPECT_GT(arc.at(arc.start + arc.sweep / 2).y, 0);
}

TEST(Curve, ExtentsHoldTheTurningPointsOfTheArcOnly) {
    const MxDbExtents quarter = extents({{0, 0}, {10, 0}, {0, 10}, kPi / 4, kPi / 2});
    EXPECT_NEAR(quarter.maxPoint().y, 10, 1e-12);
    EXPECT_NEAR(quarter.maxPoint().x, 10 * std::sqrt(0.5), 1e-12);
    EXPECT_NEAR(quarter.minPoint().y, 10 * std::sqrt(0.5), 1e-12);
    const MxDbExtents whole = extents(circle(3));
    EXPECT_NEAR(whole.minPoint().x, -3, 1e-12);
    EXPECT_NEAR(whole.minPoint().y, -3, 1e-12);
}

TEST(Curve, ExtentsOfASlantedEllipseAreExact) {
    const Curve ellipse{{0, 0}, {3, 1}, {-1, 2}, 0, 2 * kPi};
    const MxDbExtents box = extents(ellipse);
    EXPECT_NEAR(box.maxPoint().x, std::hypot(3, 1), 1e-12);
    EXPECT_NEAR(box.maxPoint().y, std::hypot(1, 2), 1e-12);
}

TEST(Curve, ReachIsTheLargerHalfAxis) {
    EXPECT_NEAR(circle(7).reach(), 7, 1e-12);
    const Curve slanted{{0, 0}, {4, 3}, {-0.3, 0.4}, 0, 1};
    EXPECT_NEAR(slanted.reach(), 5, 1e-12);
}

TEST(Curve, NumbersWithoutEndGiveOnePointAndNoHang) {
    EXPECT_EQ(flat({{0, 0}, {1e308, 0}, {0, 1e308}, 0, 1}, 1e-9).size(), 1U);
}

} // namespace
