// SPDX-License-Identifier: MIT
#include "merix/gi/scene.h"

#include "host/db/sortents_table.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"
#include "tests/merix/gi/gui_test.h"

#include <QImage>
#include <QPainter>

#include <functional>
#include <numbers>

using namespace merix;

namespace {

constexpr double kPi = std::numbers::pi;
const QRgb kRed = qRgb(255, 0, 0), kGreen = qRgb(0, 255, 0), kBlue = qRgb(0, 0, 255);
const QRgb kBackground = gi::PaintOptions().background.rgb();

/// A module's entity: a square drawn in outline, whose size and colour the test sets; it counts its drawing.
class Marker : public MxDbEntity {
public:
    static MxRxClass* desc() {
        static MxRxClass* const descriptor =
            newMxRxClass(L"SceneTestMarker", L"MxDbEntity", 1, 0, 0, nullptr, L"SCENETESTMARKER", L"Scene test");
        return descriptor;
    }
    MxRxClass* isA() const override { return desc(); }
    bool subWorldDraw(MxGiWorldDraw* draw) override {
        assertReadEnabled();
        ++drawings;
        if (whileDrawn)
            whileDrawn();
        if (isHidden || (draw->context() && draw->context()->isPlotGeneration()))
            return true;
        draw->subEntityTraits().setColor(color);
        const MxGePoint3d ring[] = {corner, corner + MxGeVector3d{size, 0, 0}, corner + MxGeVector3d{size, size, 0},
                                    corner + MxGeVector3d{0, size, 0}, corner};
        draw->geometry().worldLine(ring, 5);
        if (tail != MxGePoint3d()) {
            const MxGePoint3d line[] = {corner, tail};
            draw->geometry().worldLine(line, 2);
        }
        return true;
    }
    Mx::ErrorStatus subGetGeomExtents(MxDbExtents& extents) const override {
        extents.addPoint(isPlaced ? corner : MxDbExtents().maxPoint());
        extents.addPoint(extents.minPoint() + MxGeVector3d{size, size, 0});
        return Mx::eOk;
    }
    bool isPlaced = true, isHidden = false;
    MxGePoint3d corner{20.5, 20.5, 0};
    double size = 40;
    std::uint16_t color = 3;
    int drawings = 0;
    std::function<void()> whileDrawn; ///< what a module's drawing code does besides
    MxGePoint3d tail;                 ///< the end of a line from the corner, beyond what is told; none at the origin
};

class SceneTest : public GuiTest {
protected:
    SceneTest() {
        database.imp().createDefaults();
        mxrxBuildClassHierarchy();
    }

    MxDbObjectId model() { return database.imp().roots.modelSpace; }

    MxDbObjectId add(MxDbEntity* entity, MxDbObjectId block, int color) {
        db::traits(*entity).color = static_cast<std::int16_t>(color);
        if (db::traits(*entity).layer.isNull())
            db::traits(*entity).layer = database.imp().layerNamed(L"0");
        MxDbBlockTableRecord* record = nullptr;
        EXPECT_EQ(mxdbOpenObject(record, block, Mx::kForWrite), Mx::eOk);
        MxDbObjectId id;
        EXPECT_EQ(record->appendMxDbEntity(id, entity), Mx::eOk);
        entity->close();
        record->close();
        return id;
    }
    MxDbObjectId addLine(MxGePoint3d from, MxGePoint3d to, int color = 1) {
        auto* line = new db::Line;
        line->start = from;
        line->end = to;
        return add(line, model(), color);
    }
    template <class T, class Change> void change(MxDbObjectId id, Change&& how) {
        T* object = nullptr;
        ASSERT_EQ(mxdbOpenObject(object, id, Mx::kForWrite), Mx::eOk);
        object->assertWriteEnabled();
        how(*object);
        object->close();
    }
    MxDbObjectId addLayer(const wchar_t* name) {
        auto* layer = new db::LayerRecord;
        layer->name = name;
        layer->color = 3;
        MxDbObjectId id;
        EXPECT_EQ(database.imp().append(layer, database.imp().roots.layerTable, id), Mx::eOk);
        layer->close();
        return id;
    }

