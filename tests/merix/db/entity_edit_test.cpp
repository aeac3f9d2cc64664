// SPDX-License-Identifier: MIT
#include "merix/db/entity_edit.h"

#include "host/db/construction.h"
#include "merix/db/draw.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/ge/ocs.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace merix::db;

void expectNear(const MxGePoint3d& found, const MxGePoint3d& wanted, double within = 1e-9) {
    EXPECT_NEAR(found.x, wanted.x, within);
    EXPECT_NEAR(found.y, wanted.y, within);
    EXPECT_NEAR(found.z, wanted.z, within);
}

void expectBox(const MxDbEntity& entity, const MxGePoint3d& low, const MxGePoint3d& high) {
    MxDbExtents box;
    ASSERT_EQ(entity.getGeomExtents(box), Mx::eOk);
    expectNear(box.minPoint(), low);
    expectNear(box.maxPoint(), high);
}

std::vector<MxGePoint3d> grips(const MxDbEntity& entity) {
    std::vector<MxGePoint3d> points;
    EXPECT_EQ(entity.getGripPoints(points), Mx::eOk);
    return points;
}

std::vector<MxGePoint3d> snaps(const MxDbEntity& entity, MxDbOsnapMode mode) {
    std::vector<MxGePoint3d> points;
    EXPECT_EQ(entity.getOsnapPoints(mode, {}, {}, points), Mx::eOk);
    return points;
}

const MxGeMatrix3d kMirrorX = MxGeMatrix3d::scaling(-1, 1, 1), kMirrorY = MxGeMatrix3d::scaling(1, -1, 1);

std::unique_ptr<Arc> arc(double from, double to) {
    auto made = std::make_unique<Arc>();
    made->center = {5, 0, 0};
    made->radius = 2;
    made->startAngle = radians(from);
    made->endAngle = radians(to);
    return made;
}

std::unique_ptr<Text> text() {
    auto made = std::make_unique<Text>();
    made->text = L"ABCD";
    made->height = 2; // 8 long by the measure of these tests
    made->position = {10, 1, 0};
    return made;
}

class EntityEditTest : public testing::Test {
protected:
    EntityEditTest() {
        setTextMeasure([](const wchar_t* letters) { return static_cast<double>(std::wcslen(letters)); });
    }
    ~EntityEditTest() override { setTextMeasure(nullptr); }
};

TEST_F(EntityEditTest, ALineTakesAnyMap) {
    Line line;
    line.start = {1, 0, 0};
    line.end = {0, 1, 2};
    line.thickness = 2;
    EXPECT_EQ(line.transformBy(MxGeMatrix3d::scaling(2, 3, 4)), Mx::eOk);
    EXPECT_EQ(line.start, MxGePoint3d(2, 0, 0));
    EXPECT_EQ(line.end, MxGePoint3d(0, 3, 8));
    EXPECT_EQ(line.thickness, 8);
    EXPECT_EQ(line.normal, MxGeVector3d(0, 0, 1));
}

TEST_F(EntityEditTest, AMapThatCannotBeTakenBackIsRefused) {
    Line line;
    line.end = {1, 1, 0};
    EXPECT_EQ(line.transformBy(MxGeMatrix3d::scaling(0, 1, 1)), Mx::eInvalidInput);
    EXPECT_EQ(line.end, MxGePoint3d(1, 1, 0));
}

TEST_F(EntityEditTest, RoundKindsRefuseAMapThatMakesEllipsesOfThem) {
    Circle circle;
    circle.radius = 2;
    EXPECT_EQ(circle.transformBy(MxGeMatrix3d::scaling(1, 2, 1)), Mx::eCannotScaleNonUniformly);
    EXPECT_EQ(circle.radius, 2);
    EXPECT_EQ(circle.transformBy(MxGeMatrix3d::scaling(3, 3, 1)), Mx::eOk) << "its plane keeps its shape";
    EXPECT_EQ(circle.radius, 6);
    EXPECT_EQ(arc(0, 90)->transformBy(MxGeMatrix3d::scaling(1, 2, 1)), Mx::eCannotScaleNonUniformly);
    EXPECT_EQ(text()->transformBy(MxGeMatrix3d::scaling(1, 2, 1)), Mx::eCannotScaleNonUniformly);
    LwPolyline polyline;
    polyline.vertices = {{{0, 0}}, {{1, 1}}};
    EXPECT_EQ(polyline.transformBy(MxGeMatrix3d::scaling(1, 2, 1)), Mx::eOk) << "straight and thin";
    EXPECT_EQ(polyline.vertices[1].point.y, 2);
    polyline.vertices[0].bulge = 1;
    EXPECT_EQ(polyline.transformBy(MxGeMatrix3d::scaling(1, 2, 1)), Mx::eCannotScaleNonUniformly);
}

