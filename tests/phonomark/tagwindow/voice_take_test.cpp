// SPDX-License-Identifier: MIT
// A recording belongs to the note that it was begun for, whatever comes between.
#include "phonomark/tagwindow/voice_take.h"

#include "host/rx/string_table.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"
#include "merix/rx/string_table.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

using merix::ap::DocManager;
using ::testing::HasSubstr;

namespace {

class VoiceTakeTest : public SoundTest {
protected:
    /// Everything that is filed of a note.
    std::string filed(MxDbObjectId id) { return merix::db::undoImage(note(id)); }
    void undo() { ASSERT_TRUE(DocManager::instance().undo(document())); }
    void redo() { ASSERT_TRUE(DocManager::instance().redo(document())); }
    void move(MxDbObjectId id) {
        MxDbPhonomark* moved = nullptr;
        ASSERT_EQ(mxdbOpenObject(moved, id, Mx::kForWrite), Mx::eOk);
        moved->assertWriteEnabled();
        moved->setPosition({7, 7, 0});
        moved->close();
    }
    void expectTake(MxDbObjectId id, const wchar_t* text) {
        EXPECT_TRUE(note(id).isRecord());
        EXPECT_EQ(duration(id), text);
        ASSERT_EQ(sound(id).size(), 64u);
        EXPECT_EQ(sound(id)[0], 1);
        EXPECT_EQ(sound(id)[30], 16);
    }
    void expectEmpty(MxDbObjectId id) {
        EXPECT_FALSE(note(id).isRecord());
        EXPECT_EQ(duration(id), L"0.0\"");
        EXPECT_EQ(note(id).getAudioData(), nullptr);
        EXPECT_EQ(note(id).getAudioDataSize(), 0u);
    }
};

} // namespace

TEST_F(VoiceTakeTest, ALaterReleaseOverAnotherNoteLeavesThatAlone) {
    const MxDbObjectId a = addNote(), b = addRecorded(L"5.5\"");
    CPhonomarkTagUIDlg& window = openWindow(a);
    pressFor(window, 2000);
    const std::string before = filed(b);
    openWindow(b);
    press(window); // plays b: its sound is in the window's buffer now
    letGo(window);
    EXPECT_EQ(filed(b), before);
    expectTake(a, L"2.0\"");
    EXPECT_TRUE(window.IsPlaying());
}

TEST_F(VoiceTakeTest, ASlipDoesNotEmptyTheNextNoteAndIsSaidOnce) {
    const MxDbObjectId a = addNote(), b = addRecorded(L"5.5\"");
    CPhonomarkTagUIDlg& window = openWindow(a);
    pressFor(window, 600);
    EXPECT_THAT(printed(), HasSubstr("shorter than one second"));
    const std::string before = filed(b);
    openWindow(b);
    press(window);
    letGo(window);
    EXPECT_EQ(filed(b), before);
    EXPECT_EQ(printed(), "");
    expectEmpty(a);
}

TEST_F(VoiceTakeTest, SwitchingOrClosingTheDrawingOverAnotherNoteLeavesThatAlone) {
    const MxDbObjectId a = addNote(), b = addRecorded(L"5.5\"");
    CPhonomarkTagUIDlg& window = openWindow(a);
    pressFor(window, 2000);
    const std::string before = filed(b);
    openWindow(b);
    DocManager::instance().create();
    EXPECT_EQ(filed(b), before);
    expectTake(a, L"2.0\"");
    DocManager::instance().close(*DocManager::instance().current());
    ASSERT_TRUE(g_taguidlg == nullptr || g_taguidlg == &window);
    EXPECT_EQ(filed(b), before);
}

TEST_F(VoiceTakeTest, TheTakeEndsWhenTheWindowGoesToAnotherNote) {
    const MxDbObjectId a = addNote(), b = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    openWindow(b);
    EXPECT_EQ(window.recordTimer(), -1);
    expectTake(a, L"2.0\"");
    EXPECT_FALSE(window.GetRecordStatus()) << "of the other note";
    EXPECT_EQ(shown(window), resource("IDB_PNG_TAG_RECD"));
    letGo(window);
    expectEmpty(b);
}

TEST_F(VoiceTakeTest, TheSecondOfTwoNotesInOneWindowStaysEmptyAndTheUserIsToldHowToGoOn) {
    const MxDbObjectId a = addNote(), b = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    pressFor(window, 2000);
    openWindow(b);
    printed();
    press(window);
    tick(window, window.recordTimer());
    EXPECT_THAT(printed(), HasSubstr("move off the note and back"));
    expectEmpty(b);
    letGo(window);
    expectEmpty(b);
    expectTake(a, L"2.0\"");
    EXPECT_FALSE(window.GetRecordStatus());
    EXPECT_EQ(printed(), "");
}