    /// 100 x 100 pixels, one unit each, the origin in the lower-left corner.
    QImage paint(const gi::PaintOptions& options = {}) {
        QImage image(100, 100, QImage::Format_RGB32);
        image.fill(options.background);
        QPainter painter(&image);
        scene.paint(painter, view, model(), options);
        return image;
    }
    /// The colour at a world place.
    QRgb at(double x, double y) { return paint().pixel(static_cast<int>(x), 99 - static_cast<int>(y)); }

    MxDbDatabase database;
    gi::Scene scene{database};
    ge::ViewTransform view{.center = {50, 50}, .unitsPerPixel = 1.0, .width = 100, .height = 100};
};

TEST_F(SceneTest, EntitiesAreDrawnInTheirColours) {
    addLine({10.5, 0, 0}, {10.5, 100, 0}, 1);
    addLine({20.5, 0, 0}, {20.5, 100, 0}, 5);
    EXPECT_EQ(at(10, 50), kRed);
    EXPECT_EQ(at(20, 50), kBlue);
    EXPECT_EQ(at(15, 50), kBackground);
}

TEST_F(SceneTest, EntitiesLieOverEachOtherAndArePickedInTheDrawOrder) {
    const MxDbObjectId red = addLine({10.5, 0, 0}, {10.5, 100, 0}, 1), blue = addLine({10.5, 0, 0}, {10.5, 100, 0}, 5);
    EXPECT_EQ(at(10, 50), kBlue);
    const auto toBottom = [&](MxDbObjectId id) {
        MxDbBlockTableRecord* space = nullptr;
        mxdbOpenObject(space, model(), Mx::kForWrite);
        MxDbSortentsTable* table = nullptr;
        ASSERT_EQ(space->getSortentsTable(table, Mx::kForWrite, true), Mx::eOk);
        table->moveToBottom({id});
        table->close();
        space->close();
    };
    database.imp().undo.clear();
    database.imp().undo.begin(L"Order");
    toBottom(blue);
    database.imp().undo.end();
    EXPECT_EQ(at(10, 50), kRed);
    EXPECT_EQ(scene.pick(model(), {10.5, 50, 0}, 1).front(), red);
    toBottom(red);
    EXPECT_EQ(at(10, 50), kBlue) << "a table that changes is followed";
    view.unitsPerPixel = 0.5;
    view.center = {25, 50};
    EXPECT_EQ(at(21, 50), kBlue) << "also when only a part is in view";
    toBottom(blue);
    EXPECT_EQ(at(21, 50), kRed);
    while (database.imp().undo.undo()) {
    }
    EXPECT_EQ(at(21, 50), kBlue);
}

TEST_F(SceneTest, ACircleIsDrawnOnItsRadius) {
    auto* circle = new db::Circle;
    circle->center = {50, 50, 0};
    circle->radius = 30;
    add(circle, model(), 1);
    EXPECT_GT(qRed(at(80, 50)) + qRed(at(79, 50)), 200);
    EXPECT_GT(qRed(at(50, 80)) + qRed(at(50, 79)), 200);
    EXPECT_EQ(at(50, 50), kBackground);
}

TEST_F(SceneTest, AnArcIsDrawnCounterClockwiseOnly) {
    auto* arc = new db::Arc;
    arc->center = {50, 50, 0};
    arc->radius = 30;
    arc->startAngle = 0;
    arc->endAngle = kPi / 2;
    add(arc, model(), 1);
    const QImage image = paint();
    const int d = static_cast<int>(30 * std::sqrt(0.5));
    EXPECT_GT(qRed(image.pixel(50 + d, 49 - d)) + qRed(image.pixel(50 + d, 50 - d)), 150);
    for (const int off : {-1, 0, 1}) {
        EXPECT_EQ(image.pixel(50 - d, 49 - d + off), kBackground);
        EXPECT_EQ(image.pixel(50 - d, 49 + d + off), kBackground);
    }
}

TEST_F(SceneTest, APolylineWithWidthIsABandAndABulgeAnArc) {
    auto* band = new db::LwPolyline;
    band->vertices = {{{10, 20}, 0, -1, -1}, {{90, 20}, 0, -1, -1}};
    band->constantWidth = 10;
    add(band, model(), 1);
    auto* half = new db::LwPolyline;
    half->vertices = {{{30, 60}, 1, 0, 0}, {{70, 60}, 0, 0, 0}};
    add(half, model(), 1);
    const QImage image = paint();
    EXPECT_EQ(image.pixel(50, 99 - 17), kRed);
    EXPECT_EQ(image.pixel(50, 99 - 23), kRed);
    EXPECT_EQ(image.pixel(50, 99 - 28), kBackground);
    EXPECT_GT(qRed(image.pixel(50, 99 - 40)) + qRed(image.pixel(50, 99 - 39)), 200);
}

TEST_F(SceneTest, TextStandsOnItsPosition) {
    auto* text = new db::Text;
    text->position = {10, 50, 0};
    text->height = 30;
    text->text = L"H";
    add(text, model(), 1);
    const QImage image = paint();
    int red = 0, below = 0, above = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            if (qRed(image.pixel(x, y)) > 200)
                ++red, below += y > 50, above += y < 19;
    EXPECT_GT(red, 100);
    EXPECT_EQ(below, 0);
    EXPECT_EQ(above, 0);
}

TEST_F(SceneTest, AChangeOfAnEntityShowsInTheNextPicture) {
    const MxDbObjectId id = addLine({10.5, 0, 0}, {10.5, 100, 0});
    EXPECT_EQ(at(10, 50), kRed);
    change<db::Line>(id, [](db::Line& line) { line.start.x = line.end.x = 70.5; });
    EXPECT_EQ(at(10, 50), kBackground);
    EXPECT_EQ(at(70, 50), kRed);
}

TEST_F(SceneTest, WhatWasMovedFromOutsideTheViewIsFound) {
    const MxDbObjectId id = addLine({1e6, 0, 0}, {1e6, 100, 0});
    EXPECT_EQ(at(10, 50), kBackground);
    change<db::Line>(id, [](db::Line& line) { line.start.x = line.end.x = 10.5; });
    EXPECT_EQ(at(10, 50), kRed);
}

TEST_F(SceneTest, AnErasedEntityIsGoneAndComesBackWithUndo) {
    const MxDbObjectId id = addLine({10.5, 0, 0}, {10.5, 100, 0});
    EXPECT_EQ(at(10, 50), kRed);
    change<db::Line>(id, [](db::Line& line) { line.erase(); });
    EXPECT_EQ(at(10, 50), kBackground);
    EXPECT_TRUE(scene.pick(model(), {10, 50, 0}, 3).empty());
    ASSERT_TRUE(database.imp().undo.undo());
    EXPECT_EQ(at(10, 50), kRed);
}

TEST_F(SceneTest, LayersThatAreOffOrFrozenAreNotShown) {
    const MxDbObjectId layer = addLayer(L"walls");
    auto* line = new db::Line;
    line->start = {10.5, 0, 0};
    line->end = {10.5, 100, 0};
    db::traits(*line).layer = layer;
    add(line, model(), 256);
    EXPECT_EQ(at(10, 50), kGreen);
    change<db::LayerRecord>(layer, [](db::LayerRecord& record) { record.off = true; });
    EXPECT_EQ(at(10, 50), kBackground);
    EXPECT_TRUE(scene.pick(model(), {10, 50, 0}, 3).empty());
    change<db::LayerRecord>(layer, [](db::LayerRecord& record) { record.off = false, record.flags = 1; });
    EXPECT_EQ(at(10, 50), kBackground);
    change<db::LayerRecord>(layer, [](db::LayerRecord& record) { record.flags = 0, record.color = 5; });
    EXPECT_EQ(at(10, 50), kBlue);
}

TEST_F(SceneTest, TheLineTypeOfALayerShows) {
    auto* dashed = new db::LinetypeRecord;
    dashed->name = L"DASHED";
    dashed->dashes = {10, -10};
    MxDbObjectId type;
    ASSERT_EQ(database.imp().append(dashed, database.imp().roots.linetypeTable, type), Mx::eOk);
    dashed->close();
    const MxDbObjectId line = addLine({0, 50.5, 0}, {100, 50.5, 0});
    change<db::Line>(line, [&](db::Line& l) { db::traits(l).linetype = type; });
    EXPECT_EQ(at(5, 50), kRed);
    EXPECT_EQ(at(15, 50), kBackground);
}

TEST_F(SceneTest, TheScaleOfAllLineTypesShowsAndSoDoesItsUndo) {
    auto* dashed = new db::LinetypeRecord;
    dashed->name = L"DASHED";
    dashed->dashes = {10, -10};
    MxDbObjectId type;
    ASSERT_EQ(database.imp().append(dashed, database.imp().roots.linetypeTable, type), Mx::eOk);
    dashed->close();
    const MxDbObjectId line = addLine({0, 50.5, 0}, {100, 50.5, 0});
    change<db::Line>(line, [&](db::Line& l) { db::traits(l).linetype = type; });
    EXPECT_EQ(at(15, 50), kBackground);
    auto header = database.imp().header;
    header.linetypeScale = 2.0;
    database.imp().changeHeader(header);
    EXPECT_EQ(at(15, 50), kRed);
    ASSERT_TRUE(database.imp().undo.undo());
    EXPECT_EQ(at(15, 50), kBackground);
    ASSERT_TRUE(database.imp().undo.redo());
    EXPECT_EQ(at(15, 50), kRed);
}

TEST_F(SceneTest, PickingIsTopmostFirstAndByRealGeometry) {
    const MxDbObjectId below = addLine({0, 0, 0}, {100, 100, 0});
    const MxDbObjectId above = addLine({0, 100, 0}, {100, 0, 0});
    EXPECT_EQ(scene.pick(model(), {50, 50, 0}, 2), (std::vector{above, below}));
    EXPECT_EQ(scene.pick(model(), {20, 20, 0}, 2), std::vector{below});
    EXPECT_TRUE(scene.pick(model(), {50, 20, 0}, 2).empty());
}

TEST_F(SceneTest, AModulesEntityIsPickedBetweenItsStrokes) {
    const MxDbObjectId id = add(new Marker, model(), 256);
    EXPECT_EQ(scene.pick(model(), {40, 40, 0}, 2), std::vector{id});
    EXPECT_TRUE(scene.pick(model(), {70, 40, 0}, 2).empty());
}

TEST_F(SceneTest, WhatAModulesEntityDrawsBesideItsIconIsPickedByItsStrokes) {
    auto* marker = new Marker;
    marker->corner = {70, 70, 0};
    marker->size = 20;
    marker->tail = {10, 10, 0};
    const MxDbObjectId id = add(marker, model(), 256);
    EXPECT_EQ(scene.pick(model(), {80, 80, 0}, 2), std::vector{id}) << "between the strokes of the icon";
    EXPECT_EQ(scene.pick(model(), {30, 31, 0}, 2), std::vector{id}) << "on the line";
    EXPECT_TRUE(scene.pick(model(), {60, 30, 0}, 2).empty()) << "in the box of both";
}

TEST_F(SceneTest, AModulesEntityThatDrawsNothingIsNotPicked) {
    auto* marker = new Marker;
    marker->isHidden = true;
    add(marker, model(), 256);
    EXPECT_TRUE(scene.pick(model(), {40, 40, 0}, 2).empty());
}

TEST_F(SceneTest, ExtentsMadeAnewAreThoseThatModulesWouldDrawNow) {
    addLine({0, 0, 0}, {30, 10, 0});
    auto* marker = new Marker;
    const MxDbObjectId id = add(marker, model(), 256);
    EXPECT_EQ(at(60, 40), kGreen);
    marker->size = 50;
    EXPECT_EQ(scene.extents(model()).maxPoint(), MxGePoint3d(60.5, 60.5, 0));
    EXPECT_EQ(scene.extentsAnew(model()).maxPoint(), MxGePoint3d(70.5, 70.5, 0));
    EXPECT_EQ(scene.extentsAnew(model()).minPoint(), MxGePoint3d(0, 0, 0));
    marker->size = 45;
    EXPECT_EQ(at(65, 40), kGreen) << "the picture is made of what is drawn when it is painted";
    const int drawings = marker->drawings;
    paint();
    EXPECT_EQ(marker->drawings, drawings);
    scene.setDrawn(id, false);
    scene.extentsAnew(model());
    EXPECT_EQ(at(65, 40), kBackground) << "measuring does not bring back what is left out";
}

TEST_F(SceneTest, AModulesEntityIsDrawnOnlyWhenStaleAndInView) {
    auto* marker = new Marker;
    add(marker, model(), 256);
    EXPECT_EQ(at(40, 20), kGreen);
    const int once = marker->drawings;
    paint();
    EXPECT_EQ(marker->drawings, once);
    marker->color = 1;
    change<Marker>(marker->objectId(), [](Marker& m) { m.recordGraphicsModified(); });
    EXPECT_EQ(marker->drawings, once);
    EXPECT_EQ(at(40, 20), kRed);
    EXPECT_EQ(marker->drawings, once + 1);
    view.center = {1e6, 1e6};
    change<Marker>(marker->objectId(), [](Marker& m) { m.recordGraphicsModified(); });
    paint();
    EXPECT_EQ(marker->drawings, once + 1);
}

TEST_F(SceneTest, ExtentsThatGrowWithTheZoomAreIndexedAnew) {
    auto* marker = new Marker;
    add(marker, model(), 256);
    paint();
    marker->corner = {500, 500, 0};
    marker->size = 10;
    change<Marker>(marker->objectId(), [](Marker& m) { m.recordGraphicsModified(); });
    EXPECT_TRUE(scene.pick(model(), {40, 40, 0}, 2).empty());
    EXPECT_EQ(scene.pick(model(), {505, 505, 0}, 2).size(), 1U);
}

TEST_F(SceneTest, PlotsLeaveOutWhatDoesNotPlotAndTheScreenKeepsIt) {
    add(new Marker, model(), 256);
    gi::PaintOptions plot;
    plot.plot = true;
    EXPECT_EQ(paint(plot).pixel(40, 79), kBackground);
    EXPECT_EQ(at(40, 20), kGreen);
}

TEST_F(SceneTest, AnEntityLeftOutStaysOutUntilItIsMadeAnew) {
    const MxDbObjectId id = addLine({10.5, 0, 0}, {10.5, 100, 0});
    scene.setDrawn(id, false);
    EXPECT_EQ(at(10, 50), kBackground);
    scene.setDrawn(id, true);
    EXPECT_EQ(at(10, 50), kRed);
    scene.setDrawn(id, false);
    change<db::Line>(id, [](db::Line& line) { line.recordGraphicsModified(); });
    EXPECT_EQ(at(10, 50), kRed);
}

TEST_F(SceneTest, ExtentsOfAPlotLeaveOutWhatDoesNotPlot) {
    addLine({0, 0, 0}, {100, 50, 0});
    auto* marker = new Marker;
    marker->corner = {5000, 5000, 0};
    add(marker, model(), 256);
    EXPECT_EQ(scene.extents(model()).maxPoint(), MxGePoint3d(5040, 5040, 0));
    EXPECT_EQ(scene.extents(model(), true).minPoint(), MxGePoint3d(0, 0, 0));
    EXPECT_EQ(scene.extents(model(), true).maxPoint(), MxGePoint3d(100, 50, 0));
}

TEST_F(SceneTest, ExtentsHoldAllThatIsVisible) {
    EXPECT_TRUE(scene.extents(model()).isEmpty());
    addLine({-5, 2, 0}, {30, 40, 0});
    addLine({0, -7, 0}, {1, 1, 0});
    const MxDbExtents box = scene.extents(model());
    EXPECT_EQ(box.minPoint(), MxGePoint3d(-5, -7, 0));
    EXPECT_EQ(box.maxPoint(), MxGePoint3d(30, 40, 0));
}

TEST_F(SceneTest, EntitiesAppendedAfterAPictureAreDrawn) {
    addLine({10.5, 0, 0}, {10.5, 100, 0});
    paint();
    addLine({60.5, 0, 0}, {60.5, 100, 0}, 5);
    EXPECT_EQ(at(60, 50), kBlue);
}

TEST_F(SceneTest, AModulesEntityThatTellsNoPlaceIsSeenWhereItDrawsItself) {
    auto* marker = new Marker;
    marker->isPlaced = false;
    add(marker, model(), 256);
    EXPECT_EQ(at(40, 20), kGreen);
    EXPECT_EQ(scene.extents(model()).maxPoint(), MxGePoint3d(60.5, 60.5, 0));
    marker->corner = {30.5, 30.5, 0};
    change<Marker>(marker->objectId(), [](Marker& m) { m.recordGraphicsModified(); });
    EXPECT_EQ(at(50, 30), kGreen);
    EXPECT_EQ(at(40, 20), kBackground);
    // What is added later and what is only marked behave the same.
    auto* later = new Marker;
    later->isPlaced = false;
    later->corner = {5.5, 5.5, 0};
    add(later, model(), 256);
    EXPECT_EQ(at(30, 5), kGreen);
    scene.objectModified(*later);
    EXPECT_EQ(at(30, 5), kGreen);
}

TEST_F(SceneTest, WhatAModulesEntityDrawsFarFromWhatItTellsIsSeenThereAlsoWhenMadeAnew) {
    auto* marker = new Marker;
    marker->corner = {1020.5, 20.5, 0};
    marker->tail = {20.5, 20.5, 0};
    add(marker, model(), 256);
    EXPECT_EQ(at(50, 20), kGreen);
    for (const int color : {1, 5}) {
        marker->color = static_cast<std::uint16_t>(color);
        change<Marker>(marker->objectId(), [](Marker& m) { m.recordGraphicsModified(); });
        EXPECT_EQ(at(50, 20), color == 1 ? kRed : kBlue);
    }
}

TEST_F(SceneTest, WhatIsDrawnBeyondAllDrawingsDoesNotCount) {
    addLine({-5, 2, 0}, {30, 40, 0});
    auto* marker = new Marker;
    marker->corner = MxDbExtents().maxPoint();
    add(marker, model(), 256);
    auto* tailed = new Marker;
    tailed->tail = MxDbExtents().minPoint();
    tailed->corner = {1, 1, 0};
    tailed->size = 1;
    add(tailed, model(), 256);
    EXPECT_EQ(scene.extents(model()).minPoint(), MxGePoint3d(-5, 1, 0));
    EXPECT_EQ(scene.extents(model()).maxPoint(), MxGePoint3d(30, 40, 0));
}

TEST_F(SceneTest, WhatDrawingCodeDoesToTheDrawingIsNoStepOfTheUsersAndNotDoneToAnother) {
    MxDbDatabase other;
    other.imp().createDefaults();
    const db::WorkingDatabaseScope scope(&other);
    const MxDbObjectId line = addLine({0, 0, 0}, {1, 1, 0});
    change<db::Line>(line, [](db::Line& changed) { changed.end = {2, 2, 0}; });
    ASSERT_TRUE(database.imp().undo.undo());
    const std::size_t steps = database.imp().undo.undoUnits().size();
    auto* marker = new Marker;
    const MxDbObjectId id = add(marker, model(), 256);
    ASSERT_TRUE(database.imp().undo.undo());
    ASSERT_TRUE(database.imp().undo.redo());
    MxDbDatabase* worked = nullptr;
    MxDbObjectId made;
    marker->whileDrawn = [&] {
        worked = mxdbHostApplicationServices()->workingDatabase();
        if (made.isNull())
            made = addLayer(L"Made while drawing");
    };
    paint();
    EXPECT_EQ(worked, &database);
    EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), &other);
    EXPECT_TRUE(db::DatabaseImp::peek(made));
    EXPECT_EQ(database.imp().undo.undoUnits().size(), steps + 1) << "the insertion of " << id.handle().value();
    EXPECT_TRUE(database.imp().undo.undo());
    EXPECT_TRUE(db::DatabaseImp::peek(made)) << "it was not part of what was taken back";
    EXPECT_TRUE(database.imp().undo.canRedo());
    paint();
    EXPECT_TRUE(database.imp().undo.canRedo());
}