TEST_F(EntityEditTest, AMirroredArcKeepsItsNormalAndRunsFromItsOtherEnd) {
    const auto mirrored = arc(0, 90);
    ASSERT_EQ(mirrored->transformBy(kMirrorX), Mx::eOk);
    EXPECT_EQ(mirrored->normal, MxGeVector3d(0, 0, 1));
    EXPECT_NEAR(degrees(mirrored->startAngle), 90, 1e-9);
    EXPECT_NEAR(degrees(mirrored->endAngle), 180, 1e-9);
    expectBox(*mirrored, {-7, 0, 0}, {-5, 2, 0});
}

TEST_F(EntityEditTest, AFullTurnStaysOneWhenItIsTurned) {
    for (int i = 1; i < 360; ++i) {
        const auto full = arc(0, 360);
        ASSERT_EQ(full->transformBy(MxGeMatrix3d::rotation(radians(i))), Mx::eOk);
        ASSERT_NEAR(full->sweep(), 2 * kPi, 1e-9) << i;
    }
}

TEST_F(EntityEditTest, AMirroredPolylineTurnsItsBulgesAndAScaledOneItsWidths) {
    LwPolyline polyline;
    polyline.vertices = {{{0, 0}, 1.0, 0.1, 0.2}, {{2, 0}}};
    polyline.constantWidth = 0.5;
    polyline.elevation = 3;
    ASSERT_EQ(polyline.transformBy(kMirrorY * MxGeMatrix3d::scaling(2, 2, 2)), Mx::eOk);
    EXPECT_EQ(polyline.vertices[0].bulge, -1.0);
    EXPECT_EQ(polyline.vertices[0].startWidth, 0.2);
    EXPECT_EQ(polyline.vertices[1].startWidth, -1.0);
    EXPECT_EQ(polyline.constantWidth, 1.0);
    EXPECT_EQ(polyline.elevation, 6);
}

TEST_F(EntityEditTest, AMirroredTextFillsTheMirroredPlaceAndStaysReadable) {
    for (const MxGeMatrix3d& map : {kMirrorX, kMirrorY}) {
        for (int horizontal = 0; horizontal <= 5; ++horizontal) {
            for (int vertical = 0; vertical <= 3; ++vertical) {
                const auto mirrored = text();
                mirrored->horizontal = static_cast<std::int16_t>(horizontal);
                mirrored->vertical = static_cast<std::int16_t>(vertical);
                mirrored->alignment = {20, 1, 0};
                MxDbExtents before, after;
                mirrored->getGeomExtents(before);
                ASSERT_EQ(mirrored->transformBy(map), Mx::eOk);
                mirrored->getGeomExtents(after);
                const MxGePoint3d a = map * before.minPoint(), b = map * before.maxPoint();
                SCOPED_TRACE(testing::Message() << horizontal << ' ' << vertical);
                expectNear(after.minPoint(), {std::min(a.x, b.x), std::min(a.y, b.y), 0});
                expectNear(after.maxPoint(), {std::max(a.x, b.x), std::max(a.y, b.y), 0});
                EXPECT_EQ(mirrored->generation, 0);
                EXPECT_NEAR(std::cos(mirrored->rotation), 1.0, 1e-9) << "not upside down";
            }
        }
    }
}

TEST_F(EntityEditTest, ABlockMirroredInItsAxisIsNotTurnedOver) {
    Insert insert;
    insert.position = {3, 4, 0};
    insert.scaleX = 2;
    insert.columnSpacing = 10;
    ASSERT_EQ(insert.transformBy(kMirrorX), Mx::eOk);
    EXPECT_EQ(insert.scaleX, -2);
    EXPECT_EQ(insert.scaleY, 1);
    EXPECT_EQ(insert.rotation, 0);
    EXPECT_EQ(insert.columnSpacing, -10);
    EXPECT_EQ(insert.position, MxGePoint3d(-3, 4, 0));
    ASSERT_EQ(insert.transformBy(MxGeMatrix3d::scaling(1, 5, 1)), Mx::eOk) << "its axes stay square";
    EXPECT_EQ(insert.scaleY, 5);
    insert.rotation = 1;
    EXPECT_EQ(insert.transformBy(MxGeMatrix3d::scaling(1, 5, 1)), Mx::eCannotScaleNonUniformly);
}

