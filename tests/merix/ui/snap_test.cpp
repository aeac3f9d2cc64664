// SPDX-License-Identifier: MIT
#include "merix/ui/snap.h"

#include "tests/merix/ui/window_test.h"

using namespace merix;

namespace {

class SnapTest : public WindowTest {
protected:
    SnapTest() { line = addLine({100, 100, 0}, {200, 100, 0}); }
    /// What a click there answers to a prompt for a point.
    MxGePoint3d answered(const QPointF& at, const MxGePoint3d* base = nullptr) {
        MxGePoint3d point;
        QTimer::singleShot(0, &window, [&] { click(at); });
        EXPECT_EQ(ed::Prompter::instance().getPoint(base, QStringLiteral("Point: "), point), kInputNormal);
        return point;
    }
    QPointF at(double x, double y) { return view().toWidget({x, y, 0}); }
    MxDbObjectId line;
};

TEST_F(SnapTest, TheNearestPointInReachIsFound) {
    const auto end = ui::findSnap({line}, {102, 101, 0}, {}, 5.0);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->point, MxGePoint3d(100, 100, 0));
    EXPECT_EQ(end->mode, MxDbOsnapMode::kEnd);
    const auto middle = ui::findSnap({line}, {148, 101, 0}, {}, 5.0);
    ASSERT_TRUE(middle);
    EXPECT_EQ(middle->point, MxGePoint3d(150, 100, 0));
    EXPECT_EQ(middle->mode, MxDbOsnapMode::kMid);
    EXPECT_FALSE(ui::findSnap({line}, {120, 100, 0}, {}, 5.0));
}

TEST_F(SnapTest, APointAskedForIsTakenExactlyOnTheEnd) {
    EXPECT_EQ(answered(at(200, 100) + QPointF(4, -3)), MxGePoint3d(200, 100, 0));
    const QPointF away = at(200, 100) + QPointF(30, 0);
    EXPECT_EQ(answered(away), view().toWorld(away));
    view().setSnapping(false);
    const QPointF near = at(200, 100) + QPointF(4, -3);
    EXPECT_EQ(answered(near), view().toWorld(near));
}

TEST_F(SnapTest, WithOrthoThePointLiesStraightFromTheOneBefore) {
    view().setOrtho(true);
    const MxGePoint3d base(300, 200, 0);
    EXPECT_NEAR(answered(at(350, 210), &base).y, 200, 1e-9);
    EXPECT_NEAR(answered(at(310, 250), &base).x, 300, 1e-9);
    EXPECT_EQ(answered(at(200, 100), &base), MxGePoint3d(200, 100, 0)) << "a snap point goes before";
}

TEST_F(SnapTest, AMarkerShowsWhereTheClickWouldGo) {
    const auto marked = [&] {
        mouse(QEvent::MouseMove, at(200, 100) + QPointF(3, 3));
        const QImage image = view().grab().toImage();
        int found = 0;
        for (int y = -12; y < 12; ++y)
            for (int x = -12; x < 12; ++x) {
                const QColor c = image.pixelColor((at(200, 100) + QPointF(x, y)).toPoint());
                found += c.green() > 180 && c.red() < 160;
            }
        return found;
    };
    EXPECT_EQ(marked(), 0);
    int shown = 0;
    MxGePoint3d point;
    QTimer::singleShot(0, &window, [&] {
        shown = marked();
        ed::Prompter::instance().cancel();
    });
    ed::Prompter::instance().getPoint(nullptr, QStringLiteral("Point: "), point);
    EXPECT_GT(shown, 20);
}

} // namespace
