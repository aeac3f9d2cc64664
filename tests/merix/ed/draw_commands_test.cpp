// SPDX-License-Identifier: MIT
#include "merix/ed/draw_commands.h"

#include "command_fixture.h"
#include "merix/db/layers.h"

#include <numbers>

using namespace merix;
using testing::HasSubstr;

namespace {

constexpr double kPi = std::numbers::pi;

class DrawCommandsTest : public test::CommandFixture {
protected:
    const db::EntityTraits& traits(std::size_t place) const { return db::traits(entity<MxDbEntity>(place)); }
};

} // namespace

TEST_F(DrawCommandsTest, LineDrawsAChainUntilEnter) {
    typeUndoable({"LINE", "0,0", "10,0", "@0,5", "@10<180", ""});
    ASSERT_EQ(entities().size(), 3U);
    EXPECT_EQ(entity<db::Line>(1).start, MxGePoint3d(10, 0, 0));
    EXPECT_EQ(entity<db::Line>(1).end, MxGePoint3d(10, 5, 0));
    EXPECT_NEAR(entity<db::Line>(2).end.x, 0.0, 1e-12);
}

TEST_F(DrawCommandsTest, LineClosesTheChain) {
    typeUndoable({"l", "0,0", "10,0", "10,10", "c"});
    ASSERT_EQ(entities().size(), 3U);
    EXPECT_EQ(last<db::Line>().start, MxGePoint3d(10, 10, 0));
    EXPECT_EQ(last<db::Line>().end, MxGePoint3d(0, 0, 0));
}

TEST_F(DrawCommandsTest, LineTakesBackSegmentBySegment) {
    typeUndoable({"LINE", "0,0", "10,0", "10,10", "u", "20,20", ""});
    ASSERT_EQ(entities().size(), 2U);
    EXPECT_EQ(last<db::Line>().start, MxGePoint3d(10, 0, 0));
    typeInVain({"LINE", "0,0", "u", "c", ""});
    EXPECT_THAT(shown(), HasSubstr("There is no line to take back."));
}

TEST_F(DrawCommandsTest, EscKeepsTheSegmentsThatStand) {
    typeUndoable({"LINE", "0,0", "10,0"});
    EXPECT_EQ(entities().size(), 1U);
}

TEST_F(DrawCommandsTest, CircleByRadiusOrDiameter) {
    typeUndoable({"CIRCLE", "5,5", "2.5"});
    EXPECT_EQ(last<db::Circle>().center, MxGePoint3d(5, 5, 0));
    EXPECT_EQ(last<db::Circle>().radius, 2.5);
    typeUndoable({"C", "5,5", "8,9"});
    EXPECT_EQ(last<db::Circle>().radius, 5.0);
    typeUndoable({"C", "5,5", "d", "3"});
    EXPECT_EQ(last<db::Circle>().radius, 1.5);
    type({"C", "5,5", "0", "-1", ""});
    EXPECT_THAT(shown(), HasSubstr("A number above 0 is needed."));
    EXPECT_EQ(entities().size(), 3U);
}

TEST_F(DrawCommandsTest, CircleThroughTwoOrThreePoints) {
    typeUndoable({"CIRCLE", "2P", "0,0", "6,8"});
    EXPECT_EQ(last<db::Circle>().center, MxGePoint3d(3, 4, 0));
    EXPECT_EQ(last<db::Circle>().radius, 5.0);
    typeUndoable({"CIRCLE", "3P", "10,0", "0,10", "-10,0"});
    EXPECT_NEAR(last<db::Circle>().center.x, 0.0, 1e-12);
    EXPECT_NEAR(last<db::Circle>().center.y, 0.0, 1e-12);
    EXPECT_NEAR(last<db::Circle>().radius, 10.0, 1e-12);
    typeInVain({"CIRCLE", "3P", "0,0", "1,1", "2,2"});
    EXPECT_THAT(shown(), HasSubstr("There is no circle through points on a line."));
    typeInVain({"CIRCLE", "2P", "1,1", "1,1"});
    EXPECT_THAT(shown(), HasSubstr("The circle has no size."));
}