TEST_F(EntityEditTest, WhatIsUnboundedTurnsAndMoves) {
    struct Ray : MxDbRay {
        const MxGeVector3d& direction() const { return m_direction; }
    } ray;
    ASSERT_EQ(ray.transformBy(MxGeMatrix3d::translation({1, 2, 0}) * MxGeMatrix3d::rotation(kPi / 2)), Mx::eOk);
    EXPECT_EQ(ray.basePoint(), MxGePoint3d(1, 2, 0));
    EXPECT_NEAR(ray.direction().y, 1, 1e-12);
    EXPECT_EQ(ray.moveGripPointsAt({1}, {1, 0, 0}), Mx::eOk);
    EXPECT_NEAR(ray.direction().x, std::sqrt(0.5), 1e-12);
    EXPECT_EQ(ray.moveGripPointsAt({0}, {1, 0, 0}), Mx::eOk);
    EXPECT_EQ(ray.basePoint(), MxGePoint3d(2, 2, 0));
    EXPECT_EQ(grips(ray).size(), 2U);
}

TEST_F(EntityEditTest, WhatIsUnboundedIsNotChangedByWhatItRefuses) {
    Drawing drawing;
    auto made = std::make_unique<MxDbXline>();
    const MxDbObjectId id = drawing.add(std::move(made));
    MxDbXline* line = nullptr;
    ASSERT_EQ(mxdbOpenObject(line, id, Mx::kForWrite), Mx::eOk);
    std::vector<MxGePoint3d> before;
    line->getGripPoints(before);
    ASSERT_EQ(before.size(), 2U);
    EXPECT_EQ(line->moveGripPointsAt({1}, before[0] - before[1]), Mx::eInvalidInput);
    EXPECT_FALSE(line->data().changedInOpen);
    EXPECT_EQ(line->moveGripPointsAt({0}, {1, 0, 0}), Mx::eOk);
    EXPECT_TRUE(line->data().changedInOpen);
    line->close();
}

TEST_F(EntityEditTest, AKeptRecordCannotBeEdited) {
    KeptEntity kept;
    std::vector<MxGePoint3d> points;
    EXPECT_EQ(kept.transformBy(MxGeMatrix3d::translation({1, 0, 0})), Mx::eNotApplicable);
    EXPECT_EQ(kept.getGripPoints(points), Mx::eNotApplicable);
    EXPECT_EQ(kept.moveGripPointsAt({0}, {1, 0, 0}), Mx::eNotApplicable);
}

TEST_F(EntityEditTest, GripsOfALine) {
    Line line;
    line.end = {4, 2, 0};
    EXPECT_EQ(grips(line), (std::vector<MxGePoint3d>{{0, 0, 0}, {4, 2, 0}, {2, 1, 0}}));
    line.moveGripPointsAt({1}, {1, 0, 0});
    EXPECT_EQ(line.end, MxGePoint3d(5, 2, 0));
    EXPECT_EQ(line.start, MxGePoint3d());
    line.moveGripPointsAt({2, 0}, {0, 1, 0});
    EXPECT_EQ(line.start, MxGePoint3d(0, 1, 0));
    EXPECT_EQ(line.end, MxGePoint3d(5, 3, 0));
    line.moveGripPointsAt({7, -1}, {9, 9, 9});
    EXPECT_EQ(line.start, MxGePoint3d(0, 1, 0));
}

TEST_F(EntityEditTest, GripsOfACircle) {
    Circle circle;
    circle.center = {1, 1, 0};
    circle.radius = 2;
    const auto points = grips(circle);
    ASSERT_EQ(points.size(), 5U);
    EXPECT_EQ(points[3], MxGePoint3d(-1, 1, 0));
    circle.moveGripPointsAt({3}, {-1, 0, 0});
    EXPECT_EQ(circle.radius, 3);
    EXPECT_EQ(circle.center, MxGePoint3d(1, 1, 0));
    circle.moveGripPointsAt({0}, {1, 0, 0});
    EXPECT_EQ(circle.center, MxGePoint3d(2, 1, 0));
    EXPECT_EQ(circle.moveGripPointsAt({1}, {-3, 0, 0}), Mx::eInvalidInput) << "no size is left";
    EXPECT_EQ(circle.radius, 3);
}

TEST_F(EntityEditTest, GripsOfAnArc) {
    const auto own = arc(0, 180);
    const auto points = grips(*own);
    ASSERT_EQ(points.size(), 4U);
    expectNear(points[0], {7, 0, 0});
    expectNear(points[1], {3, 0, 0});
    expectNear(points[2], {5, 2, 0});
    expectNear(points[3], {5, 0, 0});
    // Through the middle on the other side: its ends change places.
    ASSERT_EQ(own->moveGripPointsAt({2}, {0, -4, 0}), Mx::eOk);
    expectBox(*own, {3, -2, 0}, {7, 0, 0});
    ASSERT_EQ(own->moveGripPointsAt({3}, {1, 1, 0}), Mx::eOk);
    expectNear(own->center, {6, 1, 0});
    EXPECT_EQ(own->moveGripPointsAt({2}, {0, 2, 0}), Mx::eInvalidInput) << "a straight line";
}