TEST_F(SceneTest, ATextWithoutEndIsDrawnAsFarAsAnybodyReads) {
    auto* text = new db::Text;
    text->text.assign(1'000'000, L'W');
    text->height = 10;
    text->position = {5, 5, 0};
    add(text, model(), 1);
    const double width = scene.extents(model()).maxPoint().x;
    EXPECT_GT(width, 1000.0);
    EXPECT_LT(width, 4096 * 20.0);
}

TEST_F(SceneTest, PlotsLeaveOutLayersThatAreNotPlotted) {
    const MxDbObjectId hidden = addLayer(L"Construction lines");
    change<db::LayerRecord>(hidden, [](db::LayerRecord& layer) { layer.plottable = false; });
    auto* line = new db::Line;
    line->start = {10.5, 0, 0};
    line->end = {10.5, 100, 0};
    db::traits(*line).layer = hidden;
    add(line, model(), 1);
    addLine({60.5, 0, 0}, {60.5, 100, 0}, 5);
    gi::PaintOptions plot;
    plot.plot = true;
    const QImage paper = paint(plot);
    EXPECT_EQ(paper.pixel(10, 50), kBackground);
    EXPECT_EQ(paper.pixel(60, 50), kBlue);
    EXPECT_EQ(at(10, 50), kRed);
}

