// SPDX-License-Identifier: MIT
#include "merix/db/access.h"
#include "merix/db/draw.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <limits>
#include <numbers>

namespace {

using namespace merix::db;

MxDbExtents boxOf(Drawing& drawing, MxDbObjectId id) {
    MxDbEntity* entity = nullptr;
    EXPECT_EQ(mxdbOpenObject(entity, id, Mx::kForRead), Mx::eOk);
    MxDbExtents box;
    entity->getGeomExtents(box);
    entity->close();
    static_cast<void>(drawing);
    return box;
}

void expectBox(const MxDbExtents& box, const MxGePoint3d& low, const MxGePoint3d& high, double tolerance = 1e-9) {
    EXPECT_NEAR(box.minPoint().x, low.x, tolerance);
    EXPECT_NEAR(box.minPoint().y, low.y, tolerance);
    EXPECT_NEAR(box.maxPoint().x, high.x, tolerance);
    EXPECT_NEAR(box.maxPoint().y, high.y, tolerance);
}

std::unique_ptr<Insert> insertOf(MxDbObjectId block) {
    auto insert = std::make_unique<Insert>();
    insert->block = block;
    return insert;
}

class BlockDrawTest : public testing::Test {
protected:
    Drawing drawing;
    MxDbObjectId block = drawing.addBlock(L"DOOR", {1, 1, 0});
};

TEST_F(BlockDrawTest, ABlockIsPlacedScaledAndTurnedAboutItsOrigin) {
    drawing.addLine({1, 1, 0}, {3, 1, 0}, block);
    auto insert = insertOf(block);
    insert->position = {10, 20, 0};
    insert->scaleX = 2;
    insert->rotation = std::numbers::pi / 2;
    expectBox(boxOf(drawing, drawing.add(std::move(insert))), {10, 20, 0}, {10, 24, 0});
}

TEST_F(BlockDrawTest, AnArrayRepeatsTheBlockInItsOwnDirections) {
    drawing.addLine({1, 1, 0}, {2, 1, 0}, block);
    auto insert = insertOf(block);
    insert->columns = 3;
    insert->rows = 2;
    insert->columnSpacing = 10;
    insert->rowSpacing = 5;
    expectBox(boxOf(drawing, drawing.add(std::move(insert))), {0, 0, 0}, {21, 5, 0});
}

TEST_F(BlockDrawTest, MirroredArcsStayOnTheirSide) {
    auto arc = std::make_unique<Arc>();
    arc->center = {1, 1, 0};
    arc->radius = 1;
    arc->endAngle = std::numbers::pi / 2;
    drawing.add(std::move(arc), block);
    auto insert = insertOf(block);
    insert->scaleX = -1;
    expectBox(boxOf(drawing, drawing.add(std::move(insert))), {-1, 0, 0}, {0, 1, 0});
    auto below = insertOf(block);
    below->scaleY = -2;
    below->scaleX = 2;
    expectBox(boxOf(drawing, drawing.add(std::move(below))), {0, -2, 0}, {2, 0, 0});
}

TEST_F(BlockDrawTest, UnequalScalesMakeEllipsesOfCirclesAndBulges) {
    auto circle = std::make_unique<Circle>();
    circle->center = {1, 1, 0};
    circle->radius = 1;
    drawing.add(std::move(circle), block);
    auto insert = insertOf(block);
    insert->scaleX = 3;
    expectBox(boxOf(drawing, drawing.add(std::move(insert))), {-3, -1, 0}, {3, 1, 0}, 2e-3);

    const MxDbObjectId bulged = drawing.addBlock(L"BULGE");
    auto polyline = std::make_unique<LwPolyline>();
    polyline->vertices = {{{0, 0}, 1.0}, {{2, 0}}};
    drawing.add(std::move(polyline), bulged);
    auto stretched = insertOf(bulged);
    stretched->scaleY = 4;
    expectBox(boxOf(drawing, drawing.add(std::move(stretched))), {0, -4, 0}, {2, 0, 0}, 2e-3);
}

TEST_F(BlockDrawTest, BlocksInBlocksArePlacedThroughBoth) {
    drawing.addLine({1, 1, 0}, {2, 1, 0}, block);
    const MxDbObjectId outer = drawing.addBlock(L"OUTER");
    auto inner = insertOf(block);
    inner->position = {5, 0, 0};
    drawing.add(std::move(inner), outer);
    auto insert = insertOf(outer);
    insert->scaleX = insert->scaleY = 2;
    expectBox(boxOf(drawing, drawing.add(std::move(insert))), {10, 0, 0}, {12, 0, 0});
}

TEST_F(BlockDrawTest, ABlockThatShowsItselfIsCutOff) {
    drawing.addLine({1, 1, 0}, {2, 1, 0}, block);
    drawing.add(insertOf(block), block);
    const MxDbObjectId id = drawing.add(insertOf(block));
    expectBox(boxOf(drawing, id), {0, 0, 0}, {1, 0, 0});
}

TEST_F(BlockDrawTest, ManyfoldNestingEndsInTime) {
    MxDbObjectId inner = block;
    drawing.addLine({1, 1, 0}, {2, 1, 0}, block);
    for (int level = 0; level < 20; ++level) {
        const MxDbObjectId outer = drawing.addBlock(L"L" + std::to_wstring(level));
        for (int i = 0; i < 10; ++i)
            drawing.add(insertOf(inner), outer);
        inner = outer;
    }
    expectBox(boxOf(drawing, drawing.add(insertOf(inner))), {0, 0, 0}, {1, 0, 0});
}

/// Writes down the attributes in force when geometry comes.
class Sink final : public MxGiWorldDraw, EntityTraitsSink, MxGiWorldGeometry {
public:
    std::vector<EntityTraits> drawn;

