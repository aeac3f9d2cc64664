// SPDX-License-Identifier: MIT
#include "merix/ui/render.h"

#include "tests/merix/ui/window_test.h"

namespace {

class RenderTest : public WindowTest {};

TEST_F(RenderTest, TheWholeDrawingIsInThePicture) {
    addLine({1000, 1000, 0}, {2000, 1000, 0});
    addLine({1000, 2000, 0}, {2000, 2000, 0});
    const QImage image = merix::ui::renderToImage(*document->database(), {}, {200, 200});
    int rows = 0;
    for (int y = 0; y < 200; ++y)
        rows += image.pixel(100, y) == qRgb(255, 0, 0);
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(image.pixel(2, 8), merix::gi::PaintOptions().background.rgb());
}

TEST_F(RenderTest, AnEmptyDrawingIsBackground) {
    const QImage image = merix::ui::renderToImage(*document->database(), {}, {50, 40});
    EXPECT_EQ(image.size(), QSize(50, 40));
    EXPECT_EQ(image.pixel(25, 20), merix::gi::PaintOptions().background.rgb());
}

TEST_F(RenderTest, ASizeOfNothingGivesNoPicture) {
    EXPECT_TRUE(merix::ui::renderToImage(*document->database(), {}, {0, 10}).isNull());
}

} // namespace