TEST_F(VoiceTakeTest, ASecondPressOverTheSameNoteSaysThatNothingIsRecorded) {
    const MxDbObjectId a = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    pressFor(window, 600);
    printed();
    press(window);
    EXPECT_THAT(printed(), HasSubstr("move off the note and back"));
    tick(window, window.recordTimer());
    letGo(window);
    EXPECT_EQ(printed(), "") << "what was too short has been said";
    expectEmpty(a);
}

TEST_F(VoiceTakeTest, ATakeIsOneStepOfUndo) {
    const MxDbObjectId a = addNote();
    const std::string before = filed(a);
    const auto steps = undoSteps();
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    tick(window, window.recordTimer());
    letGo(window);
    release();
    ASSERT_EQ(undoSteps().size(), steps.size() + 1);
    EXPECT_EQ(undoSteps().front(), "Record note");
    const std::string after = filed(a);
    undo();
    expectEmpty(a);
    EXPECT_EQ(filed(a), before);
    EXPECT_FALSE(window.GetRecordStatus()) << "a press would play what is not there";
    EXPECT_EQ(shown(window), resource("IDB_PNG_TAG_RECD"));
    redo();
    EXPECT_EQ(filed(a), after);
    expectTake(a, L"2.0\"");
    EXPECT_TRUE(window.GetRecordStatus());
}

TEST_F(VoiceTakeTest, ALaterReleaseIsNoStepAndDoesNotTakeAnUndoBack) {
    const MxDbObjectId a = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    pressFor(window, 2000);
    const std::size_t steps = undoSteps().size();
    window.OnLButtonUp();
    EXPECT_EQ(undoSteps().size(), steps);
    undo();
    window.OnLButtonUp();
    expectEmpty(a);
    redo();
    expectTake(a, L"2.0\"");
    undo();
    press(window); // captures nothing
    tick(window, window.recordTimer());
    letGo(window);
    expectEmpty(a);
    redo();
    expectTake(a, L"2.0\"");
}

TEST_F(VoiceTakeTest, UndoingAnOlderMoveComesAfterTheTake) {
    const MxDbObjectId a = addNote();
    move(a);
    pressFor(openWindow(a), 2000);
    undo();
    expectEmpty(a);
    EXPECT_EQ(note(a).position().x, 7);
    undo();
    EXPECT_EQ(note(a).position().x, 0);
    redo();
    redo();
    EXPECT_EQ(note(a).position().x, 7);
    expectTake(a, L"2.0\"");
}

TEST_F(VoiceTakeTest, AnUndoInMidTakeLeavesTheTakeAStepThatGoesBackToWhatWasThere) {
    const MxDbObjectId a = addNote();
    move(a);
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    tick(window, window.recordTimer());
    undo(); // of the move
    letGo(window);
    release();
    expectTake(a, L"2.0\"");
    EXPECT_EQ(note(a).position().x, 0);
    undo();
    expectEmpty(a);
    EXPECT_EQ(note(a).position().x, 0);
}

TEST_F(VoiceTakeTest, ARecordingThatRedoBringsBackInMidTakeIsNotLost) {
    const MxDbObjectId a = addNote();
    pressFor(openWindow(a), 2000);
    removeTagWindow();
    undo();
    const std::string first = [&] {
        redo();
        std::string image = filed(a);
        undo();
        return image;
    }();
    CPhonomarkTagUIDlg& slip = openWindow(a);
    hold(slip, 600);
    tick(slip, slip.recordTimer());
    redo();
    tick(slip, slip.recordTimer());
    letGo(slip);
    release();
    EXPECT_EQ(filed(a), first) << "a take that is too short empties nothing";
    phonomark::workerCensus().wait();
    removeTagWindow();
    undo();
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 3000);
    redo();
    tick(window, window.recordTimer());
    letGo(window);
    release();
    expectTake(a, L"3.0\"");
    undo();
    EXPECT_EQ(filed(a), first) << "to be had by undo";
}

