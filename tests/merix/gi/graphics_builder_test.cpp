// SPDX-License-Identifier: MIT
#include "merix/gi/graphics_builder.h"

#include "merix/gi/colors.h"
#include "tests/merix/gi/gui_test.h"

#include <functional>
#include <numbers>

using namespace merix;
using namespace merix::gi;
using Kind = Primitive::Kind;

namespace {

/// An entity that draws what the test says.
class Drawer : public MxDbEntity {
public:
    bool subWorldDraw(MxGiWorldDraw* draw) override {
        how(draw->subEntityTraits(), draw->geometry());
        return true;
    }
    std::function<void(MxGiSubEntityTraits&, MxGiWorldGeometry&)> how;
};

class GraphicsBuilderTest : public GuiTest {
protected:
    GraphicsBuilderTest() {
        database.imp().createDefaults();
        mxrxBuildClassHierarchy();
        db::traits(drawer).layer = database.imp().layerNamed(L"0");
    }
    DisplayList drawn(std::function<void(MxGiSubEntityTraits&, MxGiWorldGeometry&)> how) {
        drawer.how = std::move(how);
        return GraphicsBuilder(database.imp()).build(drawer);
    }
    /// The style of a line drawn after these changes.
    Style styleAfter(const std::function<void(MxGiSubEntityTraits&)>& change) {
        const DisplayList list = drawn([&](MxGiSubEntityTraits& traits, MxGiWorldGeometry& geometry) {
            change(traits);
            geometry.worldLine(line, 2);
        });
        EXPECT_EQ(list.primitives.size(), 1u);
        return list.styles.at(list.primitives.at(0).style);
    }
    MxDbObjectId addLinetype(std::vector<double> dashes) {
        auto* linetype = new db::LinetypeRecord;
        linetype->name = L"Test";
        linetype->dashes = std::move(dashes);
        MxDbObjectId id;
        EXPECT_EQ(database.imp().append(linetype, database.linetypeTableId(), id), Mx::eOk);
        linetype->close();
        return id;
    }
    db::LayerRecord& layerZero() {
        return *static_cast<db::LayerRecord*>(db::DatabaseImp::peek(database.imp().layerNamed(L"0")));
    }

    static constexpr MxGePoint3d line[2] = {{0, 0, 0}, {10, 0, 0}};
    static constexpr MxGePoint3d square[5] = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}, {0, 0, 0}};
    MxDbDatabase database;
    Drawer drawer;
};

TEST_F(GraphicsBuilderTest, TrueColoursAreOfThreeMethods) {
    using Method = MxCmEntityColor::Method;
    layerZero().color = 5;
    EXPECT_EQ(styleAfter([](auto& traits) {
                  traits.setTrueColor({Method::kByColor, 157, 184, 244});
              }).rgb,
              qRgb(157, 184, 244));
    EXPECT_EQ(styleAfter([](auto& traits) { traits.setTrueColor({Method::kByLayer, 1, 2, 3}); }).rgb, colorOfIndex(5));
    EXPECT_TRUE(styleAfter([](auto& traits) {
                    traits.setTrueColor({Method::kByBlock, 1, 2, 3});
                }).contrast)
        << "outside a block that is index 7";
}

TEST_F(GraphicsBuilderTest, ATrueColourLastsUntilTheNextColour) {
    const Style style = styleAfter([](MxGiSubEntityTraits& traits) {
        traits.setTrueColor({MxCmEntityColor::Method::kByColor, 157, 184, 244});
        traits.setColor(7);
    });
    EXPECT_TRUE(style.contrast);
}

TEST_F(GraphicsBuilderTest, ALinetypeIsScaledByTheDrawingAndTheEntity) {
    const MxDbObjectId dashed = addLinetype({24, -12});
    database.imp().header.linetypeScale = 2.5;
    db::traits(drawer).linetypeScale = 2.0;
    const Style style = styleAfter([&](MxGiSubEntityTraits& traits) { traits.setLineType(dashed); });
    ASSERT_TRUE(style.dashes);
    EXPECT_EQ(*style.dashes, (DashPattern{24, -12}));
    EXPECT_EQ(style.dashScale, 5.0);
}

