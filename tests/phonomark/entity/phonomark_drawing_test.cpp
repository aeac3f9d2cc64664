// SPDX-License-Identifier: MIT
#include "phonomark/entity/phonomark.h"

#include "host/gi/world_draw.h"
#include "merix/db/tables.h"
#include "phonomark/app/module_state.h"
#include "tests/phonomark/module_fixture.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

/// Writes down what is drawn.
class Recorder : public MxGiWorldDraw, MxGiContext, MxGiSubEntityTraits, MxGiWorldGeometry {
public:
    MxGiContext* context() const override { return hasContext ? const_cast<Recorder*>(this) : nullptr; }
    MxGiSubEntityTraits& subEntityTraits() const override { return const_cast<Recorder&>(*this); }
    MxGiWorldGeometry& geometry() const override { return const_cast<Recorder&>(*this); }

    bool isPlotGeneration() const override { return plots; }
    bool implementsTraits() const override { return hasTraits; }
    void setColor(std::uint16_t color) override { note("color", color); }
    void setTrueColor(const MxCmEntityColor& color) override {
        trueColor = color;
        note("truecolor", int{color.red});
    }
    MxDbObjectId lineType() const override {
        traitsAsked = true;
        return {};
    }
    void setLineType(MxDbObjectId id) override {
        linetypes.push_back(id);
        note("linetype", !id.isNull());
    }
    void setFill(bool fill) override { note("fill", fill); }
    void setLineWeight(int weight) override { note("weight", m_weight = weight); }
    int lineWeight() const override {
        traitsAsked = true;
        return m_weight;
    }
    void circle(const MxGePoint3d& center, double radius, const MxGeVector3d&) override {
        grow(center);
        note("circle", radius);
    }
    void circularArc(const MxGePoint3d& center, double, const MxGeVector3d&, const MxGeVector3d&,
                     double sweep) override {
        grow(center);
        note("arc", sweep);
    }
    void worldLine(const MxGePoint3d* points, std::size_t count) override {
        lines.emplace_back(points, points + count);
        note("line", count);
    }
    void polyline(const MxGePoint3d* points, std::size_t count) override {
        lines.emplace_back(points, points + count);
        note("polyline", count);
    }
    void polygon(const MxGePoint3d* points, std::size_t count) override {
        lines.emplace_back(points, points + count);
        note("polygon", count);
    }
    void pline(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) override {
        isClosed = closed;
        for (std::size_t i = 0; i < count; ++i)
            grow({vertices[i].point.x, vertices[i].point.y, 0});
        last.assign(vertices, vertices + count);
        note("pline", count);
    }
    void text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction, double height,
              double width, double oblique, const wchar_t* shown) override {
        textPosition = position;
        textHeight = height;
        isTextPlain =
            normal == MxGeVector3d::kZAxis && direction == MxGeVector3d::kXAxis && width == 1.0 && oblique == 0.0;
        textShown = shown;
        note("text", height);
    }

    bool has(const std::string& start) const {
        return std::any_of(calls.begin(), calls.end(),
                           [&](const std::string& call) { return call.rfind(start, 0) == 0; });
    }

    bool plots = false, hasContext = true, hasTraits = true;
    mutable bool traitsAsked = false;
    std::vector<std::string> calls;
    std::vector<std::vector<MxGePoint3d>> lines;
    std::vector<MxGiPolylineVertex> last;
    bool isClosed = false;
    MxCmEntityColor trueColor;
    std::vector<MxDbObjectId> linetypes;
    MxDbExtents filled;
    MxGePoint3d textPosition;
    double textHeight = 0;
    bool isTextPlain = false; ///< upright, level, and of its own width
    std::wstring textShown;

private:
    template <class T> void note(const char* what, T value) {
        std::ostringstream call;
        call << what << ' ' << value;
        calls.push_back(call.str());
    }
    void grow(const MxGePoint3d& point) { filled.addPoint(point); }
    int m_weight = 25;
};

