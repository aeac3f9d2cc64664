// SPDX-License-Identifier: MIT
#include "merix/db/entities.h"

#include "host/db/construction.h"
#include "merix/db/access.h"
#include "merix/db/draw.h"
#include "merix/ge/curve.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <numbers>

namespace {

using namespace merix::db;
constexpr double kHalfTurn = std::numbers::pi;

void expectBox(const MxDbEntity& entity, const MxGePoint3d& low, const MxGePoint3d& high) {
    MxDbExtents box;
    ASSERT_EQ(entity.getGeomExtents(box), Mx::eOk);
    for (const auto& [found, wanted] : {std::pair{box.minPoint(), low}, std::pair{box.maxPoint(), high}}) {
        EXPECT_NEAR(found.x, wanted.x, 1e-9);
        EXPECT_NEAR(found.y, wanted.y, 1e-9);
        EXPECT_NEAR(found.z, wanted.z, 1e-9);
    }
}

template <class T> std::unique_ptr<T> refiled(const T& entity, Drawing& drawing) {
    drawing.imp.undo.clear();
    const std::string image = dwgImage(entity, MxDbFilerType::kFile);
    auto copy = std::make_unique<T>();
    EXPECT_EQ(readDwgImage(*copy, image, MxDbFilerType::kFile), Mx::eOk);
    EXPECT_EQ(dwgImage(*copy, MxDbFilerType::kFile), image);
    for (std::size_t size = 0; size < image.size(); ++size) {
        T cut;
        EXPECT_NE(readDwgImage(cut, image.substr(0, size), MxDbFilerType::kFile), Mx::eOk) << size;
    }
    return copy;
}

TEST(Entities, EveryKindFilesItselfAndRefusesAStreamThatIsCut) {
    Drawing drawing;
    Line line;
    line.end = {1, 2, 3};
    traits(line).layer = drawing.imp.layerNamed(L"0");
    traits(line).color = 3;
    traits(line).linetypeScale = 0.5;
    const auto lineCopy = refiled(line, drawing);
    EXPECT_EQ(lineCopy->end, line.end);
    EXPECT_EQ(lineCopy->layerId(), line.layerId());
    EXPECT_EQ(traits(*lineCopy).color, 3);
    Circle circle;
    circle.radius = 4;
    EXPECT_EQ(refiled(circle, drawing)->radius, 4);
    Arc arc;
    arc.endAngle = 2;
    EXPECT_EQ(refiled(arc, drawing)->endAngle, 2);
    LwPolyline polyline;
    polyline.vertices = {{{1, 2}, 0.5, 0.1, 0.2}, {{3, 4}}};
    polyline.closed = true;
    const auto polylineCopy = refiled(polyline, drawing);
    EXPECT_EQ(polylineCopy->vertices.size(), 2U);
    EXPECT_EQ(polylineCopy->vertices[0].endWidth, 0.2);
    EXPECT_TRUE(polylineCopy->closed);
    Text text;
    text.text = L"Küche";
    text.style = drawing.imp.textStyleNamed(L"Standard");
    EXPECT_EQ(refiled(text, drawing)->text, L"Küche");
    Insert insert;
    insert.block = drawing.imp.roots.modelSpace;
    insert.columns = 3;
    EXPECT_EQ(refiled(insert, drawing)->columns, 3);
    refiled(MxDbRay(), drawing);
    refiled(MxDbXline(), drawing);
    KeptEntity kept;
    kept.image = std::string("\0raw", 4);
    EXPECT_EQ(refiled(kept, drawing)->image, kept.image);
}

TEST(Entities, ABoxOfACircleIsExactAlsoWhenItLeans) {
    Circle circle;
    circle.center = {1, 2, 0};
    circle.radius = 3;
    expectBox(circle, {-2, -1, 0}, {4, 5, 0});
    circle.center = {};
    circle.normal = {1, 0, 0};
    expectBox(circle, {0, -3, -3}, {0, 3, 3});
}

TEST(Entities, ABoxOfAnArcHoldsItsEndsAndItsTurningPointsOnly) {
    Arc arc;
    arc.radius = 2;
    arc.startAngle = kHalfTurn / 4;
    arc.endAngle = 3 * kHalfTurn / 4;
    const double h = std::sqrt(2.0);
    expectBox(arc, {-h, h, 0}, {h, 2, 0});
    // Through the positive x axis.
    std::swap(arc.startAngle, arc.endAngle);
    expectBox(arc, {-2, -2, 0}, {2, h, 0});
    // Mirrored: x runs the other way.
    arc.startAngle = 0;
    arc.endAngle = kHalfTurn / 2;
    arc.normal = {0, 0, -1};
    expectBox(arc, {-2, 0, 0}, {0, 2, 0});
}

TEST(Entities, ABoxOfAPolylineFollowsItsBulgesAndWidths) {
    LwPolyline polyline;
    polyline.vertices = {{{0, 0}, 1.0}, {{2, 0}}}; // half a circle below
    expectBox(polyline, {0, -1, 0}, {2, 0, 0});
    polyline.closed = true;
    polyline.vertices[1].bulge = 1.0;
    expectBox(polyline, {0, -1, 0}, {2, 1, 0});
    polyline.constantWidth = 0.5;
    expectBox(polyline, {-0.25, -1.25, 0}, {2.25, 1.25, 0});
    polyline.normal = {0, 0, -1};
    expectBox(polyline, {-2.25, -1.25, 0}, {0.25, 1.25, 0});
}

TEST(Entities, UnboundedEntitiesHaveNoExtents) {
    MxDbExtents box({1, 1, 1}, {2, 2, 2});
    EXPECT_EQ(MxDbRay().getGeomExtents(box), Mx::eInvalidExtents);
    EXPECT_EQ(MxDbXline().getGeomExtents(box), Mx::eInvalidExtents);
    EXPECT_EQ(Text().getGeomExtents(box), Mx::eInvalidExtents);
    EXPECT_EQ(box.minPoint(), MxGePoint3d(1, 1, 1));
}

class TextTest : public testing::Test {
protected:
    TextTest() {
        setTextMeasure([](const wchar_t* letters) { return static_cast<double>(std::wcslen(letters)); });
        text.text = L"ABCD";
        text.height = 2; // so 8 long
        text.position = {100, 100, 0};
        text.alignment = {};
    }
    ~TextTest() override { setTextMeasure(nullptr); }
    Text text;
};

TEST_F(TextTest, BeginsAtItsPositionWhenLeftOnTheBaseLine) {
    text.rotation = kHalfTurn / 2;
    expectBox(text, {98, 100, 0}, {100, 108, 0});
}

TEST_F(TextTest, IsCentredAboutItsAlignmentPoint) {
    text.horizontal = 1;
    expectBox(text, {-4, 0, 0}, {4, 2, 0});
    text.horizontal = 4;
    expectBox(text, {-4, -1, 0}, {4, 1, 0});
    text.horizontal = 2;
    text.vertical = 3;
    expectBox(text, {-8, -2, 0}, {0, 0, 0});
}

TEST_F(TextTest, FillsTheLengthBetweenItsPoints) {
    text.position = {0, 0, 0};
    text.alignment = {16, 0, 0};
    text.horizontal = 5;
    expectBox(text, {0, 0, 0}, {16, 2, 0});
    text.horizontal = 3;
    expectBox(text, {0, 0, 0}, {16, 4, 0});
}

TEST_F(TextTest, RunsBackwardOrHangsBelowWhenMirrored) {
    text.position = {};
    text.generation = 2;
    expectBox(text, {-8, 0, 0}, {0, 2, 0});
    text.generation = 4;
    expectBox(text, {0, -2, 0}, {8, 0, 0});
}

} // namespace
