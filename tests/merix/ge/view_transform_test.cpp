// SPDX-License-Identifier: MIT
#include "merix/ge/view_transform.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using merix::ge::fitMeasured;
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

/// What lies at (0, 0) to (width, height), with marks on places of it that reach so many pixels to each side.
struct Marked {
    struct Mark {
        double x, y, left, right, up;
    };
    double width, height;
    std::vector<Mark> marks;
    int measured = 0;

    MxDbExtents at(const ViewTransform& v) {
        ++measured;
        MxDbExtents box;
        if (width > 0)
            box.set({0, 0, 0}, {width, height, 0});
        const double pixel = v.toWorld(1, 0).x - v.toWorld(0, 0).x; // rounded as a module's sizes are
        for (const Mark& mark : marks) {
            box.addPoint({mark.x - mark.left * pixel, mark.y, 0});
            box.addPoint({mark.x + mark.right * pixel, mark.y + mark.up * pixel, 0});
        }
        return box;
    }
    std::optional<ViewTransform> fit(const ViewTransform& start) {
        measured = 0;
        return fitMeasured(start, [this](const ViewTransform& v) { return at(v); });
    }
};

TEST(FitMeasured, MarksAreAsLargeAsTheyWillBe) {
    const std::vector<Marked> drawings = {
        {100, 100, {}},
        {1, 1, {{1, 1, 6, 46, 66}}},
        {1, 0, {{0, 0, 6, 46, 66}, {1, 0, 6, 46, 66}}},
        {1e-5, 2e-5, {{0, 0, 0, 32, 66}}},
        {0, 0, {{1e6, 1e6, 6, 46, 66}, {1e6 + 1, 1e6, 6, 46, 66}}},
        // The mark that reaches farthest changes with the scale.
        {10, 1, {{0, 0, 0, 200, 66}, {9, 0, 6, 46, 66}, {5, 0, 100, 0, 10}}},
        {0, 0, {{0, 0, 0, 700, 10}, {50, 0, 20, 46, 66}, {49, 5, 0, 300, 500}}},
    };
    for (Marked drawing : drawings) {
        for (const double scale : {1e-6, 0.5, 1.0, 1e9}) {
            ViewTransform start = view();
            start.unitsPerPixel = scale;
            const auto found = drawing.fit(start);
            ASSERT_TRUE(found);
            EXPECT_LE(drawing.measured, 8);
            ViewTransform again = *found;
            again.fit(drawing.at(*found));
            EXPECT_NEAR(again.unitsPerPixel / found->unitsPerPixel, 1.0, 2e-6);
            EXPECT_NEAR(again.center.x, found->center.x, 0.01 * found->unitsPerPixel);
            EXPECT_NEAR(again.center.y, found->center.y, 0.01 * found->unitsPerPixel);
            EXPECT_EQ(drawing.fit(*found), found) << "showing all twice is showing it once";
        }
    }
}

TEST(FitMeasured, MarksThatGrowEvenlyAreMeasuredThreeTimesAndNoneTwice) {
    Marked marked{1, 1, {{1, 1, 6, 46, 66}}}, plain{10, 10, {}};
    ASSERT_TRUE(marked.fit(view()) && plain.fit(view()));
    EXPECT_EQ(marked.measured, 3);
    EXPECT_EQ(plain.measured, 2);
}

TEST(FitMeasured, MarksOnOnePlaceAloneKeepTheScale) {
    for (const double place : {0.0, 7.0, 1e6, 5e9}) {
        const double beside = place == 0.0 ? 0.0 : std::nextafter(place, 1e12); // the next number is no other place
        Marked one{0, 0, {{place, -place, 6, 46, 66}, {beside, -place, 0, 32, 66}}};
        const auto found = one.fit(view());
        ASSERT_TRUE(found);
        EXPECT_EQ(found->unitsPerPixel, 0.5);
        EXPECT_NEAR(found->center.x, place + 10, 1e-6 + place * 1e-15);
        EXPECT_NEAR(found->center.y, -place + 16.5, 1e-6 + place * 1e-15);
        EXPECT_EQ(one.fit(*found), found);
    }
}

TEST(FitMeasured, MarksLargerThanTheViewLeaveRoomForWhatTheyMark) {
    Marked wide{10, 10, {{0, 0, 0, 5000, 10}}};
    const auto found = wide.fit(view());
    ASSERT_TRUE(found);
    EXPECT_GT(10 / found->unitsPerPixel, 19) << "pixels";
    EXPECT_LT(10 / found->unitsPerPixel, 600) << "pixels";
    EXPECT_LE(wide.measured, 8);
    for (const double pixels : {5e3, 5e4, 5e6}) {
        Marked alone{0, 0, {{0, 0, 0, pixels, 10}}};
        ASSERT_TRUE(alone.fit(view()));
        EXPECT_EQ(alone.fit(view())->unitsPerPixel, 0.5);
    }
    Marked vast{7e13, 0, {{0, 0, 0, 5000, 10}}};
    ASSERT_TRUE(vast.fit(view()));
    EXPECT_NEAR(vast.fit(view())->unitsPerPixel, 1e12, 1.0) << "numbers end there";
}

TEST(FitMeasured, NothingIsShownByNoView) {
    EXPECT_FALSE(Marked({}).fit(view()));
}

TEST(ViewTransform, FitToNothingChangesNothing) {
    ViewTransform v = view();
    v.fit(MxDbExtents());
    EXPECT_EQ(v, view());
}

} // namespace
