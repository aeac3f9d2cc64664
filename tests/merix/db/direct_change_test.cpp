// SPDX-License-Identifier: MIT
#include "host/db/direct_change.h"

#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

using merix::db::Line;

namespace {

class DirectChangeTest : public ::testing::Test {
protected:
    void change(double x) {
        const MxDbDirectChange step(id, L"Record");
        drawing.at<Line>(id).end.x = x;
    }
    double x() { return drawing.at<Line>(id).end.x; }
    std::vector<std::wstring> names() {
        std::vector<std::wstring> all;
        for (const auto& unit : undo.undoUnits())
            all.push_back(unit.name);
        return all;
    }

    Drawing drawing;
    merix::db::UndoRecorder& undo = drawing.imp.undo;
    MxDbObjectId id = [this] {
        const MxDbObjectId line = drawing.addLine({}, {1, 0, 0});
        drawing.imp.undo.clear();
        drawing.imp.clearChanged();
        return line;
    }();
};

using Names = std::vector<std::wstring>;

} // namespace

TEST_F(DirectChangeTest, ItIsOneStepThatIsTakenBackAndDoneAgain) {
    change(5);
    EXPECT_EQ(names(), Names{L"Record"});
    EXPECT_EQ(undo.undoUnits().front().steps.size(), 1u);
    EXPECT_EQ(drawing.imp.changedSinceSave(), std::vector<MxDbObjectId>{id});
    EXPECT_TRUE(undo.undo());
    EXPECT_EQ(x(), 1);
    EXPECT_TRUE(undo.redo());
    EXPECT_EQ(x(), 5);
}

TEST_F(DirectChangeTest, WhatChangesNothingIsNoStepAndNoChange) {
    undo.begin(L"Other");
    drawing.moveLine(drawing.addLine(), {4, 4, 0});
    undo.end();
    undo.undo();
    drawing.imp.clearChanged();
    change(1);
    EXPECT_FALSE(undo.canUndo());
    EXPECT_TRUE(undo.canRedo()) << "nothing new was done";
    EXPECT_TRUE(drawing.imp.changedSinceSave().empty());
}

TEST_F(DirectChangeTest, AStepEndsWhatCouldBeDoneAgain) {
    undo.begin(L"Move");
    drawing.moveLine(id, {3, 0, 0});
    undo.end();
    undo.undo();
    change(5);
    EXPECT_FALSE(undo.canRedo());
}

TEST_F(DirectChangeTest, ACommandThatIsAbandonedLeavesItAlone) {
    const MxDbObjectId other = drawing.addLine();
    undo.clear();
    undo.begin(L"Line");
    drawing.moveLine(other, {7, 7, 0});
    change(5);
    EXPECT_FALSE(undo.abandon()) << "the drawing is not as it was";
    EXPECT_EQ(x(), 5);
    EXPECT_EQ(drawing.at<Line>(other).end.x, 1);
    EXPECT_EQ(names(), Names{L"Record"});
}

TEST_F(DirectChangeTest, ACommandThatIsTakenBackLeavesItAlone) {
    const MxDbObjectId other = drawing.addLine();
    undo.clear();
    undo.begin(L"Move");
    change(5);
    drawing.moveLine(other, {7, 7, 0});
    undo.end();
    EXPECT_EQ(names(), (Names{L"Record", L"Move"}));
    undo.undo();
    EXPECT_EQ(x(), 5);
    EXPECT_EQ(drawing.at<Line>(other).end.x, 1);
}

TEST_F(DirectChangeTest, ItBelongsToTheCommandThatHasChangedTheObjectBefore) {
    undo.begin(L"Move");
    drawing.moveLine(id, {3, 0, 0});
    change(5);
    undo.end();
    EXPECT_EQ(names(), Names{L"Move"});
    undo.undo();
    EXPECT_EQ(x(), 1);
    undo.redo();
    EXPECT_EQ(x(), 5);
}

TEST_F(DirectChangeTest, WhoHasTheObjectOpenForWriteRecordsItToo) {
    Line* line = nullptr;
    ASSERT_EQ(mxdbOpenObject(line, id, Mx::kForWrite), Mx::eOk);
    line->assertWriteEnabled();
    line->end.x = 3;
    change(5);
    line->close();
    EXPECT_EQ(undo.undoUnits().size(), 1u);
    undo.undo();
    EXPECT_EQ(x(), 1);
}

TEST_F(DirectChangeTest, AnErasedObjectComesBackWithWhatItHeldLast) {
    undo.begin(L"Erase");
    drawing.erase(id);
    change(5);
    undo.end();
    EXPECT_EQ(names(), Names{L"Erase"});
    undo.undo();
    EXPECT_FALSE(drawing.at<Line>(id).isErased());
    EXPECT_EQ(x(), 5);
}

TEST_F(DirectChangeTest, AnObjectErasedMeanwhileGetsNoStep) {
    {
        const MxDbDirectChange step(id, L"Record");
        drawing.at<Line>(id).end.x = 5;
        drawing.erase(id);
    }
    EXPECT_EQ(names(), Names{L""}) << "the erasure alone";
    undo.undo();
    EXPECT_EQ(x(), 5);
}

TEST_F(DirectChangeTest, WhereNothingIsRecordedItIsNoStep) {
    {
        const merix::db::UndoRecorder::Pause pause(undo);
        change(5);
    }
    EXPECT_FALSE(undo.canUndo());
    EXPECT_EQ(drawing.imp.changedSinceSave(), std::vector<MxDbObjectId>{id});
}

TEST_F(DirectChangeTest, AnIdWithoutAnObjectIsNoMatter) {
    { const MxDbDirectChange step({}, L"Record"); }
    { const MxDbDirectChange step(MxDbObjectId(), nullptr); }
    EXPECT_FALSE(undo.canUndo());
}
