// SPDX-License-Identifier: MIT
#include "host/db/object.h"

#include "host/db/dictionary.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using merix::db::Line;

TEST(Object, ManyMayReadAndNoneWritesThen) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    MxDbObject *first = nullptr, *second = nullptr, *writer = nullptr;
    EXPECT_EQ(mxdbOpenObject(first, id, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(mxdbOpenObject(second, id, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(first, second);
    EXPECT_EQ(mxdbOpenObject(writer, id, Mx::kForWrite), Mx::eOpenForRead);
    EXPECT_EQ(writer, nullptr);
    EXPECT_EQ(first->close(), Mx::eOk);
    EXPECT_EQ(second->close(), Mx::eOk);
    EXPECT_EQ(second->close(), Mx::eNotOpen);
}

TEST(Object, OneWriterShutsOutAllOthers) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    MxDbObject *writer = nullptr, *other = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, id, Mx::kForWrite), Mx::eOk);
    EXPECT_EQ(mxdbOpenObject(other, id, Mx::kForRead), Mx::eOpenForWrite);
    EXPECT_EQ(mxdbOpenObject(other, id, Mx::kForWrite), Mx::eOpenForWrite);
    writer->close();
    EXPECT_EQ(mxdbOpenObject(other, id, Mx::kForRead), Mx::eOk);
    other->close();
}

TEST(Object, OpeningByClassRefusesAnotherClassAndLeavesItClosed) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    MxDbDictionary* dictionary = nullptr;
    EXPECT_EQ(mxdbOpenObject(dictionary, id, Mx::kForRead), Mx::eWrongClass);
    MxDbObject* writer = nullptr;
    EXPECT_EQ(mxdbOpenObject(writer, id, Mx::kForWrite), Mx::eOk);
    writer->close();
}

TEST(Object, IdsThatNameNothingSayWhy) {
    Drawing drawing;
    MxDbObject* object = nullptr;
    EXPECT_EQ(mxdbOpenObject(object, {}, Mx::kForRead), Mx::eNullObjectId);
    MxDbObjectId reserved;
    EXPECT_EQ(drawing.database.getMxDbObjectId(reserved, false, MxDbHandle(0xABCDEF)), Mx::eUnknownHandle);
    EXPECT_EQ(drawing.database.getMxDbObjectId(reserved, true, MxDbHandle(0xABCDEF)), Mx::eOk);
    EXPECT_FALSE(reserved.isValid());
    EXPECT_EQ(mxdbOpenObject(object, reserved, Mx::kForRead), Mx::eNotResident);
}

TEST(Object, ErasedObjectsOpenOnlyForThoseWhoAsk) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    EXPECT_EQ(drawing.erase(id), Mx::eOk);
    MxDbObject* object = nullptr;
    EXPECT_EQ(mxdbOpenObject(object, id, Mx::kForRead), Mx::eWasErased);
    EXPECT_EQ(mxdbOpenObject(object, id, Mx::kForWrite, true), Mx::eOk);
    EXPECT_TRUE(object->isErased());
    EXPECT_EQ(object->erase(), Mx::eWasErased);
    EXPECT_EQ(object->erase(false), Mx::eOk);
    object->close();
    EXPECT_EQ(mxdbOpenObject(object, id, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(object->erase(), Mx::eNotOpen);
    object->close();
}

TEST(Object, UpgradingNeedsToBeTheOnlyReader) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    MxDbObject *first = nullptr, *second = nullptr;
    mxdbOpenObject(first, id, Mx::kForRead);
    mxdbOpenObject(second, id, Mx::kForRead);
    EXPECT_EQ(first->upgradeOpen(), Mx::eOpenForRead);
    second->close();
    EXPECT_EQ(first->upgradeOpen(), Mx::eOk);
    EXPECT_EQ(mxdbOpenObject(second, id, Mx::kForRead), Mx::eOpenForWrite);
    first->close();
    EXPECT_EQ(first->upgradeOpen(), Mx::eNotOpen);
}

