// SPDX-License-Identifier: MIT
#include "merix/ed/arc_geometry.h"

#include <gtest/gtest.h>

#include <numbers>

using namespace merix::ed;

namespace {
constexpr double kPi = std::numbers::pi;
}

TEST(ArcGeometry, ACircleGoesThroughThreePoints) {
    const auto circle = circleThrough({1e6, 0, 0}, {1e6 + 1, 1, 0}, {1e6 + 2, 0, 0});
    ASSERT_TRUE(circle);
    EXPECT_NEAR(circle->center.x, 1e6 + 1, 1e-9);
    EXPECT_NEAR(circle->center.y, 0, 1e-9);
    EXPECT_NEAR(circle->radius, 1, 1e-9);
}

TEST(ArcGeometry, PointsOnALineHaveNoCircle) {
    EXPECT_FALSE(circleThrough({0, 0, 0}, {1, 1, 0}, {3, 3, 0}));
    EXPECT_FALSE(circleThrough({0, 0, 0}, {0, 0, 0}, {3, 1, 0}));
    EXPECT_FALSE(circleThrough({0, 0, 0}, {3, 1, 0}, {3, 1, 0}));
    EXPECT_FALSE(circleThrough({3, 1, 0}, {0, 0, 0}, {3, 1, 0}));
}

TEST(ArcGeometry, AnglesAreBroughtIntoOneTurn) {
    EXPECT_EQ(positiveAngle(0.0), 0.0);
    EXPECT_NEAR(positiveAngle(-kPi / 2), 1.5 * kPi, 1e-12);
    EXPECT_NEAR(positiveAngle(5 * kPi), kPi, 1e-12);
}

TEST(ArcGeometry, ATangentArcBulgesToTheSideOfItsEnd) {
    EXPECT_NEAR(*tangentBulge({0, 0, 0}, 0.0, {0, 10, 0}), 1.0, 1e-12) << "half a circle";
    EXPECT_NEAR(*tangentBulge({0, 0, 0}, 0.0, {0, -10, 0}), -1.0, 1e-12);
    EXPECT_NEAR(*tangentBulge({0, 0, 0}, 0.0, {5, 5, 0}), std::tan(kPi / 8), 1e-12) << "a quarter";
    EXPECT_EQ(tangentBulge({0, 0, 0}, 0.0, {5, 0, 0}), 0.0) << "straight ahead";
    EXPECT_FALSE(tangentBulge({0, 0, 0}, 0.0, {-5, 0, 0})) << "straight back";
}

TEST(ArcGeometry, TheBulgeThroughAPointHasTheSweepOfTheArc) {
    EXPECT_NEAR(bulgeThrough({10, 0, 0}, {0, 10, 0}, {-10, 0, 0}), 1.0, 1e-12);
    EXPECT_NEAR(bulgeThrough({10, 0, 0}, {0, -10, 0}, {-10, 0, 0}), -1.0, 1e-12);
    const double r = std::sqrt(50.0);
    EXPECT_NEAR(bulgeThrough({10, 0, 0}, {r, r, 0}, {0, 10, 0}), std::tan(kPi / 8), 1e-12);
    EXPECT_NEAR(bulgeThrough({10, 0, 0}, {-10, 0, 0}, {0, -10, 0}), std::tan(3 * kPi / 8), 1e-12);
    EXPECT_EQ(bulgeThrough({0, 0, 0}, {1, 1, 0}, {2, 2, 0}), 0.0);
}

TEST(ArcGeometry, ASegmentEndsInTheDirectionOfItsArc) {
    EXPECT_NEAR(endDirection({0, 0, 0}, {10, 0, 0}, 0.0), 0.0, 1e-12);
    EXPECT_NEAR(endDirection({10, 0, 0}, {-10, 0, 0}, 1.0), 1.5 * kPi, 1e-12);
}
