// SPDX-License-Identifier: MIT
#include "merix/db/layers.h"

#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using namespace merix::db;

class LayersTest : public testing::Test {
protected:
    LayersTest() {
        addLayer(drawing.imp, L"Walls", id);
        drawing.imp.undo.clear();
    }
    LayerRecord& layer() { return drawing.at<LayerRecord>(id); }
    Drawing drawing;
    MxDbObjectId id;
};

TEST_F(LayersTest, ANewLayerHasANameOfItsOwn) {
    EXPECT_EQ(drawing.imp.layerNamed(L"WALLS"), id);
    EXPECT_EQ(layer().linetype, drawing.imp.linetypeNamed(L"Continuous"));
    MxDbObjectId other;
    EXPECT_EQ(addLayer(drawing.imp, L"walls", other), Mx::eDuplicateKey);
    for (const wchar_t* name : {L"", L" a", L"a ", L"a|b", L"a*", L"a\tb", L"a=b"})
        EXPECT_EQ(addLayer(drawing.imp, name, other), Mx::eInvalidInput);
    EXPECT_EQ(addLayer(drawing.imp, std::wstring(256, L'x'), other), Mx::eInvalidInput);
    EXPECT_TRUE(other.isNull());
    EXPECT_TRUE(isLayerName(L"Türen 2. Stock-$_"));
    EXPECT_EQ(addLayer(drawing.imp, L"Doors", other), Mx::eOk);
    drawing.imp.undo.undo();
    drawing.imp.undo.undo();
    EXPECT_TRUE(drawing.imp.layerNamed(L"Doors").isNull());
}

TEST_F(LayersTest, EveryPropertyIsSetAndUndone) {
    setLayerOff(id, true);
    setLayerFrozen(id, true);
    setLayerLocked(id, true);
    setLayerColor(id, 5);
    setLayerTrueColor(id, 0x102030);
    setLayerLineWeight(id, 50);
    EXPECT_TRUE(layer().off && layer().isFrozen() && layer().isLocked());
    EXPECT_EQ(layer().color, 5);
    EXPECT_EQ(layer().trueColor, 0x102030U);
    EXPECT_TRUE(layer().hasTrueColor);
    EXPECT_EQ(layer().lineWeight, 50);
    EXPECT_EQ(drawing.imp.undo.undoUnits().size(), 6U);
    setLayerColor(id, 1);
    EXPECT_FALSE(layer().hasTrueColor);
    while (drawing.imp.undo.undo()) {
    }
    EXPECT_FALSE(layer().off || layer().isFrozen() || layer().isLocked() || layer().hasTrueColor);
    EXPECT_EQ(layer().color, 7);
    EXPECT_EQ(layer().lineWeight, -3);
}

TEST_F(LayersTest, SettingWhatIsSetAlreadyIsNoStep) {
    setLayerOff(id, false);
    setLayerFrozen(id, false);
    setLayerLocked(id, false);
    EXPECT_FALSE(drawing.imp.undo.canUndo());
}

TEST_F(LayersTest, ValuesThatMakeNoSenseAreRefused) {
    for (const int color : {0, -1, 256})
        EXPECT_EQ(setLayerColor(id, color), Mx::eInvalidInput);
    EXPECT_EQ(setLayerTrueColor(id, 0x1000000), Mx::eInvalidInput);
    for (const int weight : {-1, -2, 1, 212})
        EXPECT_EQ(setLayerLineWeight(id, weight), Mx::eInvalidInput);
    EXPECT_EQ(setLayerLinetype(id, drawing.imp.linetypeNamed(L"ByLayer")), Mx::eInvalidInput);
    EXPECT_EQ(setLayerLinetype(id, id), Mx::eWrongClass);
    Drawing other;
    EXPECT_EQ(setLayerLinetype(id, other.imp.linetypeNamed(L"Continuous")), Mx::eWrongDatabase);
    EXPECT_EQ(setLayerLinetype(id, drawing.imp.linetypeNamed(L"Continuous")), Mx::eOk);
    EXPECT_EQ(setLayerOff(drawing.addLine(), true), Mx::eWrongClass);
    EXPECT_EQ(setLayerOff({}, true), Mx::eNullObjectId);
    EXPECT_FALSE(layer().data().writer);
}

TEST_F(LayersTest, NewEntitiesGoToTheCurrentLayerAndUndoChangesItBack) {
    drawing.imp.clearChanged();
    ASSERT_EQ(setCurrentLayer(id), Mx::eOk);
    EXPECT_TRUE(drawing.imp.isChanged());
    EXPECT_EQ(drawing.at<Line>(drawing.addLine()).layerId(), id);
    drawing.imp.undo.undo();
    drawing.imp.undo.undo();
    EXPECT_EQ(drawing.imp.header.currentLayer, L"0");
    drawing.imp.undo.redo();
    EXPECT_EQ(drawing.imp.header.currentLayer, L"Walls");
    drawing.imp.undo.undo();
    drawing.imp.undo.redo();
    EXPECT_EQ(drawing.imp.header.currentLayer, L"Walls");
    drawing.imp.undo.clear();
    EXPECT_EQ(setCurrentLayer(id), Mx::eOk);
    EXPECT_FALSE(drawing.imp.undo.canUndo()) << "it was current before";
}

TEST_F(LayersTest, TheCurrentLayerIsNotFrozenAndAFrozenOneNotCurrent) {
    EXPECT_EQ(setLayerFrozen(drawing.imp.layerNamed(L"0"), true), Mx::eNotApplicable);
    setLayerFrozen(id, true);
    EXPECT_EQ(setCurrentLayer(id), Mx::eNotApplicable);
    EXPECT_EQ(setCurrentLayer(drawing.addLine()), Mx::eWrongClass);
    drawing.erase(id);
    EXPECT_EQ(setCurrentLayer(id), Mx::eWasErased);
}

} // namespace
