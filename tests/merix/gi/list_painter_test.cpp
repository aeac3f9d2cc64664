// SPDX-License-Identifier: MIT
#include "merix/gi/list_painter.h"

#include "tests/merix/gi/gui_test.h"

using namespace merix;
using namespace merix::gi;

namespace {

const QRgb kRed = qRgb(255, 0, 0);
const QRgb kBackground = QColor(33, 40, 48).rgb();

/// A picture of 100 x 100 pixels, one unit each, with the origin in its lower-left corner.
class ListPainterTest : public GuiTest {
protected:
    ListPainterTest() { style.rgb = kRed; }

    QImage paint(const DisplayList& list, const PaintOptions& options = {}) const {
        QImage image(100, 100, QImage::Format_RGB32);
        image.fill(options.background);
        QPainter painter(&image);
        ListPainter(painter, view, options).draw(list);
        return image;
    }
    DisplayList points(Primitive::Kind kind, std::vector<MxGePoint2d> points) const {
        DisplayList list;
        list.styles.push_back(style);
        list.primitives.push_back({kind, 0, 0, static_cast<std::uint32_t>(points.size())});
        list.points = std::move(points);
        return list;
    }
    ge::ViewTransform view{.center = {50, 50}, .unitsPerPixel = 1.0, .width = 100, .height = 100};
    Style style;
};

TEST_F(ListPainterTest, AnUprightLineFillsOneColumnInFullColour) {
    const QImage image = paint(points(Primitive::Kind::kStroke, {{30, 10}, {30, 90}}));
    EXPECT_EQ(image.pixel(30, 50), kRed);
    EXPECT_EQ(image.pixel(29, 50), kBackground);
    EXPECT_EQ(image.pixel(31, 50), kBackground);
}

TEST_F(ListPainterTest, LinesKeepOnePixelHoweverFarTheZoom) {
    view.unitsPerPixel = 1e6;
    const QImage image = paint(points(Primitive::Kind::kStroke, {{-1e9, 50}, {1e9, 50}}));
    EXPECT_EQ(image.pixel(50, 50), kRed);
}

TEST_F(ListPainterTest, ALineThatReachesFarBeyondTheViewIsSeenInIt) {
    const QImage image = paint(points(Primitive::Kind::kStroke, {{-1e12, 40}, {1e12, 40}}));
    for (int x = 0; x < 100; ++x)
        EXPECT_EQ(image.pixel(x, 60), kRed) << x;
}

TEST_F(ListPainterTest, ALineTypeLeavesItsGapsOpen) {
    style.dashes = std::make_shared<DashPattern>(DashPattern{10, -10});
    const QImage image = paint(points(Primitive::Kind::kStroke, {{0, 50}, {100, 50}}));
    EXPECT_EQ(image.pixel(5, 50), kRed);
    EXPECT_EQ(image.pixel(15, 50), kBackground);
    EXPECT_EQ(image.pixel(25, 50), kRed);
}

TEST_F(ListPainterTest, ALineTypeKeepsItsPhaseWhenTheLineBeginsFarOutsideTheView) {
    style.dashes = std::make_shared<DashPattern>(DashPattern{10, -10});
    const QImage image = paint(points(Primitive::Kind::kStroke, {{-2e7, 50}, {2e7, 50}}));
    EXPECT_EQ(image.pixel(5, 50), kRed);
    EXPECT_EQ(image.pixel(15, 50), kBackground);
}

TEST_F(ListPainterTest, ALineTypeTooFineToSeeIsContinuous) {
    style.dashes = std::make_shared<DashPattern>(DashPattern{1, -1});
    const QImage image = paint(points(Primitive::Kind::kStroke, {{0, 50}, {100, 50}}));
    for (int x = 1; x < 99; ++x)
        EXPECT_EQ(image.pixel(x, 50), kRed) << x;
}

TEST_F(ListPainterTest, AFillCoversItsInsideAndNothingElse) {
    const QImage image = paint(points(Primitive::Kind::kFill, {{20, 20}, {60, 20}, {60, 60}, {20, 60}}));
    EXPECT_EQ(image.pixel(40, 60), kRed);
    EXPECT_EQ(image.pixel(70, 60), kBackground);
}

TEST_F(ListPainterTest, AFillLargerThanTheViewCoversAllOfIt) {
    const QImage image = paint(points(Primitive::Kind::kFill, {{-1e9, -1e9}, {1e9, -1e9}, {1e9, 1e9}, {-1e9, 1e9}}));
    EXPECT_EQ(image.pixel(0, 0), kRed);
    EXPECT_EQ(image.pixel(99, 99), kRed);
}

TEST_F(ListPainterTest, WhatIsDrawnLaterCoversWhatWasDrawnBefore) {
    DisplayList list = points(Primitive::Kind::kFill, {{20, 20}, {60, 20}, {60, 60}, {20, 60}});
    Style green;
    green.rgb = qRgb(0, 255, 0);
    list.styles.push_back(green);
    list.primitives.push_back({Primitive::Kind::kStroke, 1, 4, 2});
    list.points.insert(list.points.end(), {{0, 40}, {100, 40}});
    EXPECT_EQ(paint(list).pixel(40, 60), green.rgb);
    std::swap(list.primitives[0], list.primitives[1]);
    EXPECT_EQ(paint(list).pixel(40, 60), kRed);
}

TEST_F(ListPainterTest, ColourSevenContrastsWithTheBackground) {
    style.contrast = true;
    const DisplayList line = points(Primitive::Kind::kStroke, {{0, 50}, {100, 50}});
    EXPECT_EQ(paint(line).pixel(50, 50), qRgb(255, 255, 255));
    PaintOptions paper;
    paper.background = Qt::white;
    EXPECT_EQ(paint(line, paper).pixel(50, 50), qRgb(0, 0, 0));
}

TEST_F(ListPainterTest, LineWeightsWidenLinesOnlyWhenAskedFor) {
    style.weight = 200; // 2 mm, which is 7.6 pixels
    const DisplayList line = points(Primitive::Kind::kStroke, {{0, 50}, {100, 50}});
    EXPECT_EQ(paint(line).pixel(50, 48), kBackground);
    PaintOptions heavy;
    heavy.lineWeights = true;
    EXPECT_EQ(paint(line, heavy).pixel(50, 48), kRed);
    EXPECT_EQ(paint(line, heavy).pixel(50, 40), kBackground);
}

TEST_F(ListPainterTest, ACurveIsRoundAtAnyZoom) {
    DisplayList list;
    list.styles.push_back(style);
    list.primitives.push_back({Primitive::Kind::kCurve, 0, 0});
    list.curves.push_back({{50 - 1e7, 50}, {1e7, 0}, {0, 1e7}, 0, 6.283185307});
    const QImage image = paint(list);
    for (int y = 5; y < 95; ++y) // the circle is upright here but for a 10000th of a pixel
        EXPECT_GT(qRed(image.pixel(50, y)) + qRed(image.pixel(49, y)), 200) << y;
}

TEST_F(ListPainterTest, LettersAreFilledAndTinyOnesBecomeABar) {
    DisplayList list;
    list.styles.push_back(style);
    list.primitives.push_back({Primitive::Kind::kText, 0, 0});
    list.texts.push_back({outlineOf(QStringLiteral("I")), QTransform(40, 0, 0, 40, 20, 20)});
    const double middle = 20 + 40 * list.texts[0].outline.advance / 2;
    EXPECT_EQ(paint(list).pixel(static_cast<int>(middle), 60), kRed);
    list.texts[0].toWorld = QTransform(2, 0, 0, 2, 50, 50);
    const QRgb bar = paint(list).pixel(50, 49);
    EXPECT_GT(qRed(bar), qRed(kBackground));
    EXPECT_LT(qRed(bar), 255);
}

TEST_F(ListPainterTest, PlotsAlwaysHaveLineWeightsAndZeroIsTheThinnest) {
    style.weight = 200;
    const DisplayList line = points(Primitive::Kind::kStroke, {{0, 50}, {100, 50}});
    PaintOptions plot;
    plot.plot = true;
    EXPECT_EQ(paint(line, plot).pixel(50, 47), kRed);
    EXPECT_EQ(paint(line, plot).pixel(50, 45), kBackground);
    plot.pixelRatio = 3; // three times as many pixels a millimetre
    EXPECT_EQ(paint(line, plot).pixel(50, 40), kRed);
    EXPECT_EQ(paint(line, plot).pixel(50, 35), kBackground);
    style.weight = 0;
    const DisplayList thin = points(Primitive::Kind::kStroke, {{0, 50}, {100, 50}});
    EXPECT_EQ(paint(thin, plot).pixel(50, 50), kRed);
    EXPECT_EQ(paint(thin, plot).pixel(50, 49), kBackground);
    EXPECT_EQ(paint(thin, plot).pixel(50, 51), kBackground);
}

TEST_F(ListPainterTest, ALineTypeRunsOnAroundCorners) {
    style.dashes = std::make_shared<DashPattern>(DashPattern{30, -20});
    // Twenty units to the right, then up: the dash that begins on the first side ends ten up the second.
    const QImage image = paint(points(Primitive::Kind::kStroke, {{20.5, 20.5}, {40.5, 20.5}, {40.5, 90.5}}));
    const auto at = [&](int x, int y) { return image.pixel(x, 99 - y); };
    EXPECT_EQ(at(35, 20), kRed);
    EXPECT_EQ(at(40, 25), kRed);
    EXPECT_EQ(at(40, 40), kBackground);
    EXPECT_EQ(at(40, 60), kRed);
}

TEST_F(ListPainterTest, ABandThinnerThanAPixelIsALineInFullColour) {
    DisplayList list;
    list.styles.push_back(style);
    list.primitives.push_back({Primitive::Kind::kBand, 0, 0});
    list.points = {{30.5, 9.9}, {30.5, 90.1}, {30.3, 10}, {30.7, 10}, {30.7, 90}, {30.3, 90}};
    list.bands.push_back({2, 4, 0, 2, 0.4});
    EXPECT_EQ(paint(list).pixel(30, 50), kRed);
    EXPECT_EQ(paint(list).pixel(31, 50), kBackground);
    // Ten times nearer it is as wide as it is.
    view.unitsPerPixel = 0.1;
    view.center = {30.5, 50};
    EXPECT_EQ(paint(list).pixel(50, 50), kRed);
    EXPECT_EQ(paint(list).pixel(51, 50), kRed);
    EXPECT_EQ(paint(list).pixel(53, 50), kBackground);
}

} // namespace