TEST(Object, AnEntityOnALockedLayerIsReadButNotWritten) {
    Drawing drawing;
    constexpr std::int16_t kLocked = 4;
    const MxDbObjectId layer = drawing.addLayer(L"LOCKED", 7, kLocked), id = drawing.addLine();
    merix::db::traits(drawing.at<MxDbEntity>(id)).layer = layer;
    MxDbObject* object = nullptr;
    EXPECT_EQ(mxdbOpenObject(object, id, Mx::kForWrite), 87);
    EXPECT_EQ(mxdbOpenObject(object, id, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(object->upgradeOpen(), Mx::eOnLockedLayer);
    drawing.at<merix::db::LayerRecord>(layer).flags = 0;
    EXPECT_EQ(object->upgradeOpen(), Mx::eOk);
    object->close();
}

TEST(Object, CancellingTakesBackWhatTheOpenChanged) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine({}, {1, 0, 0});
    drawing.imp.undo.clear();
    Line* line = nullptr;
    mxdbOpenObject(line, id, Mx::kForWrite);
    line->assertWriteEnabled();
    line->end = {5, 5, 0};
    line->erase();
    line->cancel();
    EXPECT_EQ(line->end, MxGePoint3d(1, 0, 0));
    EXPECT_FALSE(line->isErased());
    EXPECT_FALSE(drawing.imp.undo.canUndo());
}

TEST(Object, CancellingANewEntityErasesIt) {
    Drawing drawing;
    MxDbBlockTableRecord* space = nullptr;
    mxdbOpenObject(space, drawing.imp.roots.modelSpace, Mx::kForWrite);
    auto* line = new Line;
    MxDbObjectId id;
    EXPECT_EQ(space->appendMxDbEntity(id, line), Mx::eOk);
    EXPECT_EQ(space->appendMxDbEntity(id, line), Mx::eAlreadyInDatabase);
    EXPECT_EQ(space->appendMxDbEntity(id, nullptr), Mx::eNullEntity);
    line->cancel();
    EXPECT_TRUE(line->isErased());
    space->close();
}

TEST(Object, AnyWriteOpenMarksTheObjectForSavingOnce) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    drawing.imp.clearChanged();
    EXPECT_FALSE(drawing.imp.isChanged());
    for (int i = 0; i < 2; ++i) {
        MxDbObject* object = nullptr;
        mxdbOpenObject(object, id, Mx::kForWrite);
        object->close();
    }
    EXPECT_EQ(drawing.imp.changedSinceSave(), std::vector<MxDbObjectId>{id});
    EXPECT_TRUE(drawing.at<Line>(id).data().sourceStale);
}

TEST(Object, UpgradingAndDrawingAnewMarkNothing) {
    class Listener final : public merix::db::DatabaseListener {
    public:
        void objectModified(MxDbObject&) override { told += "modified "; }
        void objectGraphicsModified(MxDbObject&) override { told += "graphics "; }
        std::string told;
    } listener;
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    drawing.imp.clearChanged();
    drawing.at<Line>(id).data().sourceStale = false;
    drawing.imp.addListener(&listener);
    Line* line = nullptr;
    mxdbOpenObject(line, id, Mx::kForRead);
    ASSERT_EQ(line->upgradeOpen(), Mx::eOk);
    line->recordGraphicsModified();
    line->close();
    EXPECT_FALSE(drawing.imp.isChanged());
    EXPECT_FALSE(line->data().sourceStale);
    EXPECT_EQ(listener.told, "graphics ");

    mxdbOpenObject(line, id, Mx::kForRead);
    line->upgradeOpen();
    line->assertWriteEnabled();
    line->close();
    EXPECT_EQ(drawing.imp.changedSinceSave(), std::vector<MxDbObjectId>{id});
    EXPECT_EQ(listener.told, "graphics modified ");
    drawing.imp.removeListener(&listener);
}

TEST(Object, ABlockUpgradedToTakeAnEntityIsMarked) {
    Drawing drawing;
    drawing.imp.clearChanged();
    MxDbBlockTableRecord* space = nullptr;
    mxdbOpenObject(space, drawing.imp.roots.modelSpace, Mx::kForRead);
    ASSERT_EQ(space->upgradeOpen(), Mx::eOk);
    auto* line = new Line;
    MxDbObjectId id;
    EXPECT_EQ(space->appendMxDbEntity(id, line), Mx::eOk);
    line->close();
    space->close();
    EXPECT_EQ(drawing.imp.changedSinceSave(), (std::vector<MxDbObjectId>{id, drawing.imp.roots.modelSpace}));
}

