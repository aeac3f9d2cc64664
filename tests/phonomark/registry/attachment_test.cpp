// SPDX-License-Identifier: MIT
#include "host/db/dictionary.h"
#include "host/db/layer.h"
#include "merix/db/entities.h"
#include "phonomark/dbutil/attachments.h"
#include "phonomark/entity/ps_reactor.h"
#include "phonomark/registry/locked_layer.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/module_fixture.h"

using merix::ap::DocManager;
using merix::db::DatabaseImp;

namespace {

class AttachmentTest : public ModuleTest {
protected:
    void SetUp() override {
        ModuleTest::SetUp();
        m_line = addLine();
        m_note = addNote(kObjectNote);
        note(m_note).setAttachObj(m_line);
    }
    bool attach() { return livePhManager()->addNotifier(&note(m_note), m_line); }
    bool detach() {
        MxDbPhonomark* open = nullptr;
        if (mxdbOpenObject(open, m_note, Mx::kForWrite) != Mx::eOk)
            throw std::runtime_error("the note cannot be opened");
        const bool done = livePhManager()->delNotifier(open, m_line);
        open->close();
        return done;
    }
    std::vector<MxDbReactorEntry> onLine() { return DatabaseImp::peek(m_line, true)->reactors(); }
    MxDbObjectId reactorInNote() {
        MxDbDictionary* dictionary = nullptr;
        MxDbObjectId id;
        if (mxdbOpenObject(dictionary, note(m_note).extensionDictionary(), Mx::kForRead) == Mx::eOk) {
            dictionary->getAt(L"PHONOMARKASSOC", id);
            dictionary->close();
        }
        return id;
    }
    MxDbLayerTableRecord& layer() {
        return static_cast<MxDbLayerTableRecord&>(*DatabaseImp::peek(note(m_note).layerId()));
    }
    void lockLayer(bool lock = true) {
        MxDbLayerTableRecord* record = nullptr;
        ASSERT_EQ(mxdbOpenObject(record, note(m_note).layerId(), Mx::kForWrite), Mx::eOk);
        record->setIsLocked(lock);
        record->close();
    }

    MxDbObjectId m_line, m_note;
};

} // namespace

TEST_F(AttachmentTest, AnAttachedNoteHoldsAReactorThatItsObjectLists) {
    ASSERT_TRUE(attach());
    const MxDbObjectId id = reactorInNote();
    ASSERT_FALSE(id.isNull());
    EXPECT_TRUE(hasPersistentReactor(DatabaseImp::peek(m_line), id));
    PhonomarkPsReactor* reactor = nullptr;
    ASSERT_EQ(mxdbOpenObject(reactor, id, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(reactor->noteId(), m_note);
    EXPECT_EQ(reactor->ownerId(), note(m_note).extensionDictionary());
    reactor->close();
}

TEST_F(AttachmentTest, ADetachedNoteLeavesNothingBehindAndIsDetachedOnce) {
    ASSERT_TRUE(attach());
    const MxDbObjectId reactor = reactorInNote();
    EXPECT_TRUE(detach());
    EXPECT_TRUE(onLine().empty());
    EXPECT_TRUE(DatabaseImp::peek(reactor, true)->isErased());
    EXPECT_TRUE(note(m_note).extensionDictionary().isNull()) << "it was empty";
    EXPECT_FALSE(detach());
    EXPECT_TRUE(attach()) << "and can be attached again";
}

TEST_F(AttachmentTest, ObjectAndNoteMayLieOnALockedLayer) {
    lockLayer();
    EXPECT_TRUE(attach());
    EXPECT_FALSE(reactorInNote().isNull());
    EXPECT_EQ(onLine().size(), 1u);
    EXPECT_TRUE(layer().isLocked()) << "as before";
}

TEST_F(AttachmentTest, AnObjectThatCannotBeOpenedIsNotAttachedTo) {
    EXPECT_FALSE(livePhManager()->addNotifier(&note(m_note), {}));
    MxDbObject* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, m_line, Mx::kForRead), Mx::eOk);
    EXPECT_FALSE(attach());
    reader->close();
    EXPECT_TRUE(reactorInNote().isNull());
    EXPECT_TRUE(attach());
}

