// SPDX-License-Identifier: MIT
#include "phonomark/entity/phonomark.h"

#include "host/gi/world_draw.h"
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
    void setFill(bool fill) override { note("fill", fill); }
    void setLineWeight(int weight) override { note("weight", m_weight = weight); }
    int lineWeight() const override { return m_weight; }
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
    void pline(const MxGiPolylineVertex* vertices, std::size_t count, bool) override {
        for (std::size_t i = 0; i < count; ++i)
            grow({vertices[i].point.x, vertices[i].point.y, 0});
        last.assign(vertices, vertices + count);
        note("pline", count);
    }
    void text(const MxGePoint3d& position, const MxGeVector3d&, const MxGeVector3d&, double height, double, double,
              const wchar_t* shown) override {
        textPosition = position;
        textHeight = height;
        textShown = shown;
        note("text", height);
    }

    bool has(const std::string& start) const {
        return std::any_of(calls.begin(), calls.end(),
                           [&](const std::string& call) { return call.rfind(start, 0) == 0; });
    }

    bool plots = false, hasContext = true, hasTraits = true;
    std::vector<std::string> calls;
    std::vector<std::vector<MxGePoint3d>> lines;
    std::vector<MxGiPolylineVertex> last;
    MxDbExtents filled;
    MxGePoint3d textPosition;
    double textHeight = 0;
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
    const TransformView view{5.0 / 32}; ///< 32 pixels are 5 units
    MxDbPhonomark point;
    Recorder recorder;
};

constexpr double kTolerance = 1e-9;

} // namespace

TEST_F(DrawingTest, ThePartsAreDrawnInTheirOrderWithThinLines) {
    EXPECT_TRUE(point.subWorldDraw(&recorder));
    ASSERT_GE(recorder.calls.size(), 8u);
    EXPECT_EQ(recorder.calls[0], "weight 0");
    EXPECT_EQ(recorder.calls[1], "color 9");
    EXPECT_EQ(recorder.calls[2], "line 5");
    EXPECT_EQ(recorder.calls[3], "circle 0.5");
    EXPECT_EQ(recorder.calls[4], "line 2");
    EXPECT_EQ(recorder.calls[5], "line 2");
    EXPECT_EQ(recorder.calls[6], "color 9");
    EXPECT_EQ(recorder.calls[7].rfind("text", 0), 0u);
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
}

TEST_F(DrawingTest, AnInterfaceWithoutTraitsIsNotAskedForThem) {
    recorder.hasTraits = false;
    point.subWorldDraw(&recorder);
    EXPECT_FALSE(recorder.has("color"));
    EXPECT_FALSE(recorder.has("fill"));
    EXPECT_FALSE(recorder.has("weight"));
    EXPECT_TRUE(recorder.has("text"));
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

TEST_F(DrawingTest, ANoteWithoutAPlaceHasNoExtents) {
    point.setPhonomarkType(kReplyNote);
    MxDbExtents box({1, 2, 3}, {4, 5, 6});
    EXPECT_EQ(point.subGetGeomExtents(box), Mx::eInvalidExtents);
    EXPECT_EQ(box.maxPoint(), MxGePoint3d(4, 5, 6));
}

TEST_F(DrawingTest, ShowingTheRegionOfANoteThatCannotBeWrittenChangesNothing) {
    const MxDbObjectId id = addNote();
    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, id, Mx::kForRead), Mx::eOk);
    open->ShowRegion(false);
    EXPECT_TRUE(open->isRegionShown());
    open->close();
    note(id).ShowRegion(false);
    EXPECT_FALSE(note(id).isRegionShown());
    note(id).ShowRegion(true);
    EXPECT_TRUE(note(id).isRegionShown());
}