TEST_F(VoiceTakeTest, AWindowWhoseDeviceFailedDoesNotEmptyTheNoteLater) {
    const MxDbObjectId a = addNote(), b = addRecorded(L"5.5\"");
    pressFor(openWindow(a), 2000);
    removeTagWindow();
    undo();
    alsa.setStatus("snd_pcm_open", -19);
    CPhonomarkTagUIDlg& window = openWindow(a);
    press(window);
    letGo(window);
    redo();
    openWindow(b);
    window.OnRecStop();
    expectTake(a, L"2.0\"");
}

TEST_F(VoiceTakeTest, LeavingTheWindowLeavesASavedDrawingUnchanged) {
    const MxDbObjectId a = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    pressFor(window, 2000);
    ASSERT_TRUE(DocManager::instance().saveAs(document(), folder.filePath(QStringLiteral("note.dxf"))).ok);
    const quint64 changes = document().changes();
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_FALSE(document().isChanged());
    EXPECT_EQ(document().changes(), changes);
    removeTagWindow();
    CPhonomarkTagUIDlg& second = openWindow(addNote());
    pressFor(second, 600);
    ASSERT_TRUE(DocManager::instance().save(document()).ok);
    QCoreApplication::sendEvent(&second, &leave);
    EXPECT_FALSE(document().isChanged());
}

TEST_F(VoiceTakeTest, ASaveInMidTakeHoldsTheFormat) {
    const MxDbObjectId a = addNote();
    tWAVEFORMATEX format;
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    ASSERT_TRUE(DocManager::instance().saveAs(document(), folder.filePath(QStringLiteral("note.dxf"))).ok);
    note(a).getWaveFormat(format);
    EXPECT_EQ(format.wFormatTag, 1);
    EXPECT_EQ(format.nSamplesPerSec, 40000u);
    EXPECT_EQ(format.wBitsPerSample, 8);
    letGo(window);
}

TEST_F(VoiceTakeTest, UndoingTheRecordingThatPlaysStopsIt) {
    const MxDbObjectId a = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    pressFor(window, 2000);
    press(window);
    ASSERT_TRUE(window.IsPlaying());
    undo();
    EXPECT_FALSE(window.IsPlaying());
    EXPECT_FALSE(window.GetRecordStatus());
}

TEST_F(VoiceTakeTest, ANoteOfADrawingThatHasGoneIsNotHeldByATakeEither) {
    const MxDbObjectId a = addNote();
    alsa.setStatus("snd_pcm_open", -19);
    CPhonomarkTagUIDlg& window = openWindow(a);
    press(window);
    const HeldNote held(&note(a));
    DocManager::instance().create();
    DocManager::instance().close(document());
    EXPECT_EQ(held.present(), nullptr);
    EXPECT_EQ(held.id(), MxDbObjectId());
    window.OnRecStop();
}

TEST_F(VoiceTakeTest, ErasingTheNoteEndsTheTakeAndUndoBringsBothBack) {
    const MxDbObjectId a = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    livePhManager()->ErasePhonomark(a, nullptr);
    EXPECT_EQ(window.recordTimer(), -1);
    EXPECT_FALSE(window.isVisible());
    release();
    phonomark::workerCensus().wait();
    undo();
    EXPECT_FALSE(note(a).isErased());
    expectTake(a, L"2.0\"");
    EXPECT_TRUE(document().isChanged());
}

TEST_F(VoiceTakeTest, UndoingTheInsertionEndsTheTakeAndRedoBringsBothBack) {
    run("PHONOMARK", {"3,3"});
    const MxDbObjectId a = listed().at(0);
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    undo();
    EXPECT_TRUE(note(a).isErased());
    EXPECT_FALSE(window.isVisible());
    letGo(window);
    release();
    phonomark::workerCensus().wait();
    redo();
    EXPECT_FALSE(note(a).isErased());
    expectTake(a, L"2.0\"");
}

TEST_F(VoiceTakeTest, ASaveInMidTakeHoldsWhatWasSaidSoFarAndTheTakeGoesOn) {
    const MxDbObjectId a = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    tick(window, window.recordTimer());
    const QString path = folder.filePath(QStringLiteral("note.dxf"));
    ASSERT_TRUE(DocManager::instance().saveAs(document(), path).ok);
    EXPECT_NE(window.recordTimer(), -1) << "the take goes on";
    EXPECT_FALSE(window.GetRecordStatus());
    merix::ap::Document* copy = nullptr;
    ASSERT_TRUE(DocManager::instance().openCopy(path, {}, QStringLiteral("copy"), &copy).ok);
    const MxDbObjectId there = [&] {
        std::vector<MxDbObjectId> ids;
        livePhManager()->GetAllObjects(ids, copy);
        return ids.at(0);
    }();
    expectTake(there, L"2.0\"");
}