class DrawingTest : public ModuleTest {
protected:
    void addLinetype(const wchar_t* name) {
        auto* linetype = new merix::db::LinetypeRecord;
        linetype->name = name;
        MxDbSymbolTable* table = nullptr;
        ASSERT_EQ(mxdbOpenObject(table, database().linetypeTableId(), Mx::kForWrite), Mx::eOk);
        MxDbObjectId id;
        ASSERT_EQ(database().imp().append(linetype, table->objectId(), id), Mx::eOk);
        linetype->close();
        table->records.push_back(id);
        table->close();
    }
    const TransformView view{5.0 / 32}; ///< 32 pixels are 5 units
    MxDbPhonomark point;
    Recorder recorder;
};

constexpr double kTolerance = 1e-9;

} // namespace

TEST_F(DrawingTest, ThePartsAreDrawnInTheirOrderWithThinLines) {
    EXPECT_TRUE(point.subWorldDraw(&recorder));
    ASSERT_GE(recorder.calls.size(), 11u);
    EXPECT_EQ(recorder.calls[0], "weight 0");
    EXPECT_EQ(recorder.calls[1], "color 9");
    EXPECT_EQ(recorder.calls[2], "line 5");
    EXPECT_EQ(recorder.calls[3], "circle 0.5");
    EXPECT_EQ(recorder.calls[4], "line 2");
    EXPECT_EQ(recorder.calls[5], "line 2");
    EXPECT_EQ(recorder.calls[6], "color 9");
    EXPECT_EQ(recorder.calls[7].rfind("text", 0), 0u);
    EXPECT_EQ(recorder.calls[8], "color 9");
    EXPECT_EQ(recorder.calls[9], "fill 1") << "the icon is filled whatever was in force";
    EXPECT_EQ(recorder.calls.back(), "weight 25");
}

TEST_F(DrawingTest, TheMarkerStandsUpAndRightOfThePoint) {
    point.setPosition({100, 50, 7});
    point.subWorldDraw(&recorder);
    MxDbExtents image;
    point.getImageRegion(image);
    EXPECT_NEAR(image.minPoint().x, 100 + 3 * std::cos(0.785), kTolerance);
    EXPECT_NEAR(image.minPoint().y, 50 + 3 * std::sin(0.785), kTolerance);
    EXPECT_NEAR(image.maxPoint().x - image.minPoint().x, 5, kTolerance) << "as wide as 32 pixels";
    EXPECT_NEAR(image.maxPoint().y - image.minPoint().y, 5, kTolerance);
    EXPECT_NEAR(recorder.textHeight, 5.0 / 3, kTolerance);
    EXPECT_NEAR(recorder.textPosition.x, image.minPoint().x + 0.125 * 5, kTolerance);
    EXPECT_NEAR(recorder.textPosition.y, image.minPoint().y + 1.3 * 5, kTolerance);
    EXPECT_EQ(recorder.textShown, L"0.0\"");
    EXPECT_TRUE(recorder.isTextPlain);
}

TEST_F(DrawingTest, TheMarkerTakesTheSizeOfTheZoomWhenItIsDrawn) {
    point.setPosition({100, 50, 0});
    point.subWorldDraw(&recorder);
    const TransformView closer(1.0 / 32);
    MxDbExtents before, box, after;
    point.getImageRegion(before);
    EXPECT_NEAR(before.maxPoint().x - before.minPoint().x, 5, kTolerance) << "as it was drawn";
    ASSERT_EQ(point.subGetGeomExtents(box), Mx::eOk);
    EXPECT_NEAR(box.minPoint().x, before.minPoint().x, kTolerance) << "the corner as it was drawn";
    EXPECT_NEAR(box.maxPoint().x - box.minPoint().x, 1, kTolerance) << "the size of this zoom";
    EXPECT_NEAR(box.maxPoint().y - box.minPoint().y, 1.8, kTolerance);
    point.subWorldDraw(&recorder);
    EXPECT_DOUBLE_EQ(point.refUnits(), 1.0);
    EXPECT_NEAR(recorder.textHeight, 1.0 / 3, kTolerance);
    point.getImageRegion(after);
    EXPECT_NEAR(after.minPoint().x, 100 + 0.6 * std::cos(0.785), kTolerance);
    EXPECT_NEAR(after.maxPoint().x - after.minPoint().x, 1, kTolerance);
}

