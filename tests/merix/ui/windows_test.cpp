// SPDX-License-Identifier: MIT
#include "host/ui/windows.h"

#include "host/ed/input.h"
#include "tests/merix/ui/window_test.h"
#include "tests/support/at_scale.h"

namespace {

class WindowsTest : public WindowTest {};

TEST_F(WindowsTest, TheViewsPixelsAreWhereTheyAreOnTheScreen) {
    int x = 0, y = 0;
    ASSERT_TRUE(mxedCoordFromWorldToPixel(0, view().toWorld({50, 60}), x, y));
    EXPECT_EQ(QPoint(x, y), QPoint(50, 60));
    EXPECT_EQ(mxuiViewToScreen({x, y}), view().mapToGlobal(QPoint(50, 60)));
}

TEST_F(WindowsTest, AScreenPointComesBackInTheMainWindow) {
    EXPECT_EQ(mxuiScreenToMainWindow(mxuiViewToScreen({50, 60})), view().mapTo(&window, QPoint(50, 60)));
    EXPECT_EQ(mxuiScreenToMainWindow(mxuiMainWindowRect().topLeft()), QPoint(0, 0));
    EXPECT_EQ(mxuiMainWindowRect().size(), window.size());
    const double scale = merix::test::scaleOfScreen();
    for (int i = 0; i < 5; ++i) {
        const QPoint pixels = mxuiScreenToMainWindowPixels(mxuiMainWindowRect().topLeft() + QPoint(100 + i, -i));
        EXPECT_EQ((QPointF(pixels) / scale).toPoint(), QPoint(100 + i, -i));
        EXPECT_NEAR(pixels.x(), (100 + i) * scale, 0.5);
    }
}

TEST_F(WindowsTest, TheViewsSizeIsThatOfItsTransform) {
    EXPECT_EQ(mxuiViewRect(), QRect(0, 0, view().width(), view().height()));
    EXPECT_EQ(mxuiMainWindow(), &window);
    EXPECT_EQ(mxuiDevicePixelRatio(), merix::test::scaleOfScreen());
}

TEST_F(WindowsTest, PixelsAreTheWindowsAtEveryScale) {
    for (const double scale : {1.25, 1.5, 2.0})
        for (const char* name : {"TheViewsPixelsAreWhereTheyAreOnTheScreen", "AScreenPointComesBackInTheMainWindow",
                                 "TheViewsSizeIsThatOfItsTransform"})
            merix::test::expectPassesAtScale(std::string("WindowsTest.") + name, scale);
}

TEST_F(WindowsTest, WithoutADrawingThereIsNoView) {
    merix::ap::DocManager::instance().close(*document);
    EXPECT_TRUE(mxuiViewRect().isEmpty());
}

TEST(Windows, WithoutAWindowThereIsNothing) {
    EXPECT_EQ(mxuiMainWindow(), nullptr);
    EXPECT_TRUE(mxuiMainWindowRect().isEmpty());
    mxuiRepairView();
}

} // namespace
