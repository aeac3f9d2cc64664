// SPDX-License-Identifier: MIT
#include "phonomark/entity/ps_reactor.h"

#include "host/db/dictionary.h"
#include "host/db/layer.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/entities.h"
#include "merix/io/dxf_in_filer.h"
#include "merix/io/dxf_out_filer.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/entity/failing_filers.h"
#include "tests/phonomark/module_fixture.h"

#include <memory>

using merix::io::DxfOutTag;

namespace {

class PsReactorTest : public ModuleTest {
protected:
    Mx::ErrorStatus readDxf(PhonomarkPsReactor& into, const std::vector<DxfOutTag>& tags) {
        const std::vector<merix::io::DxfTag> views = dxfTags(tags);
        merix::io::DxfInFiler filer(database(), m_encoding, views);
        return into.dxfInFields(&filer);
    }
    merix::io::DxfEncoding m_encoding{"AC1032", "ANSI_1252"};
};

} // namespace

TEST_F(PsReactorTest, TheClassIsRegisteredAsFiled) {
    const MxRxClass* aClass = PhonomarkPsReactor::desc();
    ASSERT_TRUE(aClass);
    EXPECT_STREQ(aClass->dxfName(), L"PhonomarkPsReactor");
    EXPECT_STREQ(aClass->appName(), L"PERSISTREACTOR");
    EXPECT_EQ(aClass->dwgVersion(), 33);
    EXPECT_EQ(aClass->maintenanceVersion(), 55);
    EXPECT_EQ(aClass->myParent(), MxDbObject::desc());
    const std::unique_ptr<MxRxObject> made(aClass->create());
    ASSERT_TRUE(made);
    EXPECT_TRUE(static_cast<PhonomarkPsReactor&>(*made).noteId().isNull());
}

TEST_F(PsReactorTest, TheNoteIsKeptByTheBinaryForm) {
    PhonomarkPsReactor before, after;
    before.setNoteId(addNote());
    merix::db::DwgWriter writer(MxDbFilerType::kFile, &database());
    ASSERT_EQ(before.dwgOutFields(&writer), Mx::eOk);
    const std::string stream = writer.take();
    merix::db::DwgReader reader(stream, MxDbFilerType::kFile, &database());
    EXPECT_EQ(after.dwgInFields(&reader), Mx::eOk);
    EXPECT_EQ(after.noteId(), before.noteId());
}

TEST_F(PsReactorTest, TheNoteIsKeptByDxf) {
    PhonomarkPsReactor before, after;
    before.setNoteId(addNote());
    merix::io::DxfOutFiler filer(database(), m_encoding);
    ASSERT_EQ(before.dxfOutFields(&filer), Mx::eOk);
    const auto tags = filer.takeTags();
    ASSERT_GE(tags.size(), 2u);
    EXPECT_EQ(tags[tags.size() - 2].value, "PhonomarkPsReactor");
    EXPECT_EQ(tags.back().code, 330);
    readDxf(after, tags);
    EXPECT_EQ(after.noteId(), before.noteId());
}

TEST_F(PsReactorTest, WithoutItsSubclassMarkerARecordIsRefused) {
    PhonomarkPsReactor after;
    EXPECT_EQ(readDxf(after, {{330, "1F"}}), 52);
    EXPECT_TRUE(after.noteId().isNull());
}

TEST_F(PsReactorTest, WhatCannotBeReadGivesTheFilersStatus) {
    PhonomarkPsReactor after;
    EXPECT_EQ(readDxf(after, {{100, "PhonomarkPsReactor"}, {330, "F001"}, {310, "no bytes"}}), 51);
    EXPECT_EQ(readDxf(after, {{100, "PhonomarkPsReactor"}, {330, "F001"}}), Mx::eOk);
    EXPECT_EQ(readDxf(after, {{100, "PhonomarkPsReactor"}, {330, "F001"}, {70, "1"}}), Mx::eOk);
    merix::db::DwgReader reader({}, MxDbFilerType::kFile, &database());
    EXPECT_EQ(after.dwgInFields(&reader), Mx::eEndOfStream);
}

TEST_F(PsReactorTest, TheBinaryFormIsOneReferenceBehindTheBase) {
    PhonomarkPsReactor reactor;
    reactor.setNoteId(addNote());
    merix::db::DwgWriter base(MxDbFilerType::kFile, &database()), whole(MxDbFilerType::kFile, &database());
    reactor.MxDbObject::dwgOutFields(&base);
    reactor.dwgOutFields(&whole);
    base.writeSoftPointerId(reactor.noteId());
    EXPECT_EQ(whole.take(), base.take());
}

TEST_F(PsReactorTest, TheLastOfSeveralNotesWins) {
    PhonomarkPsReactor after;
    readDxf(after, {{100, "PhonomarkPsReactor"}, {330, "F001"}, {330, "F002"}, {90, "1"}, {330, "F003"}});
    EXPECT_EQ(after.noteId().handle(), MxDbHandle(0xF002));
}

