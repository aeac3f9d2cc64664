// SPDX-License-Identifier: MIT
#include "merix/db/undo.h"

#include "host/db/dictionary.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using merix::db::Line;

TEST(Undo, AUnitWithoutChangesVanishes) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    drawing.imp.undo.clear();
    drawing.imp.undo.begin(L"Look");
    Line* line = nullptr;
    mxdbOpenObject(line, id, Mx::kForWrite);
    line->recordGraphicsModified();
    line->close();
    drawing.imp.undo.end();
    EXPECT_FALSE(drawing.imp.undo.canUndo());
}

TEST(Undo, WhatIsAddedAndErasedInAUnitIsNoStepOfIt) {
    Drawing drawing;
    const MxDbObjectId kept = drawing.addLine();
    drawing.imp.undo.clear();
    drawing.imp.undo.begin(L"Try");
    const MxDbObjectId passing = drawing.addLine();
    Line* line = nullptr;
    mxdbOpenObject(line, passing, Mx::kForWrite);
    line->assertWriteEnabled();
    line->end = {5, 0, 0};
    line->close();
    const auto erase = [](MxDbObjectId id, bool erasing) {
        MxDbObject* object = nullptr;
        ASSERT_EQ(mxdbOpenObject(object, id, Mx::kForWrite, true), Mx::eOk);
        EXPECT_EQ(object->erase(erasing), Mx::eOk);
        object->close();
    };
    erase(passing, true);
    drawing.imp.undo.end();
    EXPECT_FALSE(drawing.imp.undo.canUndo());

    drawing.imp.undo.begin(L"Try again");
    const MxDbObjectId back = drawing.addLine();
    erase(back, true);
    erase(back, false);
    erase(kept, true);
    drawing.imp.undo.end();
    ASSERT_TRUE(drawing.imp.undo.undo());
    EXPECT_TRUE(back.stub()->erased);
    EXPECT_FALSE(kept.stub()->erased);
    ASSERT_TRUE(drawing.imp.undo.redo());
    EXPECT_FALSE(back.stub()->erased);
    EXPECT_TRUE(kept.stub()->erased);
}

TEST(Undo, ChangesOfAUnitAreTakenBackAndDoneAgainTogether) {
    Drawing drawing;
    const MxDbObjectId a = drawing.addLine({}, {1, 0, 0}), b = drawing.addLine({}, {2, 0, 0});
    drawing.imp.undo.clear();
    drawing.imp.undo.begin(L"Move");
    drawing.moveLine(a, {10, 0, 0});
    drawing.moveLine(a, {11, 0, 0});
    drawing.imp.undo.begin(L"Inner");
    drawing.moveLine(b, {20, 0, 0});
    drawing.imp.undo.end();
    EXPECT_FALSE(drawing.imp.undo.undo()) << "a unit is open";
    drawing.imp.undo.end();
    ASSERT_EQ(drawing.imp.undo.undoUnits().size(), 1U);
    EXPECT_EQ(drawing.imp.undo.undoUnits()[0].name, L"Move");

    EXPECT_TRUE(drawing.imp.undo.undo());
    EXPECT_EQ(drawing.at<Line>(a).end.x, 1);
    EXPECT_EQ(drawing.at<Line>(b).end.x, 2);
    EXPECT_FALSE(drawing.imp.undo.undo());
    EXPECT_TRUE(drawing.imp.undo.redo());
    EXPECT_EQ(drawing.at<Line>(a).end.x, 11);
    EXPECT_EQ(drawing.at<Line>(b).end.x, 20);
    EXPECT_TRUE(drawing.imp.undo.undo());
    EXPECT_EQ(drawing.at<Line>(a).end.x, 1);
}

TEST(Undo, ANewChangeEndsRedo) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    drawing.imp.undo.undo();
    EXPECT_TRUE(drawing.imp.undo.canRedo());
    drawing.addLine();
    EXPECT_FALSE(drawing.imp.undo.canRedo());
    EXPECT_TRUE(drawing.at<Line>(id).isErased());
}

