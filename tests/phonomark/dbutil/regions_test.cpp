// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/regions.h"

#include "tests/phonomark/module_fixture.h"

namespace {
const MxDbExtents kBox({1, 2, 0}, {5, 6, 0});
} // namespace

TEST(RegionsTest, ACornerBelongsToTheRegion) {
    EXPECT_TRUE(PtInRegion({1, 2, 0}, kBox));
    EXPECT_TRUE(PtInRegion({5, 6, 99}, kBox));
    EXPECT_TRUE(PtInRegion({1, 6, 0}, kBox));
    EXPECT_FALSE(PtInRegion({0.999, 2, 0}, kBox));
    EXPECT_FALSE(PtInRegion({1, 6.001, 0}, kBox));
}

TEST(RegionsTest, NoPointLiesInEmptyExtents) {
    for (const double at : {-1e30, -1.0, 0.0, 1.0, 1e30})
        EXPECT_FALSE(PtInRegion({at, at, 0}, MxDbExtents()));
}

TEST(RegionsTest, ARegionLiesInItself) {
    EXPECT_TRUE(RegionInRegion(kBox, kBox));
}

TEST(RegionsTest, ARegionThatSticksOutOnAnySideDoesNotLieInside) {
    EXPECT_TRUE(RegionInRegion(MxDbExtents({2, 3, -7}, {4, 5, 9}), kBox));
    EXPECT_FALSE(RegionInRegion(MxDbExtents({0.9, 3, 0}, {4, 5, 0}), kBox));
    EXPECT_FALSE(RegionInRegion(MxDbExtents({2, 1.9, 0}, {4, 5, 0}), kBox));
    EXPECT_FALSE(RegionInRegion(MxDbExtents({2, 3, 0}, {5.1, 5, 0}), kBox));
    EXPECT_FALSE(RegionInRegion(MxDbExtents({2, 3, 0}, {4, 6.1, 0}), kBox));
}

TEST(RegionsTest, WithoutAViewNothingIsVisible) {
    EXPECT_FALSE(RegionInDwgView(kBox));
}