TEST_F(SceneTest, TheSortEntitiesTableSaysWhatLiesOverWhat) {
    const MxDbObjectId red = addLine({0, 50.5, 0}, {100, 50.5, 0}, 1);
    const MxDbObjectId blue = addLine({50.5, 0, 0}, {50.5, 100, 0}, 5);
    EXPECT_EQ(at(50, 50), kBlue) << "the later one";
    MxDbSortentsTable* table = nullptr;
    change<MxDbBlockTableRecord>(model(), [&](MxDbBlockTableRecord& block) {
        ASSERT_EQ(block.getSortentsTable(table, Mx::kForWrite, true), Mx::eOk);
    });
    ASSERT_TRUE(table);
    const MxDbObjectId tableId = table->objectId();
    ASSERT_EQ(table->moveToTop({red}), Mx::eOk);
    table->close();
    EXPECT_EQ(at(50, 50), kRed);
    EXPECT_EQ(scene.pick(model(), {50.5, 50.5, 0}, 1), (std::vector<MxDbObjectId>{red, blue})) << "topmost first";
    // Also where only a part is in view, and for what comes later.
    view.center = {60, 60};
    EXPECT_EQ(paint().pixel(40, 59), kRed);
    view.center = {50, 50};
    addLine({50.5, 0, 0}, {50.5, 100, 0}, 3);
    EXPECT_EQ(at(50, 50), kGreen) << "what is added lies on top of all";
    change<MxDbSortentsTable>(tableId, [&](MxDbSortentsTable& order) { order.moveToTop({blue}); });
    EXPECT_EQ(at(50, 50), kBlue);
    change<MxDbSortentsTable>(tableId, [](MxDbSortentsTable& order) { order.erase(); });
    EXPECT_EQ(at(50, 50), kGreen);
}

} // namespace