class Recorder final : public MxDbObjectReactor {
public:
    void erased(const MxDbObject* object, bool erasing) override {
        object->assertReadEnabled();
        told += erasing ? "erased " : "unerased ";
    }
    std::string told;
};

TEST(Undo, UndoneInsertionTellsReactorsErasedAndRedoUnerased) {
    Recorder reactor;
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    Line* line = nullptr;
    mxdbOpenObject(line, id, Mx::kForRead);
    line->addReactor(&reactor);
    line->close();
    EXPECT_TRUE(drawing.imp.undo.undo());
    EXPECT_TRUE(line->isErased());
    EXPECT_TRUE(drawing.imp.undo.redo());
    EXPECT_FALSE(line->isErased());
    EXPECT_EQ(reactor.told, "erased unerased ");
}

TEST(Undo, OneWhoIsToldAndThrowsStopsNeitherUndoNorThoseAfterIt) {
    class Thrower final : public MxDbObjectReactor {
    public:
        void erased(const MxDbObject*, bool) override { throw std::runtime_error("on purpose"); }
    } thrower;
    struct Listener final : MxDbObjectReactor {
        void erased(const MxDbObject*, bool erasing) override { told += erasing ? "erased " : "unerased "; }
        std::string told;
    } listener;
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    Line* line = nullptr;
    mxdbOpenObject(line, id, Mx::kForRead);
    line->addReactor(&thrower);
    line->addReactor(&listener);
    line->close();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(drawing.imp.undo.undo());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "merix: an object reactor failed: on purpose\n");
    EXPECT_TRUE(drawing.imp.undo.isRecording());
    EXPECT_TRUE(drawing.imp.undo.redo()) << "the unit is still there";
    EXPECT_EQ(listener.told, "erased unerased ");
    line->data().reactors.clear();
}

TEST(Undo, AnErasedObjectComesBackWithItsExtensionDictionary) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    Line* line = nullptr;
    mxdbOpenObject(line, id, Mx::kForWrite);
    line->createExtensionDictionary();
    line->close();
    const MxDbObjectId dictionary = line->extensionDictionary();
    drawing.imp.undo.begin(L"Erase");
    drawing.erase(id);
    drawing.imp.undo.end();
    ASSERT_TRUE(line->isErased());
    drawing.imp.undo.undo();
    EXPECT_FALSE(line->isErased());
    EXPECT_EQ(line->extensionDictionary(), dictionary);
    drawing.imp.undo.redo();
    EXPECT_TRUE(line->isErased());
    EXPECT_TRUE(line->extensionDictionary().isNull());
}

TEST(Undo, AReplacedDictionaryEntryComesBack) {
    Drawing drawing;
    MxDbDictionary* root = nullptr;
    const auto set = [&] {
        drawing.database.getNamedObjectsDictionary(root, Mx::kForWrite);
        auto* record = new MxDbXrecord;
        MxDbObjectId id;
        root->setAt(L"KEY", record, id);
        record->close();
        root->close();
        return id;
    };
    const MxDbObjectId first = set();
    drawing.imp.undo.clear();
    drawing.imp.undo.begin(L"Replace");
    const MxDbObjectId second = set();
    drawing.imp.undo.end();
    drawing.imp.undo.undo();
    MxDbObjectId found;
    drawing.database.getNamedObjectsDictionary(root, Mx::kForRead);
    EXPECT_EQ(root->getAt(L"KEY", found), Mx::eOk);
    EXPECT_EQ(found, first);
    root->close();
    drawing.imp.undo.redo();
    drawing.database.getNamedObjectsDictionary(root, Mx::kForRead);
    EXPECT_EQ(root->getAt(L"key", found), Mx::eOk);
    EXPECT_EQ(found, second);
    root->close();
}