TEST_F(DrawingTest, TheTargetIsCentredOnThePoint) {
    point.setPosition({100, 50, 7});
    point.subWorldDraw(&recorder);
    ASSERT_GE(recorder.lines.size(), 3u);
    EXPECT_NEAR(recorder.lines[1][0].x, 99, kTolerance);
    EXPECT_NEAR(recorder.lines[1][1].x, 101, kTolerance);
    EXPECT_EQ(recorder.lines[1][0].y, 50);
    EXPECT_EQ(recorder.lines[1][0].z, 7);
}

TEST_F(DrawingTest, TheIconsLieInTheMarkerSquareAndDiffer) {
    Recorder empty, recorded;
    point.subWorldDraw(&empty);
    point.setAudioData(soundBytes(100));
    point.setAudioDataSize(100);
    point.subWorldDraw(&recorded);
    MxDbExtents image;
    point.getImageRegion(image);
    image.addPoint(point.position());
    for (const Recorder* drawn : {&empty, &recorded}) {
        EXPECT_GE(drawn->filled.minPoint().x, image.minPoint().x - kTolerance);
        EXPECT_GE(drawn->filled.minPoint().y, image.minPoint().y - kTolerance);
        EXPECT_LE(drawn->filled.maxPoint().x, image.maxPoint().x + kTolerance);
        EXPECT_LE(drawn->filled.maxPoint().y, image.maxPoint().y + kTolerance);
    }
    EXPECT_TRUE(empty.has("arc 3.14159"));
    EXPECT_FALSE(recorded.has("arc"));
}

TEST_F(DrawingTest, NothingIsDrawnForPaper) {
    recorder.plots = true;
    EXPECT_TRUE(point.subWorldDraw(&recorder));
    EXPECT_TRUE(recorder.calls.empty());
    recorder.hasContext = false;
    EXPECT_TRUE(point.subWorldDraw(&recorder));
    EXPECT_FALSE(recorder.calls.empty()) << "without a context it is the screen";
}

TEST_F(DrawingTest, HiddenNotesDrawNothingAndStillHaveExtents) {
    SetPhonomarkVar(false);
    EXPECT_TRUE(point.subWorldDraw(&recorder));
    EXPECT_TRUE(recorder.calls.empty());
    MxDbExtents box;
    EXPECT_EQ(point.subGetGeomExtents(box), Mx::eOk);
    SetPhonomarkVar(true);
    MxDbExtents shown;
    EXPECT_EQ(point.subGetGeomExtents(shown), Mx::eOk);
    EXPECT_EQ(box.minPoint(), shown.minPoint());
    EXPECT_EQ(box.maxPoint(), shown.maxPoint());
    EXPECT_FALSE(box.isEmpty());
}

TEST_F(DrawingTest, AnInterfaceWithoutTraitsIsNotAskedForThem) {
    recorder.hasTraits = false;
    point.subWorldDraw(&recorder);
    EXPECT_FALSE(recorder.has("color"));
    EXPECT_FALSE(recorder.has("fill"));
    EXPECT_FALSE(recorder.has("weight"));
    EXPECT_TRUE(recorder.has("text"));
}

TEST_F(DrawingTest, AnInterfaceWithoutTraitsGetsTheFormsOfEveryPartAlone) {
    const auto hasOnlyForms = [](const Recorder& drawn) {
        return !drawn.has("color") && !drawn.has("truecolor") && !drawn.has("linetype") && !drawn.has("fill") &&
               !drawn.has("weight") && !drawn.traitsAsked;
    };
    point.setPhonomarkType(kRegionNote);
    point.setExtents(MxDbExtents({1, 2, 0}, {30, 40, 0}));
    point.setAudioData(soundBytes(100));
    point.setAudioDataSize(100);
    point.setPlaying(true);
    Recorder whole, plate, light;
    whole.hasTraits = plate.hasTraits = light.hasTraits = false;
    point.subWorldDraw(&whole);
    EXPECT_TRUE(hasOnlyForms(whole));
    EXPECT_TRUE(whole.has("polyline 5"));
    EXPECT_TRUE(database().imp().linetypeNamed(L"DASHEDX2").isNull()) << "not looked for, so not loaded";
    point.DrawBack(&plate);
    EXPECT_TRUE(hasOnlyForms(plate));
    EXPECT_TRUE(plate.has("polygon 4"));
    point.DrawLight(&light);
    EXPECT_TRUE(hasOnlyForms(light));
    EXPECT_TRUE(light.has("pline 2"));
}

