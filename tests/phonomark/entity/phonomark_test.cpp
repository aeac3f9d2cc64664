// SPDX-License-Identifier: MIT
#include "phonomark/entity/phonomark.h"

#include "phonomark/dbutil/run_time_class.h"
#include "tests/phonomark/module_fixture.h"

#include <cstdlib>
#include <cstring>
#include <memory>

using NoteTest = ModuleTest;

TEST_F(NoteTest, AFreshNoteIsAnEmptyPointNoteAtTheOrigin) {
    MxDbPhonomark fresh;
    CStdStr<wchar_t> text;
    EXPECT_EQ(fresh.getPhonomarkType(), 0);
    EXPECT_EQ(fresh.position(), MxGePoint3d());
    EXPECT_TRUE(fresh.extents().isEmpty());
    EXPECT_TRUE(fresh.attachObj().isNull());
    EXPECT_TRUE(fresh.replyTo().isNull());
    EXPECT_EQ(fresh.getAudioData(), nullptr);
    EXPECT_EQ(fresh.getAudioDataSize(), 0u);
    EXPECT_FALSE(fresh.isRecord());
    EXPECT_TRUE(fresh.isRegionShown());
    EXPECT_FALSE(fresh.isErasing());
    EXPECT_FALSE(fresh.isPlaying());
    EXPECT_EQ(fresh.getDwgViewPtr(), nullptr);
    fresh.getDuration(text);
    EXPECT_EQ(text, L"0.0\"");
    fresh.getSpokesman(text);
    EXPECT_EQ(text, L"");
    fresh.getDatatime(text);
    EXPECT_EQ(text, L"");
    tWAVEFORMATEX format;
    format.cbSize = 7;
    fresh.getWaveFormat(format);
    const tWAVEFORMATEX zero;
    EXPECT_EQ(std::memcmp(&format, &zero, 18), 0);
}

TEST_F(NoteTest, WithoutAViewThirtyTwoPixelsAreTenUnits) {
    const MxDbPhonomark fresh;
    EXPECT_EQ(fresh.refUnits(), 10.0);
    EXPECT_EQ(fresh.calcRefUnits(), 10.0);
}

TEST_F(NoteTest, ANewNoteIsSizedByTheView) {
    const TransformView view(0.25);
    EXPECT_DOUBLE_EQ(MxDbPhonomark().refUnits(), 8.0);
}

TEST_F(NoteTest, NoAudioDataIsRefusedAndChangesNothing) {
    MxDbPhonomark fresh;
    EXPECT_FALSE(fresh.setAudioData(nullptr));
    EXPECT_FALSE(fresh.isRecord());
    unsigned char* bytes = soundBytes(4);
    fresh.setAudioData(bytes);
    EXPECT_FALSE(fresh.setAudioData(nullptr));
    EXPECT_EQ(fresh.getAudioData(), bytes);
    EXPECT_TRUE(fresh.isRecord());
}

TEST_F(NoteTest, AudioDataMakesARecordingEvenBeforeItsSizeIsKnown) {
    MxDbPhonomark fresh;
    unsigned char* bytes = soundBytes(4);
    EXPECT_TRUE(fresh.setAudioData(bytes));
    EXPECT_TRUE(fresh.isRecord());
    EXPECT_EQ(fresh.getAudioData(), bytes);
    EXPECT_EQ(fresh.getAudioDataSize(), 0u);
    EXPECT_TRUE(fresh.setAudioData(bytes)) << "the same block again";
    EXPECT_EQ(fresh.getAudioData(), bytes);
}

TEST_F(NoteTest, ABlockHeldBeforeIsLeftToTheCaller) {
    MxDbPhonomark fresh;
    unsigned char* first = soundBytes(4);
    fresh.setAudioData(first);
    fresh.setAudioData(soundBytes(4));
    EXPECT_EQ(first[3], 4);
    std::free(first);
}

TEST_F(NoteTest, DeletingTheAudioDataTwiceFreesItOnceAndKeepsTheSize) {
    MxDbPhonomark fresh;
    fresh.delAudioData();
    EXPECT_EQ(fresh.getAudioData(), nullptr);
    fresh.setAudioData(soundBytes(4));
    fresh.setAudioDataSize(4);
    fresh.delAudioData();
    fresh.delAudioData();
    EXPECT_EQ(fresh.getAudioData(), nullptr);
    EXPECT_EQ(fresh.getAudioDataSize(), 4u);
    EXPECT_TRUE(fresh.isRecord());
}