TEST_F(VoiceTakeTest, ASaveInMidTakeIsNoPartOfTheStep) {
    const MxDbObjectId a = addNote();
    const std::string before = filed(a);
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    ASSERT_TRUE(DocManager::instance().saveAs(document(), folder.filePath(QStringLiteral("note.merix"))).ok);
    EXPECT_EQ(sound(a).size(), 64u);
    const std::size_t steps = undoSteps().size();
    letGo(window);
    release();
    EXPECT_EQ(undoSteps().size(), steps + 1);
    undo();
    EXPECT_EQ(filed(a), before);
    expectEmpty(a);
}

TEST_F(VoiceTakeTest, ASaveWithinTheFirstSecondHoldsTheNoteEmpty) {
    const MxDbObjectId a = addNote();
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 1000);
    ASSERT_TRUE(DocManager::instance().saveAs(document(), folder.filePath(QStringLiteral("note.dxf"))).ok);
    EXPECT_FALSE(note(a).isRecord());
    EXPECT_EQ(note(a).getAudioData(), nullptr);
    letGo(window);
}

TEST_F(VoiceTakeTest, ASaveOfAnotherDrawingDoesNotTouchTheTake) {
    const MxDbObjectId a = addNote();
    merix::ap::Document& own = document();
    merix::ap::Document& other = *DocManager::instance().create();
    DocManager::instance().activate(&own);
    CPhonomarkTagUIDlg& window = openWindow(a);
    hold(window, 2000);
    ASSERT_TRUE(DocManager::instance().saveAs(other, folder.filePath(QStringLiteral("other.dxf"))).ok);
    EXPECT_EQ(note(a).getAudioData(), nullptr);
    letGo(window);
    EXPECT_EQ(sound(a).size(), 64u);
}

TEST_F(VoiceTakeTest, ACommandThatIsCancelledLeavesTheTakeAlone) {
    const MxDbObjectId a = addNote();
    auto& steps = database().imp().undo;
    steps.begin(L"LINE");
    addLine();
    pressFor(openWindow(a), 2000);
    steps.abandon();
    expectTake(a, L"2.0\"");
    EXPECT_EQ(undoSteps().front(), "Record note");
}

TEST_F(VoiceTakeTest, TheSpeakerIsRememberedForAllModules) {
    const MxDbObjectId a = addNote();
    note(a).setSpokesman(L"Änne");
    mxutUpdateStringTable(L"Bert");
    pressFor(openWindow(a), 2000);
    const auto& known = merix::rx::stringTable();
    ASSERT_GE(known.size(), 2u);
    EXPECT_EQ(known[0], L"Änne");
    EXPECT_EQ(known[1], L"Bert");
}

TEST_F(VoiceTakeTest, EscStopsANoteThatPlays) {
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"5.5\"", 64'000));
    std::latch writing{1}, go{1};
    std::atomic<int> writes = 0;
    alsa.write = [&](const std::int16_t*, unsigned long frames) {
        if (++writes == 1) {
            writing.count_down();
            go.wait();
        }
        return static_cast<long>(frames);
    };
    press(window);
    writing.wait();
    tagMSG escape{&window, kWindowKeyDown, kKeyEscape, 0};
    EXPECT_TRUE(window.PreTranslateMessage(&escape));
    EXPECT_FALSE(window.IsPlaying());
    EXPECT_EQ(window.playTimer(), -1);
    EXPECT_FALSE(window.isVisible());
    go.count_down();
    phonomark::workerCensus().wait();
    EXPECT_EQ(writes, 1) << "of a thousand";
    EXPECT_FALSE(window.PreTranslateMessage(&escape)) << "nothing plays";
}

TEST_F(VoiceTakeTest, ErasingANoteThatPlaysStopsIt) {
    const MxDbObjectId a = addRecorded(L"5.5\"", 64'000);
    CPhonomarkTagUIDlg& window = openWindow(a);
    press(window);
    livePhManager()->ErasePhonomark(a, nullptr);
    EXPECT_FALSE(window.IsPlaying());
    EXPECT_FALSE(window.isVisible());
    const MxDbObjectId b = addRecorded(L"5.5\"", 64'000), c = addRecorded(L"5.5\"");
    openWindow(b);
    press(window);
    livePhManager()->ErasePhonomark(c, nullptr);
    EXPECT_TRUE(window.IsPlaying()) << "another one went";
}