TEST_F(DrawCommandsTest, ArcThroughThreePointsRunsThroughTheSecond) {
    typeUndoable({"ARC", "10,0", "0,10", "-10,0"});
    EXPECT_NEAR(last<db::Arc>().startAngle, 0.0, 1e-12);
    EXPECT_NEAR(last<db::Arc>().endAngle, kPi, 1e-12);
    typeUndoable({"A", "10,0", "0,-10", "-10,0"});
    EXPECT_NEAR(last<db::Arc>().startAngle, kPi, 1e-12) << "clockwise as it is drawn, so it is stored from its end";
    EXPECT_NEAR(last<db::Arc>().endAngle, 0.0, 1e-12);
    typeInVain({"ARC", "0,0", "1,1", "2,2"});
    EXPECT_THAT(shown(), HasSubstr("There is no arc through points on a line."));
}

TEST_F(DrawCommandsTest, ArcFromStartAndCenterRunsCounterClockwise) {
    typeUndoable({"ARC", "10,0", "c", "0,0", "0,3"});
    EXPECT_EQ(last<db::Arc>().radius, 10.0) << "the end gives the direction only";
    EXPECT_NEAR(last<db::Arc>().endAngle, kPi / 2, 1e-12);
    typeUndoable({"ARC", "c", "0,0", "0,5", "5,0"});
    EXPECT_NEAR(last<db::Arc>().startAngle, kPi / 2, 1e-12);
    EXPECT_NEAR(last<db::Arc>().endAngle, 0.0, 1e-12);
    typeInVain({"ARC", "c", "0,0", "0,0", "ARC", "c", "0,0", "1,0", "5,0"});
    EXPECT_THAT(shown(), HasSubstr("The arc has no length."));
}

TEST_F(DrawCommandsTest, RectangleIsAClosedPolyline) {
    typeUndoable({"RECTANG", "10,20", "@-5,8"});
    const auto& polyline = last<db::LwPolyline>();
    ASSERT_EQ(polyline.vertices.size(), 4U);
    EXPECT_TRUE(polyline.closed);
    EXPECT_EQ(polyline.vertices[2].point, (MxGePoint2d{5, 28}));
    typeInVain({"REC", "1,1", "1,9"});
    EXPECT_THAT(shown(), HasSubstr("The rectangle has no area."));
}

TEST_F(DrawCommandsTest, TextStandsAtItsPointWithHeightAndAngle) {
    typeUndoable({"TEXT", "10,20", "5", "90", "Two words"});
    const auto& text = last<db::Text>();
    EXPECT_EQ(text.position, MxGePoint3d(10, 20, 0));
    EXPECT_EQ(text.height, 5.0);
    EXPECT_NEAR(text.rotation, kPi / 2, 1e-12);
    EXPECT_EQ(text.text, L"Two words");
    EXPECT_EQ(db::DatabaseImp::peek(text.style), db::DatabaseImp::peek(database.textStyleNamed(L"Standard")));
    typeUndoable({"T", "0,0", "", "", "again"});
    EXPECT_EQ(last<db::Text>().height, 5.0) << "the last height is offered";
    EXPECT_EQ(database.header.textSize, 5.0);
}

TEST_F(DrawCommandsTest, TextTakesWidthFactorAndObliqueAngle) {
    typeUndoable({"DT", "w", "0.8", "o", "15", "0,0", "3", "0", "slanted"});
    EXPECT_EQ(last<db::Text>().widthFactor, 0.8);
    EXPECT_NEAR(last<db::Text>().oblique, kPi / 12, 1e-12);
    type({"DT", "o", "86", "s", "nosuch"});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("An oblique angle lies between -85 and 85 degrees."));
    EXPECT_THAT(said, HasSubstr("There is no text style nosuch."));
}

TEST_F(DrawCommandsTest, AStyleGivesItsHeightAndForm) {
    auto* style = static_cast<db::TextStyleRecord*>(db::DatabaseImp::peek(database.textStyleNamed(L"Standard")));
    style->height = 7.0;
    style->widthFactor = 0.5;
    typeUndoable({"TEXT", "0,0", "0", "fixed"});
    EXPECT_EQ(last<db::Text>().height, 7.0);
    EXPECT_EQ(last<db::Text>().widthFactor, 0.5);
    EXPECT_EQ(database.header.textSize, 2.5);
}

