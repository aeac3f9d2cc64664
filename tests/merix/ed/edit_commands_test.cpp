// SPDX-License-Identifier: MIT
#include "merix/ed/edit_commands.h"

#include "merix/ed/drawing_access.h"

#include "command_fixture.h"

using namespace merix;
using testing::HasSubstr;

namespace {

/// A line from 10,10 to 50,10, a circle about 100,100 and a closed rectangle from 200,10 to 240,40.
class EditCommandsTest : public test::CommandFixture {
protected:
    EditCommandsTest() {
        type({"LINE", "10,10", "50,10", "", "CIRCLE", "100,100", "20", "RECTANG", "200,10", "240,40"});
        shown();
    }
    const db::EntityTraits& traits(std::size_t place) const { return db::traits(entity<MxDbEntity>(place)); }
};

} // namespace

TEST_F(EditCommandsTest, EraseTakesTheSelectionAway) {
    typeUndoable({"ERASE", "30,10", "80,100", ""});
    ASSERT_EQ(entities().size(), 1U);
    EXPECT_THAT(shown(), HasSubstr("2 erased"));
    ed::Selection::instance().set({entities()[0]});
    typeUndoable({"E"});
    EXPECT_TRUE(entities().empty());
}

TEST_F(EditCommandsTest, StretchMovesThePointsInTheCrossingBox) {
    typeUndoable({"STRETCH", "60,20", "40,0", "", "0,0", "10,5"});
    EXPECT_EQ(entity<db::Line>(0).start, MxGePoint3d(10, 10, 0));
    EXPECT_EQ(entity<db::Line>(0).end, MxGePoint3d(60, 15, 0));
}

TEST_F(EditCommandsTest, StretchMovesTheVerticesOfAPolyline) {
    typeUndoable({"S", "c", "230,0", "250,50", "", "0,0", "@20,0"});
    const auto& vertices = entity<db::LwPolyline>(2).vertices;
    EXPECT_EQ(vertices[0].point, (MxGePoint2d{200, 10}));
    EXPECT_EQ(vertices[1].point, (MxGePoint2d{260, 10}));
    EXPECT_EQ(vertices[2].point, (MxGePoint2d{260, 40}));
    EXPECT_EQ(vertices[3].point, (MxGePoint2d{200, 40}));
}

TEST_F(EditCommandsTest, ACircleGoesWithItsCenterOrStays) {
    typeInVain({"S", "130,110", "115,90", "", "0,0", "10,0"});
    EXPECT_EQ(entity<db::Circle>(1).radius, 20.0);
    typeUndoable({"S", "130,110", "95,90", "", "0,0", "10,0"});
    EXPECT_EQ(entity<db::Circle>(1).center, MxGePoint3d(110, 100, 0));
    EXPECT_EQ(entity<db::Circle>(1).radius, 20.0);
}

TEST_F(EditCommandsTest, WhatLiesInTheBoxWholeIsMoved) {
    typeUndoable({"S", "300,200", "0,0", "", "1,2", ""});
    EXPECT_EQ(entity<db::Line>(0).start, MxGePoint3d(11, 12, 0)) << "Enter takes the base point for the way";
    EXPECT_EQ(entity<db::Circle>(1).center, MxGePoint3d(101, 102, 0));
    EXPECT_EQ(entity<db::LwPolyline>(2).vertices[0].point, (MxGePoint2d{201, 12}));
}

TEST_F(EditCommandsTest, StretchNeedsACrossingBox) {
    typeInVain({"STRETCH", "30,10", ""});
    EXPECT_THAT(shown(), HasSubstr("There was no crossing box."));
}

TEST_F(EditCommandsTest, PropertiesAreChangedTogether) {
    type({"LAYER", "N", "A", ""});
    typeUndoable({"CHPROP", "all", "", "C", "red", "LA", "a", "LW", "0.5", "S", "2", "LT", "continuous", ""});
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(traits(i).color, 1);
        EXPECT_EQ(traits(i).layer, database.layerNamed(L"A"));
        EXPECT_EQ(traits(i).lineWeight, 50);
        EXPECT_EQ(traits(i).linetypeScale, 2.0);
        EXPECT_EQ(traits(i).linetype, database.linetypeNamed(L"Continuous"));
    }
    typeUndoable({"CH", "30,10", "", "C", "1,2,3", "LT", "ByLayer", ""});
    EXPECT_TRUE(traits(0).hasTrueColor);
    EXPECT_EQ(traits(0).trueColor, 0x010203U);
    EXPECT_TRUE(traits(0).linetype.isNull());
    EXPECT_FALSE(traits(1).hasTrueColor);
}

TEST_F(EditCommandsTest, PropertiesThatAreNoneAreTold) {
    typeInVain({"CHPROP", "all", "", "C", "mauve", "LA", "nosuch", "LT", "nosuch", "LW", "3", ""});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("A color is"));
    EXPECT_THAT(said, HasSubstr("There is no layer nosuch."));
    EXPECT_THAT(said, HasSubstr("There is no line type nosuch."));
    EXPECT_THAT(said, HasSubstr("A line weight is"));
}

TEST_F(EditCommandsTest, LockedLayersEscAndEmptySelectionsChangeNothing) {
    for (const auto& lines : std::vector<std::vector<const char*>>{
             {"ERASE"},
             {"ERASE", ""},
             {"ERASE", "all"},
             {"STRETCH"},
             {"STRETCH", ""},
             {"STRETCH", "300,200", "0,0", ""},
             {"STRETCH", "300,200", "0,0", "", "1,1"},
             {"CHPROP"},
             {"CHPROP", ""},
             {"CHPROP", "all", ""},
             {"CHPROP", "all", "", "C"},
             {"CHPROP", "all", "", "C", "red"},
             {"CHPROP", "all", "", ""},
         })
        typeInVain(lines);
    type({"LAYER", "LO", "0", ""});
    typeInVain({"ERASE", "all", "", "STRETCH", "300,200", "0,0", "", "CHPROP", "all", ""});
    EXPECT_THAT(shown(), HasSubstr("3 were on a locked layer."));
}

TEST_F(EditCommandsTest, ChpropWithWhatAllHaveAlreadyIsNoStep) {
    type({"CHPROP", "all", "", "C", "1,2,3", "LW", "0.5", "S", "2", "LT", "continuous", ""});
    typeInVain({"CHPROP", "all", "", "C", "1,2,3", "LW", "0.5", "S", "2", "LT", "continuous", "LA", "0", ""});
    typeUndoable({"CHPROP", "all", "", "C", "bylayer", ""});
}

TEST_F(EditCommandsTest, ChpropCountsWhatItCannotChange) {
    const ed::Opened<MxDbEntity> busy(entities().front(), Mx::kForRead);
    type({"CHPROP", "all", "", "C", "red", ""});
    EXPECT_THAT(shown(), HasSubstr("1 could not be changed."));
    EXPECT_EQ(db::traits(*busy).color, 256);
}
