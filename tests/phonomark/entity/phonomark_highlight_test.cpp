// SPDX-License-Identifier: MIT
// Showing what a note is about: the region of a Region note, the object of an Object note.
#include "host/ap/document.h"
#include "host/db/layer.h"
#include "phonomark/entity/phonomark.h"
#include "tests/phonomark/module_fixture.h"

using HighlightTest = ModuleTest;

TEST_F(HighlightTest, HighlightingShowsTheRegionOrTheObject) {
    const MxDbObjectId region = addNote(kRegionNote), object = addNote(kObjectNote), line = addLine();
    note(region).ShowRegion(false);
    note(object).setAttachObj(line);
    struct : merix::db::DatabaseListener {
        void entityHighlighted(MxDbObject& entity, bool highlighted) override {
            heard.emplace_back(entity.objectId(), highlighted);
        }
        std::vector<std::pair<MxDbObjectId, bool>> heard;
    } listener;
    database().imp().addListener(&listener);
    for (const MxDbObjectId& id : {region, object, addNote(kPointNote), addNote(kReplyNote)})
        note(id).doHighlight();
    EXPECT_TRUE(note(region).isRegionShown());
    EXPECT_EQ(listener.heard, (decltype(listener.heard){{line, true}}));
    for (const MxDbObjectId& id : {region, object})
        note(id).doUnhighlight();
    EXPECT_FALSE(note(region).isRegionShown());
    EXPECT_EQ(listener.heard.back(), std::pair(line, false));
    database().imp().removeListener(&listener);
    MxDbEntity* free = nullptr;
    EXPECT_EQ(mxdbOpenObject(free, line, Mx::kForWrite), Mx::eOk) << "left open";
    free->close();
}

TEST_F(HighlightTest, AnObjectIsShownForObjectNotesAlone) {
    const MxDbObjectId line = addLine();
    struct : merix::db::DatabaseListener {
        void entityHighlighted(MxDbObject&, bool) override { ++heard; }
        int heard = 0;
    } listener;
    database().imp().addListener(&listener);
    for (const int type : std::initializer_list<int>{kPointNote, kRegionNote, kReplyNote, 7}) {
        const MxDbObjectId id = addNote(type);
        note(id).setAttachObj(line);
        note(id).doHighlight();
        note(id).doUnhighlight();
        EXPECT_EQ(note(id).isRegionShown(), type != kRegionNote) << type;
    }
    EXPECT_EQ(listener.heard, 0);
    database().imp().removeListener(&listener);
}

TEST_F(HighlightTest, HighlightingAnObjectThatIsGoneDoesNothing) {
    const MxDbObjectId object = addNote(kObjectNote), line = addLine();
    note(object).setAttachObj(line);
    MxDbEntity* erased = nullptr;
    ASSERT_EQ(mxdbOpenObject(erased, line, Mx::kForWrite), Mx::eOk);
    erased->erase();
    erased->close();
    note(object).doHighlight();
    note(object).doUnhighlight();
    EXPECT_TRUE(note(object).isRegionShown());
}

TEST_F(HighlightTest, HighlightingARegionNoteThatIsOpenElsewhereLeavesTheDrawingAsItIs) {
    const MxDbObjectId id = addNote(kRegionNote);
    note(id).ShowRegion(false);
    database().imp().undo.clear();
    MxDbPhonomark* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, id, Mx::kForRead), Mx::eOk);
    reader->doHighlight();
    EXPECT_TRUE(reader->isRegionShown()) << "the note itself shows it";
    reader->doUnhighlight();
    EXPECT_FALSE(reader->isRegionShown());
    EXPECT_EQ(reader->close(), Mx::eOk);
    EXPECT_FALSE(database().imp().undo.canUndo()) << "there was nothing that could be changed";
    ASSERT_EQ(mxdbOpenObject(reader, id, Mx::kForWrite), Mx::eOk) << "left open";
    reader->close();
    ASSERT_EQ(mxDocManagerPtr()->lockDocument(&document(), MxApLockMode::kWrite, L"OTHER", L"other"), Mx::eOk)
        << "left locked";
    mxDocManagerPtr()->unlockDocument(&document());
}

TEST_F(HighlightTest, HighlightingAnObjectThatIsWrittenElsewhereDoesNothing) {
    const MxDbObjectId object = addNote(kObjectNote), line = addLine();
    note(object).setAttachObj(line);
    struct : merix::db::DatabaseListener {
        void entityHighlighted(MxDbObject&, bool) override { ++heard; }
        int heard = 0;
    } listener;
    database().imp().addListener(&listener);
    MxDbEntity* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, line, Mx::kForWrite), Mx::eOk);
    note(object).doHighlight();
    note(object).doUnhighlight();
    writer->close();
    EXPECT_EQ(listener.heard, 0);
    note(object).doHighlight();
    EXPECT_EQ(listener.heard, 1);
    database().imp().removeListener(&listener);
}

TEST_F(HighlightTest, TheRegionIsShownAndHiddenWhileAnotherCommandHoldsTheDrawing) {
    const MxDbObjectId id = addNote(kRegionNote);
    ASSERT_EQ(mxDocManagerPtr()->lockDocument(&document(), MxApLockMode::kWrite, L"OTHER", L"other"), Mx::eOk);
    printed();
    note(id).setRecord(true);
    EXPECT_FALSE(note(id).isRegionShown());
    EXPECT_EQ(printed(), "") << "the lock is not missed";
    EXPECT_EQ(mxDocManagerPtr()->unlockDocument(&document()), Mx::eOk);
}

TEST_F(HighlightTest, HighlightingARegionOnALockedLayerShowsAtOnce) {
    const MxDbObjectId id = addNote(kRegionNote);
    note(id).ShowRegion(false);
    auto& layer = static_cast<MxDbLayerTableRecord&>(*merix::db::DatabaseImp::peek(note(id).layerId()));
    MxDbLayerTableRecord* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, layer.objectId(), Mx::kForWrite), Mx::eOk);
    open->setIsLocked(true);
    open->close();
    const auto before = note(id).data().graphicsVersion;
    note(id).doHighlight();
    EXPECT_TRUE(note(id).isRegionShown());
    EXPECT_GT(note(id).data().graphicsVersion, before);
}

TEST_F(HighlightTest, ShowingTheRegionOfANoteThatCannotBeWrittenChangesNothing) {
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

TEST_F(HighlightTest, ShowingAndHidingTheRegionDrawsTheNoteAnew) {
    const MxDbObjectId id = addNote(kRegionNote);
    for (const bool show : {false, true}) {
        const auto before = note(id).data().graphicsVersion;
        note(id).ShowRegion(show);
        EXPECT_GT(note(id).data().graphicsVersion, before);
    }
}