TEST_F(NoteTest, SharedAudioDataOutlivesTheNote) {
    std::shared_ptr<const void> shared;
    const unsigned char* bytes = nullptr;
    {
        MxDbPhonomark fresh;
        EXPECT_EQ(fresh.shareAudioData(), nullptr);
        fresh.setAudioData(soundBytes(4));
        bytes = fresh.getAudioData();
        shared = fresh.shareAudioData();
        fresh.delAudioData();
    }
    EXPECT_EQ(bytes[3], 4);
}

TEST_F(NoteTest, EighteenBytesOfWaveFormatAreKept) {
    struct {
        tWAVEFORMATEX format;
        unsigned char beyond = 0x55;
    } in, out;
    for (int i = 0; i < 18; ++i)
        reinterpret_cast<unsigned char*>(&in.format)[i] = static_cast<unsigned char>(i + 1);
    MxDbPhonomark fresh;
    fresh.setWaveFormat(&in.format);
    fresh.getWaveFormat(out.format);
    EXPECT_EQ(std::memcmp(&in.format, &out.format, 18), 0);
    EXPECT_EQ(out.beyond, 0x55);
}

TEST_F(NoteTest, TextsAreCopiedOutWhateverTheCallersStringHolds) {
    MxDbPhonomark fresh;
    fresh.setSpokesman(L"Anna");
    fresh.setDatatime(L"2026/3/7 9:5:0");
    fresh.setDuration(L"2.4\"");
    CStdStr<wchar_t> text = std::wstring(L"Anna");
    fresh.getSpokesman(text);
    EXPECT_EQ(text, L"Anna");
    fresh.getDatatime(text);
    EXPECT_EQ(text, L"2026/3/7 9:5:0");
    fresh.getDuration(text);
    EXPECT_EQ(text, L"2.4\"");
    fresh.setSpokesman(MxString());
    fresh.getSpokesman(text);
    EXPECT_EQ(text, L"") << "a text that is not there empties the caller's";
}

TEST_F(NoteTest, TheTypeKeepsSixteenBits) {
    MxDbPhonomark fresh;
    fresh.setPhonomarkType(0x10003);
    EXPECT_EQ(fresh.getPhonomarkType(), 3);
    fresh.setPhonomarkType(-2);
    EXPECT_EQ(fresh.getPhonomarkType(), -2);
}

TEST_F(NoteTest, AttachingTakesTheObjectsExtentsOver) {
    MxDbPhonomark fresh;
    const MxDbObjectId line = addLine();
    fresh.setAttachObj(line);
    EXPECT_EQ(fresh.attachObj(), line);
    EXPECT_EQ(fresh.extents().minPoint(), MxGePoint3d(0, 0, 0));
    EXPECT_EQ(fresh.extents().maxPoint(), MxGePoint3d(10, 5, 0));
}

TEST_F(NoteTest, AttachingToWhatCannotBeOpenedKeepsTheExtents) {
    MxDbPhonomark fresh;
    fresh.setExtents(MxDbExtents({1, 2, 3}, {4, 5, 6}));
    MxDbObjectId id;
    ASSERT_EQ(database().getMxDbObjectId(id, true, MxDbHandle(0xABCDEF), 0), Mx::eOk);
    fresh.setAttachObj(id);
    EXPECT_EQ(fresh.attachObj(), id);
    EXPECT_EQ(fresh.extents().maxPoint(), MxGePoint3d(4, 5, 6));
    fresh.setAttachObj({});
    EXPECT_TRUE(fresh.attachObj().isNull());
    EXPECT_EQ(fresh.extents().maxPoint(), MxGePoint3d(4, 5, 6));
}

TEST_F(NoteTest, SettingTheRecordMarkHidesTheRegion) {
    const MxDbObjectId id = addNote();
    EXPECT_TRUE(note(id).isRegionShown());
    note(id).setRecord(true);
    EXPECT_TRUE(note(id).isRecord());
    EXPECT_FALSE(note(id).isRegionShown());
}

TEST_F(NoteTest, TheDraggingMarkIsOneForAllNotes) {
    EXPECT_FALSE(MxDbPhonomark::IsDraging());
    MxDbPhonomark::SetIsDraging(true);
    EXPECT_TRUE(MxDbPhonomark::IsDraging());
    MxDbPhonomark::SetIsDraging(false);
}

