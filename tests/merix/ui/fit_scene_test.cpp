// SPDX-License-Identifier: MIT
#include "merix/ui/fit_scene.h"

#include "merix/ed/command_stack.h"
#include "merix/ui/render.h"
#include "pixel_mark.h"
#include "tests/merix/ui/window_test.h"
#include "tests/support/at_scale.h"

using namespace merix;

namespace {

class FitSceneTest : public WindowTest {
protected:
    FitSceneTest() {
        PixelMark::desc();
        mxrxBuildClassHierarchy();
    }
    PixelMark& addMark(const MxGePoint3d& place) {
        auto* mark = new PixelMark;
        mark->place = place;
        db::traits(*mark).layer = document->database()->imp().layerNamed(L"0");
        MxDbBlockTableRecord* space = nullptr;
        EXPECT_EQ(mxdbOpenObject(space, document->database()->currentSpaceId(), Mx::kForWrite), Mx::eOk);
        MxDbObjectId id;
        EXPECT_EQ(space->appendMxDbEntity(id, mark), Mx::eOk);
        mark->close();
        space->close();
        return *mark;
    }
    /// Where the marks' green is in the picture, in its pixels.
    static QRect greenIn(const QImage& picture) {
        QRect green;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixel(x, y) == qRgb(0, 255, 0))
                    green |= QRect(x, y, 1, 1);
        return green;
    }
    void expectWhole(ui::DrawingView& shown) {
        const QPointF low = shown.toWidget({0, 0, 0}), high = shown.toWidget({1, 1, 0});
        EXPECT_NEAR(high.y() - PixelMark::kPixels, 0.04 * shown.height(), 0.6) << "the mark is at the margin";
        EXPECT_NEAR(low.y(), 0.96 * shown.height(), 0.6);
    }
};

} // namespace

TEST_F(FitSceneTest, ZoomExtentsCountsAMarkAsLargeAsItIsThen) {
    addLine({0, 0, 0}, {1, 1, 0});
    addMark({1, 1, 0});
    ed::CommandStack::instance().runGiven(QStringLiteral("ZOOM"), {std::wstring(L"Extents")});
    expectWhole(view());
    const ge::ViewTransform once = view().transform();
    ed::CommandStack::instance().runGiven(QStringLiteral("ZOOM"), {std::wstring(L"Extents")});
    EXPECT_EQ(view().transform(), once);
    ge::ViewTransform far = once;
    far.unitsPerPixel = 1000;
    view().setTransform(far);
    view().grab();
    view().zoomExtents();
    expectWhole(view());
    EXPECT_EQ(greenIn(view().grab().toImage()).width(), qRound(PixelMark::kPixels * test::scaleOfScreen()) + 1);
}

TEST_F(FitSceneTest, TheFirstLookAtADrawingShowsItWhole) {
    addLine({0, 0, 0}, {1, 1, 0});
    addMark({1, 1, 0});
    document->view() = ge::ViewTransform();
    ui::DrawingView other;
    other.resize(500, 400);
    other.setDocument(document);
    expectWhole(other);
}

TEST_F(FitSceneTest, MarksAloneAreShownAsOnASheetOfPaperAndKeepTheScaleLater) {
    addMark({1000, 1000, 0});
    document->view() = ge::ViewTransform();
    ui::DrawingView other;
    other.resize(500, 400);
    ge::ViewTransform sheet = other.transform();
    sheet.width = 500 * test::scaleOfScreen();
    sheet.height = 400 * test::scaleOfScreen();
    sheet.fit(ui::kEmptySheet);
    other.setDocument(document);
    EXPECT_EQ(other.transform().unitsPerPixel, sheet.unitsPerPixel);
    EXPECT_NEAR(other.toWidget({1000, 1000, 0}).x(), 250 - 16, 0.6);
    ge::ViewTransform near = other.transform();
    near.unitsPerPixel /= 8;
    other.setTransform(near);
    other.zoomExtents();
    EXPECT_EQ(other.transform().unitsPerPixel, near.unitsPerPixel);
    EXPECT_NEAR(other.toWidget({1000, 1000, 0}).y(), 200 + 16, 0.6);
}

TEST_F(FitSceneTest, ManyMarksAreMeasuredAFewTimesEach) {
    std::vector<PixelMark*> marks;
    for (int i = 0; i < 1000; ++i)
        marks.push_back(&addMark({double(i % 100), double(i % 7), 0}));
    view().grab();
    for (PixelMark* mark : marks)
        mark->drawings = 0;
    view().zoomExtents();
    for (const PixelMark* mark : marks)
        EXPECT_LE(mark->drawings, 6);
}

TEST_F(FitSceneTest, PicturesOfDrawingsShowMarksAtTheirSize) {
    addLine({0, 0, 0}, {1, 1, 0});
    addMark({1, 1, 0});
    const QImage picture = ui::renderToImage(*document->database(), {}, {400, 300});
    const QRect mark = greenIn(picture);
    EXPECT_EQ(mark.size(), QSize(PixelMark::kPixels + 1, PixelMark::kPixels + 1));
    EXPECT_NEAR(mark.top(), 0.04 * 300, 1.0);
}

TEST_F(FitSceneTest, WhatIsMeasuredForOneViewIsPaintedForAnother) {
    addMark({0, 0, 0});
    addLine({0, 0, 0}, {1000, 1000, 0});
    view().zoomExtents();
    const QRect before = greenIn(view().grab().toImage());
    ui::renderToImage(*document->database(), {}, {100, 100});
    view().showingAll();
    view().update();
    EXPECT_EQ(greenIn(view().grab().toImage()), before);
}

class FitSceneAtScale : public testing::TestWithParam<double> {};

TEST_P(FitSceneAtScale, MarksCountTheWindowsPixels) {
    test::expectPassesAtScale("FitSceneTest.ZoomExtentsCountsAMarkAsLargeAsItIsThen", GetParam());
    test::expectPassesAtScale("FitSceneTest.MarksAloneAreShownAsOnASheetOfPaperAndKeepTheScaleLater", GetParam());
}

INSTANTIATE_TEST_SUITE_P(Scales, FitSceneAtScale, testing::Values(1.25, 1.5, 2.0),
                         [](const auto& scale) { return std::to_string(int(scale.param * 100)); });
