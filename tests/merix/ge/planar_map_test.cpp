// SPDX-License-Identifier: MIT
#include "merix/ge/planar_map.h"

#include <gtest/gtest.h>

#include <limits>
#include <numbers>

namespace {

using namespace merix::ge;
constexpr double kHalfTurn = std::numbers::pi;

TEST(PlanarMap, ATurnInThePlanIsATurnOfTheFigure) {
    const auto map = PlanarMap::of(Affine::rotation(kHalfTurn / 2), {0, 0, 1});
    ASSERT_TRUE(map);
    EXPECT_EQ(map->normal(), MxGeVector3d(0, 0, 1));
    EXPECT_TRUE(map->isSimilar());
    EXPECT_FALSE(map->isReversed());
    EXPECT_DOUBLE_EQ(map->turn(), kHalfTurn / 2);
    const MxGePoint3d p = *map * MxGePoint3d(2, 0, 5);
    EXPECT_NEAR(p.x, 0, 1e-12);
    EXPECT_NEAR(p.y, 2, 1e-12);
    EXPECT_NEAR(p.z, 5, 1e-12);
}

TEST(PlanarMap, AMirrorLineInThePlanLeavesTheNormalAndReversesTheFigure) {
    const auto map = PlanarMap::of(Affine::scaling(-2, 2, 2), {0, 0, 1});
    ASSERT_TRUE(map);
    EXPECT_EQ(map->normal(), MxGeVector3d(0, 0, 1));
    EXPECT_TRUE(map->isReversed());
    EXPECT_TRUE(map->isSimilar());
    EXPECT_EQ(map->scale(), 2);
    // Seen from below: the same figure of another normal.
    const auto below = PlanarMap::of(Affine::scaling(1, 1, -1), {0, 0, 1});
    ASSERT_TRUE(below);
    EXPECT_EQ(below->normal(), MxGeVector3d(0, 0, -1));
    EXPECT_TRUE(below->isReversed());
}

TEST(PlanarMap, AFigureThatLeansIsMappedInItsOwnPlane) {
    // Its x axis is the world's y axis, its y axis the world's z axis.
    const auto map = PlanarMap::of(Affine::scaling(7, 3, 3), {1, 0, 0});
    ASSERT_TRUE(map);
    EXPECT_TRUE(map->isSimilar());
    EXPECT_EQ(map->scale(), 3);
    double thickness = 2;
    EXPECT_TRUE(map->thicken(thickness));
    EXPECT_EQ(thickness, 14);
    EXPECT_FALSE(PlanarMap::of(Affine::scaling(7, 3, 2), {1, 0, 0})->isSimilar());
}

TEST(PlanarMap, AThicknessThatWouldLeanIsRefused) {
    Affine shear;
    shear.z = {0.5, 0, 1};
    const auto map = PlanarMap::of(shear, {0, 0, 1});
    ASSERT_TRUE(map);
    double none = 0, thick = 1;
    EXPECT_TRUE(map->thicken(none));
    EXPECT_FALSE(map->thicken(thick));
}

TEST(PlanarMap, AMapThatFlattensThePlaneIsNone) {
    EXPECT_FALSE(PlanarMap::of(Affine::scaling(0, 1, 1), {0, 0, 1}));
    EXPECT_TRUE(PlanarMap::of(Affine::scaling(0, 1, 1), {1, 0, 0}));
    EXPECT_FALSE(isInvertible(Affine::scaling(1, 1, 0)));
    EXPECT_FALSE(isInvertible(Affine::translation({std::numeric_limits<double>::infinity(), 0, 0})));
    EXPECT_TRUE(isInvertible(Affine::scaling(1e-3, 1e6, -1)));
}

} // namespace