TEST_F(NoteTest, TheClassIsRegisteredAsFiled) {
    const MxRxClass* aClass = MxDbPhonomark::desc();
    ASSERT_TRUE(aClass);
    EXPECT_STREQ(aClass->name(), L"MxDbPhonomark");
    EXPECT_STREQ(aClass->dxfName(), L"PHONOMARK");
    EXPECT_EQ(aClass->dwgVersion(), 33);
    EXPECT_EQ(aClass->maintenanceVersion(), 55);
    EXPECT_EQ(aClass->proxyFlags(), 0);
    EXPECT_EQ(std::wstring(aClass->appName()).rfind(L"MrxPhonomark|Product Desc:Phonomark Object|Company:", 0), 0u);
    EXPECT_NE(std::wstring(aClass->appName()).find(L"|WEB Address:"), std::wstring::npos);
    EXPECT_EQ(aClass->myParent(), MxDbEntity::desc());
    const std::unique_ptr<MxRxObject> made(aClass->create());
    ASSERT_TRUE(made);
    EXPECT_EQ(made->isA(), aClass);
}

TEST_F(NoteTest, RegisteringTwiceGivesTheSameClass) {
    MxRxClass* before = MxDbPhonomark::desc();
    EXPECT_EQ(MxDbPhonomark::rxInit(), before);
    EXPECT_EQ(MxDbPhonomark::rxInit(nullptr), before);
    EXPECT_EQ(mxrxFindMxRxClass(L"MxDbPhonomark"), before);
}

TEST_F(NoteTest, AnotherClassOfTheSameNameStopsTheHost) {
    MxRxClass* before = MxDbPhonomark::gpDesc;
    MxDbPhonomark::gpDesc = MxDbEntity::desc();
    EXPECT_DEATH(MxDbPhonomark::rxInit(), "Class mismatch");
    MxDbPhonomark::gpDesc = nullptr;
    EXPECT_DEATH(MxDbPhonomark::rxInit(), "Class mismatch");
    MxDbPhonomark::gpDesc = before;
}

TEST_F(NoteTest, NotificationsAreHandedOnWhileTheNoteIsOpen) {
    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, addNote(), Mx::kForRead), Mx::eOk);
    open->openedForModify(open);
    open->cancelled(open);
    open->objectClosed(open->objectId());
    open->copied(open, nullptr);
    open->erased(open, false);
    open->modified(open);
    open->modifiedGraphics(open);
    open->modifiedXData(open);
    open->subObjModified(open, nullptr);
    open->modifyUndone(open);
    open->reappended(open);
    open->unappended(open);
    open->goodbye(open);
    EXPECT_EQ(open->close(), Mx::eOk);
}

TEST_F(NoteTest, ANotificationToAClosedNoteStopsTheHost) {
    MxDbPhonomark& closed = note(addNote());
    EXPECT_DEATH(closed.openedForModify(&closed), "");
    EXPECT_DEATH(closed.cancelled(&closed), "");
    EXPECT_DEATH(closed.objectClosed(closed.objectId()), "");
    EXPECT_DEATH(closed.goodbye(&closed), "");
    EXPECT_DEATH(closed.copied(&closed, nullptr), "");
    EXPECT_DEATH(closed.erased(&closed, true), "");
    EXPECT_DEATH(closed.modified(&closed), "");
    EXPECT_DEATH(closed.modifiedGraphics(&closed), "");
    EXPECT_DEATH(closed.modifiedXData(&closed), "");
    EXPECT_DEATH(closed.subObjModified(&closed, nullptr), "");
    EXPECT_DEATH(closed.modifyUndone(&closed), "");
    EXPECT_DEATH(closed.reappended(&closed), "");
    EXPECT_DEATH(closed.unappended(&closed), "");
}

TEST_F(NoteTest, CancelTakesBackWhatWasChangedInTheOpen) {
    const MxDbObjectId id = addNote(kPointNote, {1, 2, 3});
    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, id, Mx::kForWrite), Mx::eOk);
    open->assertWriteEnabled();
    open->setPosition({7, 8, 9});
    EXPECT_EQ(open->cancel(), Mx::eOk);
    EXPECT_EQ(note(id).position(), MxGePoint3d(1, 2, 3));
}