TEST(Undo, AnAbandonedUnitLeavesTheDrawingAsItWas) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine({}, {1, 0, 0});
    drawing.imp.undo.clear();
    drawing.imp.undo.begin(L"Fail");
    drawing.moveLine(id, {9, 9, 0});
    const MxDbObjectId added = drawing.addLine();
    drawing.imp.undo.abandon();
    EXPECT_EQ(drawing.at<Line>(id).end, MxGePoint3d(1, 0, 0));
    EXPECT_TRUE(drawing.at<Line>(added).isErased());
    EXPECT_FALSE(drawing.imp.undo.canUndo());
    EXPECT_FALSE(drawing.imp.undo.canRedo());
}

TEST(Undo, WhatIsDoneInAPauseIsNoStepAndLeavesRedo) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine({}, {1, 0, 0});
    drawing.imp.undo.clear();
    drawing.moveLine(id, {2, 0, 0});
    drawing.imp.undo.undo();
    MxDbObjectId added;
    {
        const merix::db::UndoRecorder::Pause pause(drawing.imp.undo);
        drawing.imp.undo.begin(L"Along");
        added = drawing.addLine();
        drawing.moveLine(added, {5, 0, 0});
        drawing.imp.undo.end();
    }
    EXPECT_FALSE(drawing.imp.undo.canUndo());
    ASSERT_TRUE(drawing.imp.undo.redo());
    EXPECT_EQ(drawing.at<Line>(id).end.x, 2);
    drawing.imp.undo.undo();
    EXPECT_FALSE(drawing.at<Line>(added).isErased());
    EXPECT_EQ(drawing.at<Line>(added).end.x, 5);
    drawing.moveLine(added, {6, 0, 0});
    EXPECT_TRUE(drawing.imp.undo.canUndo()) << "the pause is over";
}

TEST(Undo, AnAbandonedUnitTellsWhetherAllWasTakenBack) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    auto& undo = drawing.imp.undo;
    EXPECT_FALSE(undo.abandon()) << "no unit is open";
    undo.begin(L"A");
    drawing.moveLine(id, {9, 9, 0});
    EXPECT_TRUE(undo.abandon());
    undo.begin(L"B");
    mxdbMarkModified(id);
    EXPECT_FALSE(undo.abandon());
    undo.begin(L"C");
    {
        const merix::db::UndoRecorder::Pause pause(undo);
        drawing.moveLine(id, {8, 8, 0});
    }
    EXPECT_FALSE(undo.abandon());
    undo.begin(L"D");
    EXPECT_TRUE(undo.abandon());
}

TEST(Undo, AppendingToABlockCopiesNoneOfItsEntities) {
    Drawing drawing;
    for (int i = 0; i < 100; ++i)
        drawing.addLine();
    drawing.imp.undo.clear();
    drawing.addLine();
    ASSERT_EQ(drawing.imp.undo.undoUnits().size(), 1U);
    ASSERT_EQ(drawing.imp.undo.undoUnits()[0].steps.size(), 1U);
    EXPECT_TRUE(drawing.imp.undo.undoUnits()[0].steps[0].image.empty());
}

TEST(Undo, AnEntityKeepsALayerThatItsDrawingDoesNotList) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine({}, {1, 0, 0}), layer = drawing.imp.layerForName(L"Unlisted");
    merix::db::traits(drawing.at<Line>(id)).layer = layer;
    drawing.imp.undo.clear();
    drawing.moveLine(id, {2, 0, 0});
    drawing.imp.undo.undo();
    EXPECT_EQ(drawing.at<Line>(id).end.x, 1);
    EXPECT_EQ(drawing.at<Line>(id).layerId(), layer);
    EXPECT_EQ(drawing.imp.layerNamed(L"Unlisted"), layer);
}

TEST(Undo, ReadingADrawingRecordsNothing) {
    Drawing drawing;
    EXPECT_FALSE(drawing.imp.undo.canUndo());
    EXPECT_FALSE(drawing.imp.isChanged());
}

} // namespace