TEST_F(DrawingTest, ARecordingOfNinetyNineBytesIsLostWhenDrawn) {
    point.setAudioData(soundBytes(99));
    point.setAudioDataSize(99);
    point.setDuration(L"0.1\"");
    point.subWorldDraw(&recorder);
    EXPECT_EQ(point.getAudioData(), nullptr);
    EXPECT_FALSE(point.isRecord());
    EXPECT_EQ(recorder.textShown, L"0.0\"");
}

TEST_F(DrawingTest, ARecordingOfAHundredBytesIsKept) {
    point.setAudioData(soundBytes(100));
    point.setAudioDataSize(100);
    point.setDuration(L"0.1\"");
    point.subWorldDraw(&recorder);
    EXPECT_TRUE(point.getAudioData());
    EXPECT_TRUE(point.isRecord());
    EXPECT_EQ(recorder.textShown, L"0.1\"");
}

TEST_F(DrawingTest, ANoteThatPlaysShowsAGreenTriangle) {
    point.setAudioData(soundBytes(100));
    point.setAudioDataSize(100);
    point.subWorldDraw(&recorder);
    EXPECT_FALSE(recorder.has("color 3"));
    point.setPlaying(true);
    point.subWorldDraw(&recorder);
    EXPECT_TRUE(recorder.has("color 3"));
    ASSERT_EQ(recorder.last.size(), 2u);
    EXPECT_NEAR(recorder.last[0].startWidth, 1.5, kTolerance);
    EXPECT_EQ(recorder.last[0].endWidth, 0);
    EXPECT_NEAR(recorder.last[1].point.x - recorder.last[0].point.x, 1, kTolerance);
}

TEST_F(DrawingTest, TheExtentsAreTheMarkerAndRoomForTheText) {
    point.setPosition({100, 50, 0});
    MxDbExtents box;
    ASSERT_EQ(point.subGetGeomExtents(box), Mx::eOk);
    EXPECT_NEAR(box.maxPoint().x - box.minPoint().x, 5, kTolerance);
    EXPECT_NEAR(box.maxPoint().y - box.minPoint().y, 9, kTolerance);
}

TEST_F(DrawingTest, TheMarkerOfARegionStandsAtItsMaximumCorner) {
    point.setPhonomarkType(kRegionNote);
    point.setExtents(MxDbExtents({1, 2, 0}, {30, 40, 0}));
    point.subWorldDraw(&recorder);
    MxDbExtents image;
    point.getImageRegion(image);
    EXPECT_EQ(image.minPoint(), MxGePoint3d(30, 40, 0));
    EXPECT_TRUE(recorder.has("color 8"));
}

TEST_F(DrawingTest, ANoteWithoutAPlaceAnswersWithTheFarCornerOfEmptyExtents) {
    point.setPhonomarkType(kReplyNote);
    MxDbExtents box;
    EXPECT_EQ(point.subGetGeomExtents(box), Mx::eOk);
    EXPECT_EQ(box.minPoint(), MxDbExtents().maxPoint());
}

TEST_F(DrawingTest, ThePointerIsAKiteOfTheGivenAngles) {
    point.setPosition({100, 50, 7});
    point.subWorldDraw(&recorder);
    ASSERT_GE(recorder.lines.size(), 1u);
    const std::vector<MxGePoint3d>& kite = recorder.lines[0];
    ASSERT_EQ(kite.size(), 5u);
    const auto at = [](double angle) { return MxGePoint3d(100 + 3 * std::cos(angle), 50 + 3 * std::sin(angle), 7); };
    const MxGePoint3d expected[] = {point.position(), at(0.785 + 0.3925), at(0.785), at(0.785 - 0.3925),
                                    point.position()};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_NEAR(kite[i].x, expected[i].x, kTolerance) << i;
        EXPECT_NEAR(kite[i].y, expected[i].y, kTolerance) << i;
        EXPECT_EQ(kite[i].z, 7) << i;
    }
}