TEST_F(DrawCommandsTest, WhatIsDrawnTakesTheCurrentPropertiesAndSpace) {
    database.header.currentColor = 3;
    database.header.currentLineWeight = 50;
    database.header.currentLinetype = L"Continuous";
    database.header.currentLinetypeScale = 2.0;
    ASSERT_TRUE(document.setCurrentLayout(QStringLiteral("Layout1")));
    typeUndoable({"LINE", "0,0", "1,0", ""});
    EXPECT_EQ(traits(0).color, 3);
    EXPECT_EQ(traits(0).lineWeight, 50);
    EXPECT_EQ(traits(0).linetype, database.linetypeNamed(L"Continuous"));
    EXPECT_EQ(traits(0).linetypeScale, 2.0);
    EXPECT_TRUE(traits(0).paperSpace);
    EXPECT_EQ(last<db::Line>().ownerId(), database.roots.paperSpace);
}

TEST_F(DrawCommandsTest, EscAtAnyPromptDrawsNothing) {
    for (const auto& lines : std::vector<std::vector<const char*>>{
             {"LINE"},
             {"LINE", "0,0"},
             {"CIRCLE"},
             {"CIRCLE", "0,0"},
             {"CIRCLE", "0,0", "d"},
             {"CIRCLE", "2P", "0,0"},
             {"CIRCLE", "3P", "0,0", "1,0"},
             {"ARC"},
             {"ARC", "0,0"},
             {"ARC", "0,0", "1,1"},
             {"ARC", "c", "0,0", "1,0"},
             {"ARC", "0,0", "c", "1,0"},
             {"RECTANG"},
             {"RECTANG", "0,0"},
             {"TEXT"},
             {"TEXT", "w"},
             {"TEXT", "0,0"},
             {"TEXT", "0,0", "5"},
             {"TEXT", "0,0", "5", "0"},
             {"TEXT", "0,0", "5", "0", ""},
         })
        typeInVain(lines);
}

TEST_F(DrawCommandsTest, NothingIsDrawnOnALockedCurrentLayer) {
    type({"LAYER", "LO", "0", ""});
    typeInVain({"LINE", "0,0", "10,0", ""});
    EXPECT_THAT(shown(), HasSubstr("The current layer 0 is locked."));
    const auto expectRefused = [this](std::initializer_list<const char*> lines) {
        typeInVain(lines);
        EXPECT_THAT(shown(), HasSubstr("The current layer 0 is locked."));
    };
    expectRefused({"CIRCLE", "0,0", "5"});
    expectRefused({"ARC", "10,0", "0,10", "-10,0"});
    expectRefused({"RECTANG", "0,0", "5,5"});
    expectRefused({"TEXT", "0,0", "5", "0"});
    expectRefused({"PLINE", "0,0", "5,5", "9,9", ""});
    type({"LAYER", "U", "0", ""});
    typeUndoable({"LINE", "0,0", "10,0", ""});
}

TEST_F(DrawCommandsTest, ALineWhoseLayerIsLockedMeanwhileStays) {
    ASSERT_TRUE(entities().empty());
    test::Answers answers({QStringLiteral("0,0"), QStringLiteral("10,0"), QStringLiteral("u"), QStringLiteral("")});
    int prompts = 0;
    answers.before = [&] {
        if (++prompts == 3)
            db::setLayerLocked(database.layerNamed(L"0"), true);
    };
    ed::CommandStack::instance().runLine(QStringLiteral("LINE"));
    EXPECT_EQ(entities().size(), 1U);
    EXPECT_THAT(shown(), HasSubstr("The current layer 0 is locked."));
}

TEST_F(DrawCommandsTest, WhatIsTakenBackWholeLeavesNoStep) {
    typeInVain({"LINE", "0,0", "10,0", "u", ""});
    typeInVain({"PLINE", "0,0", "10,0", "10,10", "u", "u", ""});
}

TEST_F(DrawCommandsTest, ALineWithoutLengthIsNotDrawn) {
    typeUndoable({"LINE", "0,0", "0,0", "10,0", "@", "10,10", "0,0", "c"});
    EXPECT_EQ(entities().size(), 3U);
    EXPECT_THAT(shown(), HasSubstr("The line has no length."));
}