TEST_F(AttachmentTest, ANoteWhoseDictionaryIsOpenIsNotAttachedAndTheObjectIsClosed) {
    ASSERT_TRUE(attach());
    MxDbDictionary* dictionary = nullptr;
    ASSERT_EQ(mxdbOpenObject(dictionary, note(m_note).extensionDictionary(), Mx::kForRead), Mx::eOk);
    EXPECT_FALSE(attach());
    dictionary->close();
    MxDbObject* object = nullptr;
    ASSERT_EQ(mxdbOpenObject(object, m_line, Mx::kForWrite), Mx::eOk);
    object->close();
}

TEST_F(AttachmentTest, ANoteThatCannotBeGivenItsDictionaryIsNotAttached) {
    MxDbPhonomark* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, m_note, Mx::kForRead), Mx::eOk);
    EXPECT_FALSE(attach());
    reader->close();
    EXPECT_TRUE(note(m_note).extensionDictionary().isNull());
    EXPECT_TRUE(onLine().empty());
    EXPECT_TRUE(attach()) << "all was closed again";
}

namespace {

/// Opens every dictionary that comes into the drawing for read, as soon as it is there.
class DictionaryHolder : public merix::db::DatabaseListener {
public:
    explicit DictionaryHolder(MxDbDatabase& database)
        : m_database(database) {
        m_database.imp().addListener(this);
    }
    ~DictionaryHolder() override { m_database.imp().removeListener(this); }
    void objectAppended(MxDbObject& object) override {
        if (MxDbDictionary* dictionary = nullptr;
            mxdbOpenObject(dictionary, object.objectId(), Mx::kForRead) == Mx::eOk)
            m_held.push_back(dictionary);
    }
    std::size_t letGo() {
        for (MxDbDictionary* dictionary : m_held)
            dictionary->close();
        return std::exchange(m_held, {}).size();
    }

private:
    MxDbDatabase& m_database;
    std::vector<MxDbDictionary*> m_held;
};

} // namespace

TEST_F(AttachmentTest, ADictionaryThatWasMadeStaysWhenTheRestFails) {
    DictionaryHolder holder(database());
    EXPECT_FALSE(attach());
    ASSERT_EQ(holder.letGo(), 1U) << "made, and not to be opened for write";
    EXPECT_FALSE(note(m_note).extensionDictionary().isNull());
    EXPECT_TRUE(reactorInNote().isNull());
    EXPECT_TRUE(onLine().empty());
    EXPECT_TRUE(attach());
}

TEST_F(AttachmentTest, AReactorThatWasMadeStaysWhenTheObjectCannotListIt) {
    MxDbDatabase other;
    other.imp().createDefaults();
    MxDbBlockTableRecord* space = nullptr;
    MxDbObjectId elsewhere;
    ASSERT_EQ(mxdbOpenObject(space, other.currentSpaceId(), Mx::kForWrite), Mx::eOk);
    auto* line = new merix::db::Line;
    ASSERT_EQ(space->appendMxDbEntity(elsewhere, line), Mx::eOk);
    line->close();
    space->close();
    EXPECT_FALSE(livePhManager()->addNotifier(&note(m_note), elsewhere)) << "it belongs to another drawing";
    const MxDbObjectId reactor = reactorInNote();
    ASSERT_FALSE(reactor.isNull());
    EXPECT_FALSE(DatabaseImp::peek(reactor, true)->isErased());
    EXPECT_TRUE(DatabaseImp::peek(elsewhere)->reactors().empty());
}

TEST_F(AttachmentTest, ANoteThatWasNeverAddedIsNotAttached) {
    const MxDbPhonomark loose;
    EXPECT_FALSE(livePhManager()->addNotifier(&loose, m_line));
    EXPECT_TRUE(onLine().empty());
    EXPECT_TRUE(attach()) << "the object was closed again";
}

TEST_F(AttachmentTest, AnObjectIsNotOpenedForANoteThatHasNoReactor) {
    DatabaseImp::peek(m_line)->data().changedSinceSave = false;
    EXPECT_FALSE(detach());
    EXPECT_FALSE(DatabaseImp::peek(m_line)->data().changedSinceSave) << "the next save would write it for nothing";
    ASSERT_TRUE(attach());
    EXPECT_TRUE(DatabaseImp::peek(m_line)->data().changedSinceSave);
}