TEST_F(EntityEditTest, GripsOfAPolylineAreItsVertices) {
    LwPolyline polyline;
    polyline.vertices = {{{0, 0}}, {{1, 0}}, {{1, 1}}};
    polyline.elevation = 5;
    EXPECT_EQ(grips(polyline)[2], MxGePoint3d(1, 1, 5));
    polyline.moveGripPointsAt({1, 1, 9}, {2, 0, 7});
    EXPECT_EQ(polyline.vertices[1].point, (MxGePoint2d{3, 0}));
    EXPECT_EQ(polyline.elevation, 5);
    polyline.moveGripPointsAt({0, 1, 2}, {0, 0, 7});
    EXPECT_EQ(polyline.elevation, 12);
}

TEST_F(EntityEditTest, GripsOfTextAndBlockAreWhereTheyWereInserted) {
    const auto own = text();
    EXPECT_EQ(grips(*own), (std::vector<MxGePoint3d>{{10, 1, 0}}));
    own->moveGripPointsAt({0}, {1, 1, 0});
    EXPECT_EQ(own->position, MxGePoint3d(11, 2, 0));
    own->horizontal = 1;
    own->alignment = {4, 4, 0};
    EXPECT_EQ(grips(*own), (std::vector<MxGePoint3d>{{4, 4, 0}}));
    own->horizontal = 5;
    EXPECT_EQ(grips(*own).size(), 2U);
    own->moveGripPointsAt({1}, {1, 0, 0});
    EXPECT_EQ(own->alignment, MxGePoint3d(5, 4, 0));
    EXPECT_EQ(own->position, MxGePoint3d(11, 2, 0));
    Insert insert;
    insert.position = {1, 2, 3};
    EXPECT_EQ(grips(insert), (std::vector<MxGePoint3d>{{1, 2, 3}}));
    insert.moveGripPointsAt({0}, {1, 0, 0});
    EXPECT_EQ(insert.position, MxGePoint3d(2, 2, 3));
}

TEST_F(EntityEditTest, SnapPointsOfEveryKind) {
    Line line;
    line.end = {4, 0, 0};
    EXPECT_EQ(snaps(line, MxDbOsnapMode::kEnd).size(), 2U);
    EXPECT_EQ(snaps(line, MxDbOsnapMode::kMid), (std::vector<MxGePoint3d>{{2, 0, 0}}));
    EXPECT_TRUE(snaps(line, MxDbOsnapMode::kCenter).empty());
    Circle circle;
    circle.center = {1, 2, 3};
    EXPECT_EQ(snaps(circle, MxDbOsnapMode::kCenter), (std::vector<MxGePoint3d>{{1, 2, 3}}));
    expectNear(snaps(*arc(0, 90), MxDbOsnapMode::kMid)[0], {5 + std::sqrt(2.0), std::sqrt(2.0), 0});
    LwPolyline polyline;
    polyline.vertices = {{{0, 0}, 1.0}, {{2, 0}}, {{2, 2}}};
    EXPECT_EQ(snaps(polyline, MxDbOsnapMode::kEnd).size(), 3U);
    expectNear(snaps(polyline, MxDbOsnapMode::kMid)[0], {1, -1, 0});
    expectNear(snaps(polyline, MxDbOsnapMode::kCenter)[0], {1, 0, 0});
    EXPECT_EQ(snaps(*text(), MxDbOsnapMode::kInsertion), (std::vector<MxGePoint3d>{{10, 1, 0}}));
    std::vector<MxGePoint3d> placed;
    line.subGetOsnapPoints(MxDbOsnapMode::kMid, {}, {}, placed, MxGeMatrix3d::translation({0, 5, 0}));
    EXPECT_EQ(placed, (std::vector<MxGePoint3d>{{2, 5, 0}}));
}

/// A map that keeps shapes: a turn about any axis, a scale, a move, and a mirror now and then.
MxGeMatrix3d randomSimilarity(std::mt19937& random) {
    std::uniform_real_distribution<double> part(-1, 1), size(0.2, 5), angle(-7, 7);
    const MxGeVector3d axis(part(random), part(random), part(random) + 2);
    const double turn = angle(random), scale = size(random);
    MxGeMatrix3d map;
    for (MxGeVector3d* image : {&map.x, &map.y, &map.z}) {
        image->rotateBy(turn, axis);
        *image *= scale;
    }
    map.origin = {part(random) * 50, part(random) * 50, part(random) * 50};
    return part(random) < 0 ? map * kMirrorX : map;
}