TEST_F(DrawingTest, ARegionIsOneDashedFigureOfFivePoints) {
    point.setPhonomarkType(kRegionNote);
    point.setExtents(MxDbExtents({1, 2, 3}, {30, 40, 5}));
    addLinetype(L"DASHEDX2");
    point.subWorldDraw(&recorder);
    EXPECT_EQ(recorder.calls[1], "color 8");
    EXPECT_EQ(recorder.calls[2], "linetype 1");
    EXPECT_EQ(recorder.calls[3], "polyline 5");
    ASSERT_FALSE(recorder.lines.empty());
    const std::vector<MxGePoint3d> corners{{1, 2, 3}, {30, 2, 0}, {30, 40, 5}, {1, 40, 0}, {1, 2, 3}};
    EXPECT_EQ(recorder.lines[0], corners);
    EXPECT_EQ(recorder.calls[4], "linetype 0");
    ASSERT_EQ(recorder.linetypes.size(), 2u) << "dashed, and for the sign what was in force before";
    EXPECT_EQ(recorder.linetypes[0], database().imp().linetypeNamed(L"DASHEDX2"));
    EXPECT_EQ(recorder.linetypes[1], recorder.lineType());
}

TEST_F(DrawingTest, WithoutTheLineTypeTheOutlineKeepsTheOneInForce) {
    point.setPhonomarkType(kRegionNote);
    point.setExtents(MxDbExtents({1, 2, 0}, {30, 40, 0}));
    MxDbSymbolTable* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, database().linetypeTableId(), Mx::kForWrite), Mx::eOk);
    EXPECT_TRUE(point.subWorldDraw(&recorder));
    writer->close();
    EXPECT_FALSE(recorder.has("linetype"));
    EXPECT_TRUE(recorder.has("polyline 5"));
}

TEST_F(DrawingTest, WithoutTheLineTypeFileTheOutlineKeepsTheLineTypeInForce) {
    const QByteArray before = qgetenv("MERIX_RESOURCE_PATH");
    qputenv("MERIX_RESOURCE_PATH", folder.path().toLocal8Bit());
    point.setPhonomarkType(kRegionNote);
    point.setExtents(MxDbExtents({1, 2, 0}, {30, 40, 0}));
    EXPECT_TRUE(point.subWorldDraw(&recorder));
    qputenv("MERIX_RESOURCE_PATH", before);
    EXPECT_FALSE(recorder.has("linetype"));
    EXPECT_TRUE(recorder.has("polyline 5"));
    EXPECT_TRUE(recorder.has("text"));
}

TEST_F(DrawingTest, AHiddenRegionLeavesIconAndTextAtItsMaximumCorner) {
    const MxDbObjectId id = addNote(kRegionNote);
    note(id).setExtents(MxDbExtents({1, 2, 0}, {30, 40, 0}));
    note(id).ShowRegion(false);
    Recorder hidden;
    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, id, Mx::kForRead), Mx::eOk);
    open->subWorldDraw(&hidden);
    open->close();
    EXPECT_FALSE(hidden.has("polyline"));
    EXPECT_FALSE(hidden.has("linetype"));
    EXPECT_NEAR(hidden.textPosition.x, 30 + 0.125 * 5, kTolerance);
    EXPECT_NEAR(hidden.textPosition.y, 40 + 1.3 * 5, kTolerance);
    EXPECT_FALSE(hidden.filled.isEmpty());
    EXPECT_GE(hidden.filled.minPoint().x, 30 - kTolerance);
}

TEST_F(DrawingTest, TheMarkerOfAnObjectNoteStandsAtTheObjectsMaximumCornerAndNothingElseIsDrawn) {
    point.setPhonomarkType(kObjectNote);
    point.setExtents(MxDbExtents({1, 2, 0}, {30, 40, 6}));
    EXPECT_EQ(point.DrawObject(&recorder), Mx::eOk);
    EXPECT_TRUE(recorder.calls.empty());
    MxDbExtents image;
    point.getImageRegion(image);
    EXPECT_EQ(image.minPoint(), MxGePoint3d(30, 40, 0)) << "the far corner lies at height 0";
    point.subWorldDraw(&recorder);
    EXPECT_EQ(recorder.calls[1], "color 9");
    EXPECT_EQ(recorder.calls[2].rfind("text", 0), 0u);
}

TEST_F(DrawingTest, AReplyHasNoPartOfItsOwn) {
    point.setPhonomarkType(kReplyNote);
    point.subWorldDraw(&recorder);
    EXPECT_EQ(recorder.calls[1], "color 9");
    EXPECT_EQ(recorder.calls[2].rfind("text", 0), 0u);
    EXPECT_NEAR(recorder.textPosition.x, 0.125 * 5, kTolerance) << "at the origin";
}