TEST_F(AttachmentTest, ANoteWhoseDictionaryCannotBeReadIsNotDetached) {
    ASSERT_TRUE(attach());
    MxDbDictionary* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, note(m_note).extensionDictionary(), Mx::kForWrite), Mx::eOk);
    EXPECT_FALSE(detach());
    writer->close();
    EXPECT_EQ(onLine().size(), 1U);
    EXPECT_FALSE(DatabaseImp::peek(reactorInNote(), true)->isErased());
    EXPECT_TRUE(detach());
}

TEST_F(AttachmentTest, ADictionaryThatHoldsMoreIsKeptWhenTheNoteIsDetached) {
    ASSERT_TRUE(attach());
    const MxDbObjectId id = note(m_note).extensionDictionary();
    MxDbDictionary* dictionary = nullptr;
    ASSERT_EQ(mxdbOpenObject(dictionary, id, Mx::kForWrite), Mx::eOk);
    auto* other = new MxDbXrecord;
    MxDbObjectId kept;
    ASSERT_EQ(dictionary->setAt(L"OTHER", other, kept), Mx::eOk);
    other->close();
    dictionary->close();
    EXPECT_TRUE(detach());
    EXPECT_EQ(note(m_note).extensionDictionary(), id);
    EXPECT_TRUE(reactorInNote().isNull());
    EXPECT_TRUE(onLine().empty());
    EXPECT_FALSE(DatabaseImp::peek(id, true)->isErased());
    EXPECT_FALSE(DatabaseImp::peek(kept, true)->isErased());
    EXPECT_FALSE(detach()) << "there is no entry any more";
}

TEST_F(AttachmentTest, WhatIsNoReactorUnderTheKeyIsLeftAlone) {
    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, m_note, Mx::kForWrite), Mx::eOk);
    ASSERT_EQ(open->createExtensionDictionary(), Mx::eOk);
    MxDbDictionary* dictionary = nullptr;
    ASSERT_EQ(mxdbOpenObject(dictionary, open->extensionDictionary(), Mx::kForWrite), Mx::eOk);
    auto* record = new MxDbXrecord;
    MxDbObjectId kept;
    ASSERT_EQ(dictionary->setAt(L"PHONOMARKASSOC", record, kept), Mx::eOk);
    record->close();
    dictionary->close();
    EXPECT_FALSE(livePhManager()->delNotifier(open, m_line));
    open->close();
    EXPECT_EQ(reactorInNote(), kept);
    EXPECT_FALSE(DatabaseImp::peek(kept, true)->isErased());
}

TEST_F(AttachmentTest, AnObjectThatIsOpenIsNotDetachedFrom) {
    ASSERT_TRUE(attach());
    MxDbObject* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, m_line, Mx::kForRead), Mx::eOk);
    EXPECT_FALSE(detach());
    reader->close();
    EXPECT_EQ(onLine().size(), 1u);
    EXPECT_TRUE(detach());
}

TEST_F(AttachmentTest, AReactorThatIsOpenStaysAlthoughTheObjectNoLongerListsIt) {
    ASSERT_TRUE(attach());
    const MxDbObjectId id = reactorInNote();
    PhonomarkPsReactor* reactor = nullptr;
    ASSERT_EQ(mxdbOpenObject(reactor, id, Mx::kForRead), Mx::eOk);
    EXPECT_FALSE(detach());
    reactor->close();
    EXPECT_TRUE(onLine().empty());
    EXPECT_EQ(reactorInNote(), id);
    EXPECT_TRUE(detach()) << "the rest is done when asked again";
}