TEST(Object, DataChangedThroughAKeptPointerIsMarkedWithoutOpening) {
    class Listener final : public merix::db::DatabaseListener {
    public:
        void objectModified(MxDbObject& object) override { told.push_back(object.objectId()); }
        std::vector<MxDbObjectId> told;
    } listener;
    Drawing drawing;
    constexpr std::int16_t kLocked = 4;
    const MxDbObjectId id = drawing.addLine();
    merix::db::traits(drawing.at<MxDbEntity>(id)).layer = drawing.addLayer(L"LOCKED", 7, kLocked);
    drawing.imp.clearChanged();
    drawing.imp.undo.clear();
    drawing.imp.addListener(&listener);
    MxDbObject* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, id, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(mxdbMarkModified(id), Mx::eOk);
    reader->close();
    EXPECT_EQ(drawing.imp.changedSinceSave(), std::vector<MxDbObjectId>{id});
    EXPECT_EQ(listener.told, std::vector<MxDbObjectId>{id});
    EXPECT_FALSE(drawing.imp.undo.canUndo());

    EXPECT_EQ(mxdbMarkModified({}), Mx::eNullObjectId);
    const MxDbObjectId erased = drawing.addLine();
    drawing.erase(erased);
    EXPECT_EQ(mxdbMarkModified(erased), Mx::eWasErased);
    drawing.imp.removeListener(&listener);
}

class Recorder final : public MxDbObjectReactor {
public:
    void erased(const MxDbObject*, bool erasing) override {
        told += erasing ? "erased " : "unerased ";
        if (removesItself)
            static_cast<void>(watched->removeReactor(this));
    }
    void modified(const MxDbObject* object) override {
        object->assertReadEnabled();
        told += "modified ";
    }
    void goodbye(const MxDbObject*) override { told += "goodbye "; }
    std::string told;
    bool removesItself = false;
    MxDbObject* watched = nullptr;
};

void watch(MxDbObjectId id, Recorder& reactor) {
    MxDbObject* object = nullptr;
    mxdbOpenObject(object, id, Mx::kForRead);
    object->addReactor(&reactor);
    object->addReactor(&reactor);
    reactor.watched = object;
    object->close();
}

TEST(Object, ReactorsAreToldOfChangesWhenTheObjectIsClosed) {
    Recorder reactor;
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    watch(id, reactor);
    MxDbObject* object = nullptr;
    mxdbOpenObject(object, id, Mx::kForWrite);
    object->assertWriteEnabled();
    object->assertWriteEnabled();
    EXPECT_EQ(reactor.told, "");
    object->close();
    EXPECT_EQ(reactor.told, "modified ");
    mxdbOpenObject(object, id, Mx::kForWrite);
    object->close();
    EXPECT_EQ(reactor.told, "modified ") << "nothing was changed in the second open";
}

TEST(Object, ReactorsMayLeaveWhileTheListIsWalked) {
    Recorder first, second;
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    watch(id, first);
    watch(id, second);
    first.removesItself = second.removesItself = true;
    drawing.erase(id);
    EXPECT_EQ(first.told, "erased ");
    EXPECT_EQ(second.told, "erased ");
    EXPECT_TRUE(first.watched->reactors().empty());
}

TEST(Object, ReactorsAreToldWhenTheDrawingIsClosed) {
    Recorder reactor;
    {
        Drawing drawing;
        watch(drawing.addLine(), reactor);
    }
    EXPECT_EQ(reactor.told, "goodbye ");
}

