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

TEST(RegionsTest, ARectangleLiesInItselfAndInLargerOnes) {
    constexpr tagRECT outer{10, 20, 110, 220};
    EXPECT_TRUE(RectInRect(&outer, &outer));
    constexpr tagRECT inner{11, 21, 109, 219};
    EXPECT_TRUE(RectInRect(&inner, &outer));
    EXPECT_FALSE(RectInRect(&outer, &inner));
}

TEST(RegionsTest, ARectangleThatSticksOutOnAnySideDoesNotLieInside) {
    constexpr tagRECT outer{10, 20, 110, 220};
    for (const tagRECT& inner : {tagRECT{9, 30, 50, 40}, tagRECT{20, 19, 50, 40}, tagRECT{20, 30, 111, 40},
                                 tagRECT{20, 30, 50, 221}, tagRECT{111, 30, 120, 40}})
        EXPECT_FALSE(RectInRect(&inner, &outer)) << inner.left << ' ' << inner.top;
}

using RegionsInViewTest = ModuleTest;

TEST_F(RegionsInViewTest, OnlyWhatTheViewShowsWhollyIsVisible) {
    const TransformView view(0.5); // 800 x 600 pixels about the origin: 400 x 300 units
    EXPECT_TRUE(RegionInDwgView(MxDbExtents({-199, -149, 0}, {199, 149, 0})));
    EXPECT_FALSE(RegionInDwgView(MxDbExtents({-199, -149, 0}, {201, 149, 0})));
    EXPECT_FALSE(RegionInDwgView(MxDbExtents({-199, -151, 0}, {199, 149, 0})));
}