TEST_F(DrawingTest, ThePlateIsALightBlueSquareWithAnEdge) {
    point.setPosition({100, 50, 7});
    point.subWorldDraw(&recorder);
    MxDbExtents image;
    point.getImageRegion(image);
    const MxGePoint3d low = image.minPoint();
    Recorder plate;
    point.DrawBack(&plate);
    const std::vector<std::string> calls{"fill 1", "truecolor 157", "polygon 4", "color 7", "pline 5"};
    EXPECT_EQ(plate.calls, calls);
    EXPECT_EQ(plate.trueColor, (MxCmEntityColor{MxCmEntityColor::Method::kByColor, 157, 184, 244}));
    ASSERT_EQ(plate.lines.size(), 1u);
    const MxGePoint2d corners[] = {
        {low.x, low.y}, {low.x + 5, low.y}, {low.x + 5, low.y + 5}, {low.x, low.y + 5}, {low.x, low.y}};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_NEAR(plate.lines[0][i % 4].x, corners[i].x, kTolerance);
        EXPECT_NEAR(plate.lines[0][i % 4].y, corners[i].y, kTolerance);
        EXPECT_NEAR(plate.last[i].point.x, corners[i].x, kTolerance);
        EXPECT_NEAR(plate.last[i].point.y, corners[i].y, kTolerance);
        EXPECT_EQ(plate.last[i].startWidth, -1);
        EXPECT_EQ(plate.last[i].endWidth, -1);
    }
    EXPECT_FALSE(plate.isClosed) << "it would be filled";
}

TEST_F(DrawingTest, TheTriangleIsCentredOnTheMarkersCorner) {
    point.setAudioData(soundBytes(100));
    point.setAudioDataSize(100);
    point.setPlaying(true);
    point.subWorldDraw(&recorder);
    MxDbExtents image;
    point.getImageRegion(image);
    ASSERT_EQ(recorder.last.size(), 2u);
    for (const int i : {0, 1})
        EXPECT_NEAR(recorder.last[static_cast<std::size_t>(i)].point.y, image.maxPoint().y, kTolerance);
    EXPECT_NEAR(recorder.last[0].point.x, image.maxPoint().x - 0.5, kTolerance);
    EXPECT_NEAR(recorder.last[1].point.x, image.maxPoint().x + 0.5, kTolerance);
    point.setRecord(false);
    Recorder empty;
    point.subWorldDraw(&empty);
    EXPECT_FALSE(empty.has("color 3")) << "there is nothing to play";
}

TEST_F(DrawingTest, TheExtentsBeginAtTheMarkersCorner) {
    point.setPosition({100, 50, 7});
    MxDbExtents box;
    ASSERT_EQ(point.subGetGeomExtents(box), Mx::eOk);
    EXPECT_NEAR(box.minPoint().x, 100 + 3 * std::cos(0.785), kTolerance);
    EXPECT_NEAR(box.minPoint().y, 50 + 3 * std::sin(0.785), kTolerance);
    point.setPhonomarkType(kRegionNote);
    point.setExtents(MxDbExtents({1, 2, 0}, {30, 40, 6}));
    MxDbExtents region;
    ASSERT_EQ(point.subGetGeomExtents(region), Mx::eOk);
    EXPECT_EQ(region.minPoint(), MxGePoint3d(30, 40, 0));
    EXPECT_NEAR(region.maxPoint().x, 35, kTolerance);
    EXPECT_NEAR(region.maxPoint().y, 49, kTolerance);
    EXPECT_EQ(region.maxPoint().z, 6);
}

TEST_F(DrawingTest, ANoteLooksTheSameInEveryViewport) {
    EXPECT_EQ(point.subViewportDrawLogicalFlags(nullptr), 0u);
    EXPECT_EQ(point.subSetAttributes(nullptr), 0u);
    point.subViewportDraw(nullptr);
    MxDbPhonomark& closed = note(addNote());
    EXPECT_DEATH(closed.subSetAttributes(nullptr), "");
    EXPECT_DEATH(closed.subViewportDraw(nullptr), "");
}
