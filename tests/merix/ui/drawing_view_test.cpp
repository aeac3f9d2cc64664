// SPDX-License-Identifier: MIT
#include "merix/ui/drawing_view.h"

#include "merix/ed/command_stack.h"
#include "merix/ed/editor.h"
#include "merix/ed/input_points.h"
#include "merix/ui/look.h"
#include "tests/merix/ui/window_test.h"

using namespace merix;

namespace {

class ViewWatch final : public MxEditorReactor {
public:
    ViewWatch() { ed::Editor::instance().addReactor(this); }
    ~ViewWatch() override { ed::Editor::instance().removeReactor(this); }
    void viewChanged() override { ++changes; }
    int changes = 0;
};

class PointWatch final : public MxEdInputPointMonitor {
public:
    explicit PointWatch(ap::Document& document)
        : m_document(document) {
        document.inputPointManager()->addPointMonitor(this);
    }
    ~PointWatch() override { m_document.inputPointManager()->removePointMonitor(this); }
    Mx::ErrorStatus monitorInputPoint(const MxEdInputPoint& input) override {
        inputs.push_back(input);
        return Mx::eOk;
    }
    std::vector<MxEdInputPoint> inputs;

private:
    ap::Document& m_document;
};

class DrawingViewTest : public WindowTest {
protected:
    QRgb at(const MxGePoint3d& world) {
        const QPointF pixel = view().toWidget(world);
        return view().grab().toImage().pixel(static_cast<int>(pixel.x()), static_cast<int>(pixel.y()));
    }
};

TEST_F(DrawingViewTest, TheDrawingIsPaintedOnTheCanvas) {
    addLine({100, 0, 0}, {100, 200, 0}, 1);
    EXPECT_EQ(at({100, 50, 0}), qRgb(255, 0, 0));
    EXPECT_EQ(at({50, 50, 0}), ui::kCanvas.rgb());
}

TEST_F(DrawingViewTest, TheTopmostEntityInThePickBoxIsPicked) {
    addLine({0, 0, 0}, {100, 0, 0});
    const MxDbObjectId above = addLine({0, 0, 0}, {100, 0, 0});
    const double pixel = view().transform().unitsPerPixel;
    EXPECT_EQ(view().pick({50, 4 * pixel, 0}), above);
    EXPECT_TRUE(view().pick({50, 7 * pixel, 0}).isNull());
}

TEST_F(DrawingViewTest, TheWheelZoomsAboutTheCursor) {
    const ViewWatch watch;
    const QPointF cursor(600, 120);
    const MxGePoint3d before = view().toWorld(cursor);
    const double scale = view().transform().unitsPerPixel;
    wheel(cursor, 120);
    EXPECT_LT(view().transform().unitsPerPixel, scale);
    EXPECT_NEAR(view().toWorld(cursor).x, before.x, 1e-9);
    EXPECT_NEAR(view().toWorld(cursor).y, before.y, 1e-9);
    EXPECT_EQ(watch.changes, 1);
    wheel(cursor, -120);
    EXPECT_NEAR(view().transform().unitsPerPixel, scale, 1e-12);
}

TEST_F(DrawingViewTest, TheMiddleButtonDragsTheDrawingAlong) {
    const MxGePoint3d before = view().toWorld({300, 300});
    mouse(QEvent::MouseButtonPress, {300, 300}, Qt::MiddleButton, Qt::MiddleButton);
    mouse(QEvent::MouseMove, {350, 280}, Qt::NoButton, Qt::MiddleButton);
    mouse(QEvent::MouseButtonRelease, {350, 280}, Qt::MiddleButton);
    EXPECT_NEAR(view().toWorld({350, 280}).x, before.x, 1e-9);
    EXPECT_NEAR(view().toWorld({350, 280}).y, before.y, 1e-9);
}

TEST_F(DrawingViewTest, ADoubleMiddleClickShowsEverything) {
    addLine({-5000, -100, 0}, {5000, 100, 0});
    mouse(QEvent::MouseButtonDblClick, {10, 10}, Qt::MiddleButton, Qt::MiddleButton);
    EXPECT_GT(view().toWidget({-5000, 0, 0}).x(), 0);
    EXPECT_LT(view().toWidget({5000, 0, 0}).x(), view().width());
    EXPECT_NEAR(view().transform().center.x, 0, 1e-9);
}

TEST_F(DrawingViewTest, ResizingKeepsTheCentreAndTheScale) {
    const ge::ViewTransform before = view().transform();
    window.resize(700, 500);
    settle();
    EXPECT_EQ(view().transform().center, before.center);
    EXPECT_EQ(view().transform().unitsPerPixel, before.unitsPerPixel);
    EXPECT_EQ(view().transform().width, view().width());
}

TEST_F(DrawingViewTest, ARestingCursorIsReportedOnceWithWhatLiesUnderIt) {
    const MxDbObjectId line = addLine({100, 0, 0}, {100, 200, 0});
    PointWatch watch(*document);
    const QPointF on = view().toWidget({100, 50, 0});
    mouse(QEvent::MouseMove, on + QPointF(40, 0));
    mouse(QEvent::MouseMove, on + QPointF(3, 0)); // the moves that come at once are one
    settle();
    ASSERT_EQ(watch.inputs.size(), 1U);
    EXPECT_TRUE(watch.inputs[0].pointComputed);
    EXPECT_EQ(watch.inputs[0].pickedEntities, std::vector{line});
    EXPECT_NEAR(watch.inputs[0].rawPoint.x, view().toWorld(on + QPointF(3, 0)).x, 1e-9);
    mouse(QEvent::MouseMove, on + QPointF(8, 0));
    settle();
    ASSERT_EQ(watch.inputs.size(), 2U);
    EXPECT_TRUE(watch.inputs[1].pickedEntities.empty());
}

TEST_F(DrawingViewTest, OfWhatLiesUnderTheCursorTheTopmostIsReportedLast) {
    const MxDbObjectId below = addLine({100, 0, 0}, {100, 200, 0}), above = addLine({0, 50, 0}, {200, 50, 0});
    PointWatch watch(*document);
    mouse(QEvent::MouseMove, view().toWidget({100, 50, 0}));
    settle();
    ASSERT_EQ(watch.inputs.size(), 1U);
    EXPECT_EQ(watch.inputs[0].pickedEntities, (std::vector{below, above}));
    ed::Selection::instance().set({above});
    ed::CommandStack::instance().runGiven(QStringLiteral("DRAWORDER"), {std::wstring(L"Back")});
    mouse(QEvent::MouseMove, view().toWidget({100, 50, 0}));
    settle();
    ASSERT_EQ(watch.inputs.size(), 2U);
    EXPECT_EQ(watch.inputs[1].pickedEntities, (std::vector{above, below}));
    EXPECT_EQ(view().pick({100, 50, 0}), below);
}

TEST_F(DrawingViewTest, AZoomUnderARestingCursorIsReported) {
    PointWatch watch(*document);
    wheel({200, 200}, 240);
    settle();
    EXPECT_FALSE(watch.inputs.empty());
}

TEST_F(DrawingViewTest, NothingIsReportedWhileAButtonIsHeld) {
    PointWatch watch(*document);
    mouse(QEvent::MouseMove, {100, 100}, Qt::NoButton, Qt::LeftButton);
    settle();
    EXPECT_TRUE(watch.inputs.empty());
}

TEST_F(DrawingViewTest, AClickAnswersAPointPrompt) {
    MxGePoint3d picked;
    int result = 0;
    QTimer::singleShot(0, &window, [&] {
        mouse(QEvent::MouseButtonPress, {222, 111}, Qt::LeftButton, Qt::LeftButton);
    });
    result = ed::Prompter::instance().getPoint(nullptr, QStringLiteral("Point: "), picked);
    EXPECT_EQ(result, kInputNormal);
    EXPECT_EQ(picked, view().toWorld({222, 111}));
}

TEST_F(DrawingViewTest, EachDrawingKeepsItsView) {
    view().setTransform({.center = {7, 8},
                         .unitsPerPixel = 0.25,
                         .width = view().transform().width,
                         .height = view().transform().height});
    ap::Document* other = ap::DocManager::instance().create();
    EXPECT_EQ(view().document(), other);
    EXPECT_NE(view().transform().unitsPerPixel, 0.25);
    ap::DocManager::instance().activate(document);
    EXPECT_EQ(view().transform().unitsPerPixel, 0.25);
    EXPECT_EQ(view().transform().center, (MxGePoint2d{7, 8}));
}

TEST_F(DrawingViewTest, AnEntityLeftOutIsNotPainted) {
    const MxDbObjectId line = addLine({100, 0, 0}, {100, 200, 0}, 1);
    EXPECT_EQ(mxedRedraw(line, 2), kInputNormal);
    EXPECT_EQ(at({100, 50, 0}), ui::kCanvas.rgb());
    EXPECT_EQ(mxedRedraw(line, 1), kInputNormal);
    EXPECT_EQ(at({100, 50, 0}), qRgb(255, 0, 0));
}

TEST_F(DrawingViewTest, ALayoutThatIsRenamedKeepsItsView) {
    const QString sheet = document->layouts().at(1);
    ASSERT_TRUE(document->setCurrentLayout(sheet));
    ge::ViewTransform zoomed = view().transform();
    zoomed.unitsPerPixel = 0.25;
    view().setTransform(zoomed);
    ed::CommandStack::instance().runGiven(QStringLiteral("LAYOUT"),
                                          {std::wstring(L"Rename"), sheet.toStdWString(), std::wstring(L"Roof")});
    ASSERT_EQ(document->currentLayout(), QStringLiteral("Roof"));
    EXPECT_EQ(view().transform().unitsPerPixel, 0.25);
    ASSERT_TRUE(document->setCurrentLayout(QStringLiteral("Model")));
    EXPECT_NE(view().transform().unitsPerPixel, 0.25);
    ASSERT_TRUE(document->setCurrentLayout(QStringLiteral("Roof")));
    EXPECT_EQ(view().transform().unitsPerPixel, 0.25);
}

TEST_F(DrawingViewTest, WithoutADrawingThereIsNoActiveView) {
    EXPECT_EQ(ed::activeView(), &view());
    ap::DocManager::instance().close(*document);
    EXPECT_EQ(ed::activeView(), nullptr);
    mouse(QEvent::MouseMove, {100, 100});
    wheel({100, 100}, 120);
    settle();
    EXPECT_FALSE(view().grab().isNull());
}

} // namespace