TEST(Object, PersistentReactorsAreToldWhenOpenForRead) {
    class Follower final : public MxDbObject {
    public:
        void modified(const MxDbObject* object) override {
            assertReadEnabled();
            object->assertReadEnabled();
            told += "modified ";
        }
        void openedForModify(const MxDbObject*) override { told += "opened "; }
        void objectClosed(MxDbObjectId) override { told += "closed "; }
        void erased(const MxDbObject*, bool) override { told += "erased "; }
        void modifyUndone(const MxDbObject*) override { told += "undone "; }
        std::string told;
    };
    Drawing drawing;
    auto* follower = new Follower;
    const MxDbObjectId reactor(drawing.imp.adopt(follower, {}, {}));
    const MxDbObjectId id = drawing.addLine();
    drawing.at<Line>(id).data().reactors.push_back({nullptr, reactor});
    drawing.moveLine(id, {2, 0, 0});
    EXPECT_EQ(follower->told, "opened modified closed ");
    follower->told.clear();
    drawing.imp.undo.undo();
    EXPECT_EQ(follower->told, "undone modified ");
    follower->told.clear();
    drawing.erase(reactor);
    drawing.erase(id);
    EXPECT_EQ(follower->told, "") << "an erased reactor hears nothing";
}

TEST(Object, AnExtensionDictionaryIsMadeOnceAndErasedWithItsOwner) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    Line* line = nullptr;
    mxdbOpenObject(line, id, Mx::kForWrite);
    EXPECT_TRUE(line->extensionDictionary().isNull());
    EXPECT_EQ(line->createExtensionDictionary(), Mx::eOk);
    EXPECT_EQ(line->createExtensionDictionary(), Mx::eHasExtensionDictionary);
    const MxDbObjectId dictionary = line->extensionDictionary();
    line->close();
    EXPECT_EQ(drawing.at<MxDbDictionary>(dictionary).ownerId(), id);
    drawing.erase(id);
    EXPECT_TRUE(drawing.at<MxDbDictionary>(dictionary).isErased());
    drawing.erase(id, false);
    EXPECT_EQ(line->extensionDictionary(), dictionary);
    drawing.erase(dictionary);
    EXPECT_TRUE(line->extensionDictionary().isNull());
}

TEST(Object, ADictionaryOfAnotherOwnerIsNoExtensionDictionary) {
    Drawing drawing;
    const MxDbObjectId root = drawing.imp.roots.namedObjects, other = drawing.addLine();
    auto* foreign = new MxDbDictionary;
    const MxDbObjectId owned(drawing.imp.adopt(foreign, {}, other));
    for (const MxDbObjectId& claimed : {root, owned, other}) {
        const MxDbObjectId line = drawing.addLine();
        drawing.at<Line>(line).data().extensionDictionary = claimed;
        EXPECT_TRUE(drawing.at<Line>(line).extensionDictionary().isNull());
        EXPECT_EQ(drawing.erase(line), Mx::eOk);
        EXPECT_FALSE(drawing.at<MxDbObject>(claimed).isErased());
        EXPECT_FALSE(drawing.at<MxDbObject>(root).isErased());
    }
    // It may get one of its own.
    const MxDbObjectId line = drawing.addLine();
    drawing.at<Line>(line).data().extensionDictionary = root;
    Line* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, line, Mx::kForWrite), Mx::eOk);
    EXPECT_EQ(open->releaseExtensionDictionary(), Mx::eKeyNotFound);
    EXPECT_EQ(open->createExtensionDictionary(), Mx::eOk);
    EXPECT_EQ(drawing.at<MxDbObject>(open->extensionDictionary()).ownerId(), line);
    open->close();
    EXPECT_FALSE(drawing.at<MxDbObject>(root).isErased());
}

TEST(Object, ADictionaryWithoutAnOwnerIsTheExtensionDictionaryOfWhoNamesIt) {
    Drawing drawing;
    const MxDbObjectId line = drawing.addLine();
    const MxDbObjectId dictionary(drawing.imp.adopt(new MxDbDictionary, {}, {}));
    drawing.at<Line>(line).data().extensionDictionary = dictionary;
    EXPECT_EQ(drawing.at<Line>(line).extensionDictionary(), dictionary);
    drawing.erase(line);
    EXPECT_TRUE(drawing.at<MxDbObject>(dictionary).isErased());
}

TEST(ObjectDeathTest, ChangingAClosedObjectStopsTheHost) {
    Drawing drawing;
    auto& line = drawing.at<Line>(drawing.addLine());
    EXPECT_DEATH(line.assertWriteEnabled(), "change of an object that is not open for write: MxDbLine");
    EXPECT_DEATH(line.assertReadEnabled(), "read of an object that is not open: MxDbLine");
}

} // namespace