TEST_F(AttachmentTest, ANoteWithoutTheKeyOrOfAnErasedObjectIsNotDetached) {
    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, m_note, Mx::kForWrite), Mx::eOk);
    EXPECT_FALSE(livePhManager()->delNotifier(open, m_line)) << "no dictionary";
    open->createExtensionDictionary();
    EXPECT_FALSE(livePhManager()->delNotifier(open, m_line)) << "no entry";
    EXPECT_FALSE(open->extensionDictionary().isNull());
    open->close();
    ASSERT_TRUE(attach());
    MxDbEntity* line = nullptr;
    ASSERT_EQ(mxdbOpenObject(line, m_line, Mx::kForWrite), Mx::eOk);
    line->erase();
    line->close();
    EXPECT_FALSE(detach());
    EXPECT_FALSE(reactorInNote().isNull());
}

TEST_F(AttachmentTest, ErasingTheNoteDetachesItAndUndoAttachesItAgain) {
    ASSERT_TRUE(attach());
    const MxDbObjectId reactor = reactorInNote();
    livePhManager()->ErasePhonomark(m_note, &document());
    EXPECT_TRUE(onLine().empty());
    EXPECT_FALSE(IsAttachedVoice(m_line));
    ASSERT_TRUE(DocManager::instance().undo(document()));
    EXPECT_TRUE(IsAttachedVoice(m_line));
    EXPECT_EQ(reactorInNote(), reactor);
    EXPECT_TRUE(hasPersistentReactor(DatabaseImp::peek(m_line), reactor));
    ASSERT_TRUE(DocManager::instance().redo(document()));
    EXPECT_TRUE(onLine().empty());
    EXPECT_TRUE(DatabaseImp::peek(reactor, true)->isErased());
}

TEST_F(AttachmentTest, ErasingANoteOfAnotherTypeDetachesNothing) {
    ASSERT_TRUE(attach());
    note(m_note).setPhonomarkType(kPointNote);
    livePhManager()->ErasePhonomark(m_note, &document());
    EXPECT_EQ(onLine().size(), 1u);
}

TEST_F(AttachmentTest, AnEntityOnALockedLayerIsOpenedForWriteAndTheLayerStaysLocked) {
    lockLayer();
    MxDbEntity* entity = nullptr;
    ASSERT_EQ(openObjectIgnoreLockLayer(entity, m_line, Mx::kForWrite), Mx::eOk);
    EXPECT_TRUE(layer().isLocked());
    entity->assertWriteEnabled();
    EXPECT_EQ(entity->close(), Mx::eOk);
    ASSERT_EQ(openObjectIgnoreLockLayer(entity, m_line, Mx::kForRead), Mx::eOk);
    entity->close();
}

TEST_F(AttachmentTest, AnErasedEntityIsNotOpened) {
    MxDbEntity* entity = nullptr;
    ASSERT_EQ(mxdbOpenObject(entity, m_line, Mx::kForWrite), Mx::eOk);
    entity->erase();
    entity->close();
    EXPECT_EQ(openObjectIgnoreLockLayer(entity, m_line, Mx::kForWrite), Mx::eWasErased);
    EXPECT_EQ(entity, nullptr);
}

TEST_F(AttachmentTest, ALayerThatCannotBeUnlockedLeavesTheEntityOpenForRead) {
    lockLayer();
    MxDbObject* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, note(m_note).layerId(), Mx::kForRead), Mx::eOk);
    MxDbEntity* entity = nullptr;
    EXPECT_EQ(openObjectIgnoreLockLayer(entity, m_line, Mx::kForWrite), Mx::eOpenForRead);
    ASSERT_TRUE(entity);
    entity->assertReadEnabled();
    EXPECT_EQ(entity->close(), Mx::eOk);
    EXPECT_FALSE(attach());
    reader->close();
    EXPECT_TRUE(attach()) << "all was closed again";
}

TEST_F(AttachmentTest, ALayerThatCannotBeReadClosesTheEntityAgain) {
    MxDbObject* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, note(m_note).layerId(), Mx::kForWrite), Mx::eOk);
    MxDbEntity* entity = nullptr;
    EXPECT_EQ(openObjectIgnoreLockLayer(entity, m_line, Mx::kForWrite), Mx::eOpenForWrite);
    EXPECT_EQ(entity, nullptr);
    writer->close();
    ASSERT_EQ(mxdbOpenObject(entity, m_line, Mx::kForWrite), Mx::eOk);
    entity->close();
}