TEST_F(GraphicsBuilderTest, NoLinetypeIsTheOneOfTheLayerAndTheOneInForceIsTold) {
    const MxDbObjectId dashed = addLinetype({24, -12});
    const Style style = styleAfter([&](MxGiSubEntityTraits& traits) {
        traits.setLineType(dashed);
        EXPECT_EQ(traits.lineType(), dashed);
        traits.setLineType({});
        EXPECT_TRUE(traits.lineType().isNull());
    });
    EXPECT_FALSE(style.dashes);
    EXPECT_FALSE(styleAfter([&](MxGiSubEntityTraits& traits) {
                     traits.setLineType(dashed);
                     traits.setLineType(database.imp().linetypeNamed(L"Continuous"));
                 }).dashes);
}

TEST_F(GraphicsBuilderTest, LineWeightsAreKeptAndReadBack) {
    layerZero().lineWeight = 70;
    EXPECT_EQ(styleAfter([](auto& traits) { traits.setLineWeight(0); }).weight, 0);
    EXPECT_EQ(styleAfter([](auto& traits) { traits.setLineWeight(35); }).weight, 35);
    EXPECT_EQ(styleAfter([](auto& traits) { traits.setLineWeight(-1); }).weight, 70) << "by layer";
    EXPECT_EQ(styleAfter([](auto& traits) { traits.setLineWeight(-3); }).weight, 25) << "default";
    styleAfter([](MxGiSubEntityTraits& traits) {
        EXPECT_EQ(traits.lineWeight(), -1) << "the entity's own";
        traits.setLineWeight(35);
        EXPECT_EQ(traits.lineWeight(), 35);
    });
}

TEST_F(GraphicsBuilderTest, APolylineIsOneFigureAndLinesAreLinesForThemselves) {
    const MxDbObjectId dashed = addLinetype({24, -12});
    const DisplayList list = drawn([&](MxGiSubEntityTraits& traits, MxGiWorldGeometry& geometry) {
        traits.setLineType(dashed);
        geometry.polyline(square, 5);
        geometry.worldLine(square, 5);
    });
    ASSERT_EQ(list.primitives.size(), 5u);
    EXPECT_EQ(list.primitives[0].count, 5u);
    for (std::size_t i = 1; i < 5; ++i)
        EXPECT_EQ(list.primitives[i].count, 2u);
    EXPECT_EQ(drawn([](auto&, auto& geometry) { geometry.worldLine(square, 5); }).primitives.size(), 1u)
        << "a continuous line looks the same either way";
}

TEST_F(GraphicsBuilderTest, APolygonIsFilledOrOutlined) {
    const DisplayList list = drawn([](MxGiSubEntityTraits& traits, MxGiWorldGeometry& geometry) {
        geometry.polygon(square, 4);
        traits.setFill(true);
        geometry.polygon(square, 4);
    });
    ASSERT_EQ(list.primitives.size(), 2u);
    EXPECT_EQ(list.primitives[0].kind, Kind::kStroke);
    EXPECT_EQ(list.primitives[0].count, 5u) << "closed";
    EXPECT_EQ(list.primitives[1].kind, Kind::kFill);
    EXPECT_EQ(list.primitives[1].count, 4u);
}

TEST_F(GraphicsBuilderTest, AClosedLightPolylineIsAnAreaOnlyWithFillAndWithoutWidth) {
    const MxGiPolylineVertex round[] = {{{0, 0}, 0.414214, 0, 0}, {{10, 10}, 0, 0, 0}, {{0, 10}, 0, 0, 0}};
    const DisplayList list = drawn([&](MxGiSubEntityTraits& traits, MxGiWorldGeometry& geometry) {
        geometry.pline(round, 3, true);
        traits.setFill(true);
        geometry.pline(round, 3, false);
        geometry.pline(round, 3, true);
    });
    ASSERT_FALSE(list.primitives.empty());
    std::size_t fills = 0;
    for (const Primitive& primitive : list.primitives)
        fills += primitive.kind == Kind::kFill;
    EXPECT_EQ(fills, 1u);
    EXPECT_EQ(list.primitives.back().kind, Kind::kFill);
    EXPECT_GT(list.primitives.back().count, 10u) << "with its arc in chords";
    EXPECT_NEAR(list.box.maxPoint().x, 10, 1e-3) << "the arc bulges out to the right of the chord, below it";
}