MxGeMatrix3d inverse(const MxGeMatrix3d& map) {
    const double scale = map.x.dot(map.x);
    MxGeMatrix3d back{{map.x.x, map.y.x, map.z.x}, {map.x.y, map.y.y, map.z.y}, {map.x.z, map.y.z, map.z.z}, {}};
    for (MxGeVector3d* image : {&back.x, &back.y, &back.z})
        *image *= 1.0 / scale;
    const MxGePoint3d origin = back * map.origin;
    back.origin = {-origin.x, -origin.y, -origin.z};
    return back;
}

TEST_F(EntityEditTest, AMapAndItsInverseLeaveAnEntityAsItWas) {
    std::mt19937 random(20260321);
    for (int round = 0; round < 500; ++round) {
        const MxGeMatrix3d map = randomSimilarity(random), back = inverse(map);
        const auto thereAndBack = [&](MxDbEntity& entity) {
            const auto before = grips(entity);
            ASSERT_EQ(entity.transformBy(map), Mx::eOk);
            const auto there = grips(entity);
            // The grips of an arc mirrored come in the order in which it runs.
            if (entity.isA() != Arc::desc() && entity.isA() != Circle::desc()) {
                for (std::size_t i = 0; i < before.size(); ++i)
                    expectNear(there[i], map * before[i], 1e-8);
            }
            ASSERT_EQ(entity.transformBy(back), Mx::eOk);
            const auto after = grips(entity);
            ASSERT_EQ(after.size(), before.size());
            for (std::size_t i = 0; i < before.size(); ++i)
                expectNear(after[i], before[i]);
        };
        Line line;
        line.start = {1, 2, 3};
        line.end = {-4, 5, 6};
        line.thickness = 2;
        thereAndBack(line);
        EXPECT_NEAR(line.thickness, 2, 1e-9);
        Circle circle;
        circle.center = {1, 2, 3};
        circle.radius = 4;
        circle.thickness = -1;
        circle.normal = merix::ge::ocsToWorld({1, 2, 3}).z;
        thereAndBack(circle);
        EXPECT_NEAR(circle.thickness, -1, 1e-9);
        EXPECT_NEAR(circle.radius, 4, 1e-9);
        const auto own = arc(30, 250);
        thereAndBack(*own);
        EXPECT_NEAR(own->sweep(), radians(220), 1e-9);
        LwPolyline polyline;
        polyline.vertices = {{{0, 0}, 0.7, 0.1, 0.2}, {{3, 1}, -0.2}, {{4, 4}}};
        polyline.elevation = 2;
        thereAndBack(polyline);
        EXPECT_NEAR(polyline.vertices[0].bulge, 0.7, 1e-9);
        EXPECT_NEAR(polyline.vertices[0].endWidth, 0.2, 1e-9);
        Insert insert;
        insert.position = {1, 2, 3};
        insert.rotation = 0.3;
        insert.scaleX = 2;
        insert.scaleZ = 3;
        thereAndBack(insert);
        EXPECT_NEAR(insert.scaleX * std::cos(insert.rotation), 2 * std::cos(0.3), 1e-9);
        EXPECT_NEAR(insert.scaleY * std::cos(insert.rotation), std::cos(0.3), 1e-9);
        EXPECT_NEAR(insert.scaleZ, 3, 1e-9);
        const auto letters = text();
        letters->rotation = 0.3;
        thereAndBack(*letters);
        EXPECT_NEAR(letters->height, 2, 1e-9);
    }
}

TEST_F(EntityEditTest, UndoTakesAMoveAndAGripBack) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine({0, 0, 0}, {4, 0, 0});
    drawing.imp.undo.clear();
    Line* line = nullptr;
    mxdbOpenObject(line, id, Mx::kForWrite);
    line->transformBy(MxGeMatrix3d::translation({0, 7, 0}));
    line->close();
    mxdbOpenObject(line, id, Mx::kForWrite);
    line->moveGripPointsAt({1}, {1, 0, 0});
    line->close();
    drawing.imp.undo.undo();
    EXPECT_EQ(line->end, MxGePoint3d(4, 7, 0));
    drawing.imp.undo.undo();
    EXPECT_EQ(line->end, MxGePoint3d(4, 0, 0));
    drawing.imp.undo.redo();
    EXPECT_EQ(line->start, MxGePoint3d(0, 7, 0));
}

} // namespace
