// SPDX-License-Identifier: MIT
#include "merix/ge/arc_extents.h"

#include <gtest/gtest.h>

#include <numbers>

namespace {

constexpr double kHalfTurn = std::numbers::pi;

void expectBox(const MxDbExtents& box, const MxGePoint3d& low, const MxGePoint3d& high) {
    for (const auto& [found, wanted] : {std::pair{box.minPoint(), low}, std::pair{box.maxPoint(), high}}) {
        EXPECT_NEAR(found.x, wanted.x, 1e-12);
        EXPECT_NEAR(found.y, wanted.y, 1e-12);
        EXPECT_NEAR(found.z, wanted.z, 1e-12);
    }
}

TEST(ArcExtents, AFullTurnIsBoundedByBothHalfAxes) {
    expectBox(merix::ge::arcExtents({1, 1, 1}, {3, 0, 0}, {0, 2, 0}, 2 * kHalfTurn), {-2, -1, 1}, {4, 3, 1});
    const double h = std::sqrt(2.0);
    expectBox(merix::ge::arcExtents({}, {1, 1, 0}, {-1, 1, 0}, 7), {-h, -h, 0}, {h, h, 0});
}

TEST(ArcExtents, AnArcReachesItsTurningPointsInEitherDirection) {
    expectBox(merix::ge::arcExtents({}, {1, 0, 0}, {0, 1, 0}, kHalfTurn), {-1, 0, 0}, {1, 1, 0});
    expectBox(merix::ge::arcExtents({}, {1, 0, 0}, {0, 1, 0}, -kHalfTurn), {-1, -1, 0}, {1, 0, 0});
    expectBox(merix::ge::arcExtents({}, {1, 0, 0}, {0, 1, 0}, 0.0), {1, 0, 0}, {1, 0, 0});
}

TEST(ArcExtents, AnArcThatStandsUprightHasItsHeightInZ) {
    expectBox(merix::ge::arcExtents({}, {1, 0, 0}, {0, 0, 2}, kHalfTurn / 2), {0, 0, 0}, {1, 0, 2});
}

} // namespace
