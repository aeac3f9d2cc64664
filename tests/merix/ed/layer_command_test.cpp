// SPDX-License-Identifier: MIT
#include "merix/ed/layer_command.h"

#include "command_fixture.h"

#include "merix/ed/drawing_access.h"
#include "merix/ed/properties.h"

using namespace merix;
using testing::HasSubstr;

namespace {

class LayerCommandTest : public test::CommandFixture {
protected:
    const MxDbLayerTableRecord* layer(const wchar_t* name) const { return ed::layerRecord(database.layerNamed(name)); }
};

} // namespace

TEST_F(LayerCommandTest, NewMakesLayersOfAList) {
    typeUndoable({"LAYER", "N", "Walls, Doors", ""});
    ASSERT_TRUE(layer(L"walls"));
    EXPECT_EQ(layer(L"doors")->name, L"Doors");
    EXPECT_EQ(layer(L"doors")->linetype, database.linetypeNamed(L"Continuous"));
    EXPECT_EQ(database.header.currentLayer, L"0");
    typeInVain({"-LAYER", "N", "WALLS,a<b,", "", ""});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("The layer Walls is there already."));
    EXPECT_THAT(said, HasSubstr("a<b cannot be the name of a layer."));
}

TEST_F(LayerCommandTest, SetMakesALayerCurrent) {
    typeUndoable({"LA", "M", "Notes", ""});
    EXPECT_EQ(database.header.currentLayer, L"Notes");
    type({"LINE", "0,0", "1,1", ""});
    EXPECT_EQ(last<db::Line>().layerId(), database.layerNamed(L"Notes"));
    typeUndoable({"LAYER", "S", "0", ""});
    EXPECT_EQ(database.header.currentLayer, L"0");
    typeInVain({"LAYER", "S", "nosuch", ""});
    EXPECT_THAT(shown(), HasSubstr("There is no layer nosuch."));
}

TEST_F(LayerCommandTest, TheCurrentLayerCannotBeFrozenNorAFrozenOneCurrent) {
    type({"LAYER", "N", "A", ""});
    typeInVain({"LAYER", "F", "0", ""});
    EXPECT_THAT(shown(), HasSubstr("The current layer 0 cannot be frozen."));
    typeUndoable({"LAYER", "F", "*", ""});
    EXPECT_TRUE(layer(L"A")->isFrozen());
    EXPECT_FALSE(layer(L"0")->isFrozen());
    typeInVain({"LAYER", "S", "A", ""});
    EXPECT_THAT(shown(), HasSubstr("The layer A is frozen and cannot be current."));
    typeUndoable({"LAYER", "T", "a", ""});
    EXPECT_FALSE(layer(L"A")->isFrozen());
}

TEST_F(LayerCommandTest, LayersAreTurnedOffAndOnLockedAndUnlocked) {
    type({"LAYER", "N", "A,AB,B", ""});
    typeUndoable({"LAYER", "OFF", "A*", ""});
    EXPECT_TRUE(layer(L"A")->off);
    EXPECT_TRUE(layer(L"AB")->off);
    EXPECT_FALSE(layer(L"B")->off);
    typeUndoable({"LAYER", "ON", "AB", ""});
    EXPECT_FALSE(layer(L"AB")->off);
    typeUndoable({"LAYER", "LO", "B", ""});
    EXPECT_TRUE(layer(L"B")->isLocked());
    typeUndoable({"LAYER", "U", "b", ""});
    EXPECT_FALSE(layer(L"B")->isLocked());
    type({"LAYER", "OFF", "0", ""});
    EXPECT_THAT(shown(), HasSubstr("The current layer 0 is off now"));
}

TEST_F(LayerCommandTest, LayersHaveColorLinetypeAndWeight) {
    type({"LAYER", "N", "A", ""});
    typeUndoable({"LAYER", "C", "red", "A", ""});
    EXPECT_EQ(layer(L"A")->color, 1);
    typeUndoable({"LAYER", "C", "157,184,244", "A", ""});
    EXPECT_TRUE(layer(L"A")->hasTrueColor);
    EXPECT_EQ(layer(L"A")->trueColor, 0x9DB8F4U);
    typeUndoable({"LAYER", "C", "8", "", ""});
    EXPECT_EQ(layer(L"0")->color, 8) << "Enter is the current layer";
    typeUndoable({"LAYER", "LW", "0.5", "A", ""});
    EXPECT_EQ(layer(L"A")->lineWeight, 50);
    type({"LAYER", "LT", "continuous", "A", ""});
    EXPECT_EQ(layer(L"A")->linetype, database.linetypeNamed(L"Continuous"));
    shown();
    typeInVain({"LAYER", "C", "bylayer", "LT", "nosuch", "LT", "ByLayer", "LW", "ByBlock", ""});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("A layer's color is"));
    EXPECT_THAT(said, HasSubstr("There is no line type nosuch."));
    EXPECT_THAT(said, HasSubstr("A layer's line type is one of its own."));
    EXPECT_THAT(said, HasSubstr("A layer's line weight is"));
}

TEST_F(LayerCommandTest, WhatALayerHasAlreadyIsNoStep) {
    type({"LAYER", "N", "A", "C", "1,2,3", "A", "LW", "0.5", "A", "LO", "A", "F", "A", "OFF", "A", ""});
    typeInVain({"LAYER",      "C", "1,2,3", "A",     "LW", "0.5", "A", "LO", "A", "F", "A", "OFF", "A", "LT",
                "continuous", "A", "C",     "white", "0",  "ON",  "0", "T",  "0", "U", "0", "S",   "0", ""});
    typeUndoable({"LAYER", "C", "1,2,4", "A", ""});
}

TEST_F(LayerCommandTest, LayersThatCannotBeChangedAreCounted) {
    type({"LAYER", "N", "A,B", ""});
    const ed::Opened<MxDbLayerTableRecord> busy(database.layerNamed(L"A"), Mx::kForRead);
    shown();
    type({"LAYER", "OFF", "A,B", ""});
    EXPECT_THAT(shown(), HasSubstr("1 could not be changed."));
    EXPECT_FALSE(layer(L"A")->off);
    EXPECT_TRUE(layer(L"B")->off);
}

TEST_F(LayerCommandTest, SeveralChangesAreOneStep) {
    typeUndoable({"LAYER", "N", "A", "C", "3", "A", "LO", "A", ""});
}

TEST_F(LayerCommandTest, TheListTellsTheState) {
    type({"LAYER", "N", "A", "C", "3", "A", "F", "A", "LO", "A", "OFF", "A", ""});
    typeInVain({"LAYER", "?", ""});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("\n0: white, Continuous, Default, current"));
    EXPECT_THAT(said, HasSubstr("\nA: green, Continuous, Default, off, frozen, locked"));
}

TEST_F(LayerCommandTest, EscAndUnknownNamesChangeNothing) {
    for (const auto& lines : std::vector<std::vector<const char*>>{{"LAYER"},
                                                                   {"LAYER", "N"},
                                                                   {"LAYER", "C"},
                                                                   {"LAYER", "C", "1"},
                                                                   {"LAYER", "F"},
                                                                   {"LAYER", "S"},
                                                                   {"LAYER", "M"},
                                                                   {"LAYER", "LT"},
                                                                   {"LAYER", "LW", "1"},
                                                                   {"LAYER", "LO", "nosuch", ""},
                                                                   {"LAYER", "F", "[", ""}})
        typeInVain(lines);
    EXPECT_THAT(shown(), HasSubstr("There is no layer nosuch."));
}