TEST_F(PsReactorTest, AWriterThatFailsGivesItsStatusAndNothingFollowsTheBase) {
    PhonomarkPsReactor reactor;
    reactor.setNoteId(addNote());
    std::size_t item = 0;
    for (bool isBase = true; isBase; ++item) { // the last round is the reference
        FailingDwgWriter alone(database(), item), filer(database(), item);
        isBase = reactor.MxDbObject::dwgOutFields(&alone) != Mx::eOk;
        EXPECT_EQ(reactor.dwgOutFields(&filer), FailingDwgWriter::kStatus) << item;
        EXPECT_EQ(filer.askedAfterwards(), alone.askedAfterwards()) << item;
    }
    FailingDwgWriter whole(database(), item);
    EXPECT_EQ(reactor.dwgOutFields(&whole), Mx::eOk);
}

TEST_F(PsReactorTest, AReaderThatFailsGivesItsStatusAndNothingFollowsTheBase) {
    PhonomarkPsReactor before, after;
    before.setNoteId(addNote());
    merix::db::DwgWriter writer(MxDbFilerType::kFile, &database());
    ASSERT_EQ(before.dwgOutFields(&writer), Mx::eOk);
    const std::string stream = writer.take();
    std::size_t item = 0;
    for (bool isBase = true; isBase; ++item) {
        FailingDwgReader alone(stream, database(), item), filer(stream, database(), item);
        isBase = after.MxDbObject::dwgInFields(&alone) != Mx::eOk;
        EXPECT_EQ(after.dwgInFields(&filer), FailingDwgReader::kStatus) << item;
        EXPECT_EQ(filer.askedAfterwards(), alone.askedAfterwards()) << item;
        EXPECT_TRUE(after.noteId().isNull());
    }
    FailingDwgReader whole(stream, database(), item);
    EXPECT_EQ(after.dwgInFields(&whole), Mx::eOk);
    EXPECT_EQ(after.noteId(), before.noteId());
}

TEST_F(PsReactorTest, ADxfWriterThatFailsGivesItsStatusAndNothingFollowsTheBase) {
    PhonomarkPsReactor reactor;
    reactor.setNoteId(addNote());
    std::size_t base = 0;
    for (bool isBase = true; isBase; base += isBase ? 1 : 0) {
        FailingDxfWriter alone(database(), m_encoding, base), filer(database(), m_encoding, base);
        isBase = reactor.MxDbObject::dxfOutFields(&alone) != Mx::eOk;
        EXPECT_EQ(reactor.dxfOutFields(&filer), FailingDxfWriter::kStatus) << base;
        EXPECT_EQ(filer.askedAfterwards(), isBase ? alone.askedAfterwards() : 1) << base;
    }
    ASSERT_GE(base, 1U);
    FailingDxfWriter reference(database(), m_encoding, base + 1);
    EXPECT_EQ(reactor.dxfOutFields(&reference), FailingDxfWriter::kStatus);
    FailingDxfWriter whole(database(), m_encoding, base + 2);
    EXPECT_EQ(reactor.dxfOutFields(&whole), Mx::eOk);
}

TEST_F(PsReactorTest, ADxfReaderThatFailsGivesItsStatusAndNothingFollowsTheBase) {
    const std::vector<DxfOutTag> written{{100, "PhonomarkPsReactor"}, {330, "F001"}, {330, "F002"}};
    const auto tags = dxfTags(written);
    PhonomarkPsReactor untouched, first;
    FailingDxfReader atBase(database(), m_encoding, tags, 0);
    EXPECT_EQ(untouched.dxfInFields(&atBase), Mx::eFileUnreadable);
    EXPECT_TRUE(untouched.noteId().isNull());
    FailingDxfReader atSecond(database(), m_encoding, tags, 2, Mx::eEndOfStream);
    EXPECT_EQ(first.dxfInFields(&atSecond), Mx::eEndOfStream);
    EXPECT_EQ(first.noteId().handle(), MxDbHandle(0xF001));
}

TEST_F(PsReactorTest, AGroupOfAnotherCodeIsPushedBackAndTheAnswerIsThatOfPushingBack) {
    const std::vector<DxfOutTag> written{{100, "PhonomarkPsReactor"}, {330, "F001"}, {90, "7"}, {330, "F002"}};
    const auto tags = dxfTags(written);
    PhonomarkPsReactor after;
    merix::io::DxfInFiler filer(database(), m_encoding, tags);
    EXPECT_EQ(after.dxfInFields(&filer), Mx::eOk);
    ASSERT_EQ(filer.readItem(), Mx::eOk);
    EXPECT_EQ(filer.itemCode(), 90);
    EXPECT_EQ(filer.itemInt16(), 7);
    FailingDxfReader refusing(database(), m_encoding, tags);
    refusing.setStatus(Mx::eFileDamaged);
    EXPECT_EQ(after.dxfInFields(&refusing), Mx::eFileDamaged);
}