TEST_F(GraphicsBuilderTest, AWidthThatShrinksToNothingIsATriangle) {
    const MxGiPolylineVertex arrow[] = {{{0, 0}, 0, 6, 0}, {{4, 0}, 0}};
    const DisplayList list = drawn([&](MxGiSubEntityTraits& traits, MxGiWorldGeometry& geometry) {
        traits.setFill(true);
        geometry.pline(arrow, 2, false);
    });
    ASSERT_EQ(list.primitives.size(), 1u);
    EXPECT_EQ(list.primitives[0].kind, Kind::kBand);
    ASSERT_EQ(list.bands.size(), 1u);
    const Band& band = list.bands[0];
    EXPECT_EQ(band.width, 6);
    EXPECT_EQ(band.middleCount, 2u);
    double twice = 0.0; // the area by the corners
    for (std::size_t i = 0; i < band.outlineCount; ++i) {
        const MxGePoint2d &a = list.points[band.outline + i],
                          &b = list.points[band.outline + (i + 1) % band.outlineCount];
        twice += a.x * b.y - b.x * a.y;
    }
    EXPECT_NEAR(std::abs(twice) / 2, 12, 1e-9);
    EXPECT_EQ(list.box.minPoint(), MxGePoint3d(0, -3, 0));
    EXPECT_EQ(list.box.maxPoint(), MxGePoint3d(4, 3, 0));
}

TEST_F(GraphicsBuilderTest, TextHasHeightWidthAndLean) {
    const auto place = [&](double factor, double oblique, const MxGeVector3d& direction) {
        const DisplayList list = drawn([&](MxGiSubEntityTraits&, MxGiWorldGeometry& geometry) {
            geometry.text({5, 7, 0}, MxGeVector3d::kZAxis, direction, 2.0, factor, oblique, L"I");
        });
        EXPECT_EQ(list.texts.size(), 1u);
        return list.texts.at(0).toWorld;
    };
    const auto expectAt = [](const QPointF& point, double x, double y) {
        EXPECT_NEAR(point.x(), x, 1e-9);
        EXPECT_NEAR(point.y(), y, 1e-9);
    };
    expectAt(place(1.0, 0.0, {3, 0, 0}).map(QPointF(1, 1)), 7, 9);
    expectAt(place(0.5, 0.0, {1, 0, 0}).map(QPointF(1, 1)), 6, 9);
    expectAt(place(1.0, std::numbers::pi / 4, {1, 0, 0}).map(QPointF(0, 1)), 7, 9);
    expectAt(place(1.0, std::numbers::pi / 4, {1, 0, 0}).map(QPointF(1, 0)), 7, 7);
    expectAt(place(0.5, std::numbers::pi / 4, {0, 1, 0}).map(QPointF(1, 1)), 3, 10);
}

TEST_F(GraphicsBuilderTest, ALayerThatIsNotPlottedIsLeftOutOfPlots) {
    layerZero().plottable = false;
    drawer.how = [](MxGiSubEntityTraits&, MxGiWorldGeometry& geometry) {
        geometry.worldLine(line, 2);
        geometry.circle({}, 1, MxGeVector3d::kZAxis);
        geometry.text({}, MxGeVector3d::kZAxis, MxGeVector3d::kXAxis, 1, 1, 0, L"A");
    };
    EXPECT_EQ(GraphicsBuilder(database.imp()).build(drawer).primitives.size(), 3u);
    EXPECT_TRUE(GraphicsBuilder(database.imp(), true).build(drawer).primitives.empty());
}

} // namespace