    MxGiContext* context() const override { return nullptr; }
    MxGiSubEntityTraits& subEntityTraits() const override { return const_cast<Sink&>(*this); }
    MxGiWorldGeometry& geometry() const override { return const_cast<Sink&>(*this); }

private:
    void setEntityTraits(const EntityTraits& now) override { m_now = now; }
    void circle(const MxGePoint3d&, double, const MxGeVector3d&) override {}
    void circularArc(const MxGePoint3d&, double, const MxGeVector3d&, const MxGeVector3d&, double) override {}
    void worldLine(const MxGePoint3d*, std::size_t) override { drawn.push_back(m_now); }
    void polyline(const MxGePoint3d* points, std::size_t count) override { worldLine(points, count); }
    void polygon(const MxGePoint3d* points, std::size_t count) override { worldLine(points, count); }
    void pline(const MxGiPolylineVertex*, std::size_t, bool) override {}
    void text(const MxGePoint3d&, const MxGeVector3d&, const MxGeVector3d&, double, double, double,
              const wchar_t*) override {}
    EntityTraits m_now;
};

std::vector<EntityTraits> drawnBy(Drawing& drawing, MxDbObjectId id) {
    Sink sink;
    auto& entity = drawing.at<MxDbEntity>(id);
    const ReadAccess readable(entity);
    EXPECT_TRUE(entity.subWorldDraw(&sink));
    return sink.drawn;
}

TEST_F(BlockDrawTest, ByBlockAttributesAndLayerZeroComeFromTheOutermostInsert) {
    const MxDbObjectId walls = drawing.addLayer(L"WALLS"), doors = drawing.addLayer(L"DOORS");
    auto& byBlock = traits(drawing.at<MxDbEntity>(drawing.addLine({}, {1, 0, 0}, block)));
    byBlock.color = 0;
    byBlock.lineWeight = -2;
    byBlock.linetype = drawing.imp.linetypeNamed(L"ByBlock");
    auto& own = traits(drawing.at<MxDbEntity>(drawing.addLine({}, {1, 0, 0}, block)));
    own.color = 4;
    own.layer = doors;
    const MxDbObjectId outer = drawing.addBlock(L"OUTER");
    traits(drawing.at<MxDbEntity>(drawing.add(insertOf(block), outer))).color = 0;
    const MxDbObjectId id = drawing.add(insertOf(outer));
    auto& top = traits(drawing.at<MxDbEntity>(id));
    top.color = 1;
    top.layer = walls;
    const auto drawn = drawnBy(drawing, id);
    ASSERT_EQ(drawn.size(), 2U);
    EXPECT_EQ(drawn[0].color, 1);
    EXPECT_EQ(drawn[0].layer, walls);
    EXPECT_EQ(drawn[0].lineWeight, -1);
    EXPECT_TRUE(drawn[0].linetype.isNull());
    EXPECT_EQ(drawn[1].color, 4);
    EXPECT_EQ(drawn[1].layer, doors);
}

TEST_F(BlockDrawTest, TheLargestArrayEndsInTime) {
    drawing.addLine({1, 1, 0}, {2, 1, 0}, block);
    for (const MxDbObjectId shown : {block, drawing.addBlock(L"EMPTY")}) {
        auto insert = insertOf(shown);
        insert->columns = insert->rows = std::numeric_limits<std::int16_t>::max();
        auto& array = drawing.at<Insert>(drawing.add(std::move(insert)));
        Sink sink;
        const ReadAccess readable(array);
        EXPECT_FALSE(array.subWorldDraw(&sink)) << "cut off";
        EXPECT_LE(sink.drawn.size(), 1'000'000U);
    }
}

TEST_F(BlockDrawTest, PartsThatAreErasedInvisibleOrOnHiddenLayersAreLeftOut) {
    constexpr std::int16_t kFrozen = 1;
    const MxDbObjectId frozen = drawing.addLayer(L"FROZEN", 7, kFrozen), off = drawing.addLayer(L"OFF");
    drawing.at<LayerRecord>(off).off = true;
    traits(drawing.at<MxDbEntity>(drawing.addLine({}, {}, block))).layer = frozen;
    traits(drawing.at<MxDbEntity>(drawing.addLine({}, {}, block))).layer = off;
    traits(drawing.at<MxDbEntity>(drawing.addLine({}, {}, block))).invisible = true;
    drawing.erase(drawing.addLine({}, {}, block));
    const MxDbObjectId id = drawing.add(insertOf(block));
    EXPECT_TRUE(drawnBy(drawing, id).empty());
}

} // namespace
