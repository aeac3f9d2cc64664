// SPDX-License-Identifier: MIT
#include "merix/gi/band.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace merix::gi;

namespace {

/// Twice the signed area, which by the winding rule is that of the band.
double area(const std::vector<MxGePoint2d>& ring) {
    double sum = 0.0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const auto &a = ring[i], &b = ring[(i + 1) % ring.size()];
        sum += a.x * b.y - a.y * b.x;
    }
    return std::abs(sum) / 2;
}

TEST(Band, AStraightOneIsARectangle) {
    const auto ring = bandOutline({{{0, 0}, 2}, {{10, 0}, 2}}, false);
    ASSERT_EQ(ring.size(), 4U);
    EXPECT_EQ(ring[0], (MxGePoint2d{0, 1}));
    EXPECT_EQ(ring[2], (MxGePoint2d{10, -1}));
}

TEST(Band, AWidthThatFallsToNothingIsAnArrowHead) {
    EXPECT_DOUBLE_EQ(area(bandOutline({{{0, 0}, 3}, {{2, 0}, 0}}, false)), 3.0);
}

TEST(Band, CornersAreMitred) {
    const auto ring = bandOutline({{{0, 0}, 2}, {{10, 0}, 2}, {{10, 10}, 2}}, false);
    const auto has = [&](double x, double y) {
        return std::any_of(ring.begin(), ring.end(), [&](const MxGePoint2d& p) {
            return std::abs(p.x - x) < 1e-12 && std::abs(p.y - y) < 1e-12;
        });
    };
    EXPECT_TRUE(has(9, 1));
    EXPECT_TRUE(has(11, -1));
}

TEST(Band, ASharpTurnIsCutOffInsteadOfReachingFar) {
    for (const MxGePoint2d& p : bandOutline({{{0, 0}, 2}, {{100, 0}, 2}, {{0, 1}, 2}}, false))
        EXPECT_LT(p.x, 105);
}

TEST(Band, AClosedOneLeavesItsInsideOpen) {
    const auto ring = bandOutline({{{0, 0}, 2}, {{10, 0}, 2}, {{10, 10}, 2}, {{0, 10}, 2}}, true);
    EXPECT_DOUBLE_EQ(area(ring), 12 * 12 - 8 * 8);
}

TEST(Band, PointsThatDoNotDifferGiveNothing) {
    EXPECT_TRUE(bandOutline({{{5, 5}, 2}, {{5, 5}, 2}}, false).empty());
    EXPECT_TRUE(bandOutline({{{5, 5}, 2}}, true).empty());
    EXPECT_TRUE(bandOutline({}, true).empty());
}

} // namespace
