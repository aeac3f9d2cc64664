// SPDX-License-Identifier: MIT
#include "merix/ge/view_transform.h"

#include <gtest/gtest.h>

#include <limits>

using merix::ge::ViewTransform;

namespace {

ViewTransform view() {
    return {.center = {100, 50}, .unitsPerPixel = 0.5, .width = 800, .height = 600};
}

TEST(ViewTransform, PixelsGrowDownwardsFromTheUpperLeftCorner) {
    EXPECT_EQ(view().toWorld(0, 0), MxGePoint3d(-100, 200, 0));
    EXPECT_EQ(view().toPixel({300, -100, 0}), (MxGePoint2d{800, 600}));
}

TEST(ViewTransform, PixelsAndWorldAreInverse) {
    const MxGePoint3d world = view().toWorld(123.25, 456.5);
    const MxGePoint2d pixel = view().toPixel(world);
    EXPECT_NEAR(pixel.x, 123.25, 1e-9);
    EXPECT_NEAR(pixel.y, 456.5, 1e-9);
}

TEST(ViewTransform, ZoomKeepsThePointUnderTheCursor) {
    ViewTransform v = view();
    const MxGePoint3d before = v.toWorld(700, 20);
    v.zoomAbout(700, 20, 3.0);
    EXPECT_DOUBLE_EQ(v.unitsPerPixel, 0.5 / 3.0);
    EXPECT_NEAR(v.toWorld(700, 20).x, before.x, 1e-9);
    EXPECT_NEAR(v.toWorld(700, 20).y, before.y, 1e-9);
}

TEST(ViewTransform, ZoomByNothingSensibleChangesNothing) {
    for (const double factor : {0.0, -2.0, std::numeric_limits<double>::infinity(), std::nan("")}) {
        ViewTransform v = view();
        v.zoomAbout(10, 10, factor);
        EXPECT_EQ(v, view());
    }
}

TEST(ViewTransform, ZoomStopsWhereNumbersEnd) {
    ViewTransform v = view();
    for (int i = 0; i < 200; ++i)
        v.zoomAbout(0, 0, 10.0);
    EXPECT_GT(v.unitsPerPixel, 0.0);
    for (int i = 0; i < 400; ++i)
        v.zoomAbout(0, 0, 0.1);
    EXPECT_TRUE(std::isfinite(v.unitsPerPixel * v.width));
}

TEST(ViewTransform, FitShowsTheWholeBoxWithAMargin) {
    ViewTransform v = view();
    v.fit({{0, 0, 0}, {1000, 100, 0}}, 0.05);
    EXPECT_DOUBLE_EQ(v.toPixel({0, 0, 0}).x, 40);
    EXPECT_DOUBLE_EQ(v.toPixel({1000, 0, 0}).x, 760);
    EXPECT_DOUBLE_EQ(v.toPixel({500, 50, 0}).y, 300);
}

TEST(ViewTransform, FitToAPointMovesThereAndKeepsTheScale) {
    ViewTransform v = view();
    v.fit({{7, 8, 0}, {7, 8, 0}});
    EXPECT_EQ(v.center, (MxGePoint2d{7, 8}));
    EXPECT_EQ(v.unitsPerPixel, 0.5);
}

TEST(ViewTransform, FitToNothingChangesNothing) {
    ViewTransform v = view();
    v.fit(MxDbExtents());
    EXPECT_EQ(v, view());
}

} // namespace