namespace {

class FollowingTest : public PsReactorTest {
protected:
    /// A note attached to a new line from (0, 0) to (10, 5).
    void attach() {
        m_line = addLine();
        m_note = addNote(kObjectNote, {1, 2, 3});
        note(m_note).setAttachObj(m_line);
        ASSERT_TRUE(livePhManager()->addNotifier(&note(m_note), m_line));
    }
    void moveLine(const MxGePoint3d& end) {
        merix::db::Line* line = nullptr;
        ASSERT_EQ(mxdbOpenObject(line, m_line, Mx::kForWrite), Mx::eOk);
        line->assertWriteEnabled();
        line->end = end;
        line->close();
    }
    void recolorLine(std::int16_t color) {
        merix::db::Line* line = nullptr;
        ASSERT_EQ(mxdbOpenObject(line, m_line, Mx::kForWrite), Mx::eOk);
        line->assertWriteEnabled();
        merix::db::traits(*line).color = color;
        line->close();
    }
    /// Tells a reactor of the note that `object` was modified.
    void tell(const MxDbObject* object) {
        PhonomarkPsReactor reactor;
        reactor.setNoteId(m_note);
        reactor.modified(object);
    }
    std::uint32_t graphicsVersion() { return note(m_note).data().graphicsVersion; }

    MxDbObjectId m_line, m_note;
};

} // namespace

TEST_F(FollowingTest, ANoteTakesTheExtentsOfItsMovedObjectOverAndIsDrawnAnew) {
    attach();
    const auto before = graphicsVersion();
    moveLine({20, 30, 0});
    EXPECT_EQ(note(m_note).extents().minPoint(), MxGePoint3d(0, 0, 0));
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(20, 30, 0));
    EXPECT_EQ(note(m_note).position(), MxGePoint3d(1, 2, 3));
    EXPECT_EQ(note(m_note).getPhonomarkType(), kObjectNote);
    EXPECT_GT(graphicsVersion(), before);
}

TEST_F(FollowingTest, UndoAndRedoMoveTheNoteWithItsObject) {
    attach();
    {
        const DocumentLock lock(&document(), L"Move", 0);
        moveLine({20, 30, 0});
    }
    ASSERT_TRUE(merix::ap::DocManager::instance().undo(document()));
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(10, 5, 0));
    ASSERT_TRUE(merix::ap::DocManager::instance().redo(document()));
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(20, 30, 0));
}

TEST_F(FollowingTest, AChangeThatLeavesTheObjectInPlaceCopiesNoRecording) {
    attach();
    const auto before = graphicsVersion();
    database().imp().undo.clear();
    recolorLine(1);
    EXPECT_GT(graphicsVersion(), before);
    ASSERT_EQ(database().imp().undo.undoUnits().size(), 1U);
    EXPECT_EQ(database().imp().undo.undoUnits()[0].steps[0].id, m_line);
}

TEST_F(FollowingTest, NoticesOfWhatIsNoEntityChangeNothing) {
    attach();
    const auto before = graphicsVersion();
    MxDbDictionary* named = nullptr;
    ASSERT_EQ(database().getNamedObjectsDictionary(named, Mx::kForRead), Mx::eOk);
    note(m_note).setAttachObj(named->objectId());
    tell(named);
    named->close();
    tell(nullptr);
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(10, 5, 0));
    EXPECT_EQ(graphicsVersion(), before);
}

TEST_F(FollowingTest, ANoteOfAnotherObjectIsLeftAlone) {
    attach();
    const MxDbObjectId other = addLine();
    note(m_note).setAttachObj(other);
    const auto before = graphicsVersion();
    moveLine({20, 30, 0});
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(10, 5, 0));
    EXPECT_EQ(graphicsVersion(), before);
    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, m_note, Mx::kForWrite), Mx::eOk) << "it was closed again";
    open->close();
}

TEST_F(FollowingTest, ANoteThatIsOpenElsewhereDoesNotFollow) {
    attach();
    MxDbPhonomark* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, m_note, Mx::kForRead), Mx::eOk);
    moveLine({20, 30, 0});
    reader->close();
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(10, 5, 0));
    moveLine({21, 31, 0});
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(21, 31, 0));
}

TEST_F(FollowingTest, ANoteOnALockedLayerDoesNotFollow) {
    attach();
    merix::db::Line* line = nullptr;
    ASSERT_EQ(mxdbOpenObject(line, m_line, Mx::kForWrite), Mx::eOk)
        << "before its layer, which is the note's, is locked";
    const auto lock = [&](bool locked) {
        MxDbLayerTableRecord* layer = nullptr;
        ASSERT_EQ(mxdbOpenObject(layer, note(m_note).layerId(), Mx::kForWrite), Mx::eOk);
        layer->setIsLocked(locked);
        layer->close();
    };
    lock(true);
    const auto before = graphicsVersion();
    line->assertWriteEnabled();
    line->end = {20, 30, 0};
    line->close();
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(10, 5, 0));
    EXPECT_EQ(graphicsVersion(), before);
    lock(false);
    moveLine({21, 31, 0});
    EXPECT_EQ(note(m_note).extents().maxPoint(), MxGePoint3d(21, 31, 0));
}
