// SPDX-License-Identifier: MIT
// A take belongs to the note that it was begun for.
#include "tests/e2e/real_notes.h"

using namespace merix::test;

namespace {

const Note kEmpty{"A1", 300, 300}, kTouching{"A2", 332, 300}, kRecorded{"B1", 600, 300, 2};
constexpr const char* kGoOn = "move off the note and back";

/// A take on the empty note, and the cursor straight on the recorded one.
struct TakeAndAnother : RealNotes {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({kEmpty, kRecorded}, {}, {other}));
        m_before = note("B1");
        ASSERT_TRUE(isSpoken(m_before));
        ASSERT_TRUE(record(kEmpty));
        ASSERT_TRUE(hover(kRecorded));
    }
    void SetUpOther() { QFile::copy(MERIX_SOURCE_DIR "/samples/plan.dxf", other); }
    TakeAndAnother() { SetUpOther(); }
    void expectBoth() {
        EXPECT_TRUE(isSpoken(note("A1"))) << told(note("A1"));
        EXPECT_TRUE(note("B1") == m_before) << told(note("B1"));
    }
    const QString other = folder.filePath("other.dxf");
    Record m_before;
};

TEST_F(TakeAndAnother, SwitchingTheDrawingLeavesTheOtherNoteAsItWas) {
    clickAt(witness.visible("tab", "other.dxf").place.center() - QPoint(12, 0));
    ASSERT_TRUE(comesTrue([&] { return !windowNamed("other.dxf").isEmpty(); }));
    clickAt(witness.visible("tab", "notes.dxf").place.center() - QPoint(12, 0));
    ASSERT_TRUE(comesTrue([&] { return !windowNamed("notes.dxf").isEmpty(); }));
    ASSERT_TRUE(save());
    expectBoth();
}

TEST_F(TakeAndAnother, ClosingTheDrawingLeavesTheOtherNoteAsItWas) {
    hand({"key", "ctrl+w"});
    ASSERT_TRUE(comesTrue([&] { return witness.sees("QMessageBox"); }));
    hand({"key", "Return"});
    ASSERT_TRUE(comesTrue([&] { return !windowNamed("other.dxf").isEmpty(); }));
    expectBoth();
}

TEST_F(TakeAndAnother, PlayingTheOtherNoteLeavesItAsItWas) {
    press();
    EXPECT_TRUE(comesTrue([&] { return isPlaying(); }));
    release();
    EXPECT_TRUE(comesTrue([&] { return !isPlaying(); }));
    ASSERT_TRUE(save());
    expectBoth();
}

struct Takes : RealNotes {};

TEST_F(Takes, ASlipIsToldOnceAndEmptiesNoOtherNote) {
    ASSERT_NO_FATAL_FAILURE(open({kEmpty, kRecorded}));
    const Record before = note("B1");
    ASSERT_TRUE(slip(kEmpty));
    ASSERT_TRUE(hover(kRecorded));
    press();
    EXPECT_TRUE(comesTrue([&] { return isPlaying(); }));
    release();
    EXPECT_TRUE(comesTrue([&] { return !isPlaying(); }));
    ASSERT_TRUE(save());
    EXPECT_TRUE(note("B1") == before) << told(note("B1"));
    EXPECT_TRUE(isSilent(note("A1"))) << told(note("A1"));
    EXPECT_EQ(witness.timesSaid(kTooShort), 1) << qPrintable(witness.said());
}

TEST_F(Takes, APressAfterASlipSaysHowToGoOn) {
    ASSERT_NO_FATAL_FAILURE(open({kEmpty}));
    ASSERT_TRUE(slip(kEmpty));
    press();
    EXPECT_TRUE(comesTrue([&] { return witness.timesSaid(kGoOn) == 1; })) << qPrintable(witness.said());
    release();
    EXPECT_TRUE(answers());
    EXPECT_EQ(witness.timesSaid(kGoOn), 1);
    EXPECT_EQ(witness.timesSaid(kTooShort), 1);
    leaveNotes();
    ASSERT_TRUE(record(kEmpty)) << "what it says is not so";
    ASSERT_TRUE(save());
    EXPECT_TRUE(isSpoken(note("A1")));
}

TEST_F(Takes, APressAfterTheDeviceFailedSaysHowToGoOn) {
    const QString devices = environment.value("PHONOMARK_PCM_LIST");
    ASSERT_NO_FATAL_FAILURE(open({kEmpty}));
    ASSERT_TRUE(QFile::rename(devices, devices + ".away"));
    ASSERT_TRUE(hover(kEmpty));
    hand({"click", "1"});
    ASSERT_TRUE(comesTrue([&] { return witness.timesSaid("sound device is not available") == 1; }));
    ASSERT_TRUE(QFile::rename(devices + ".away", devices));
    press();
    EXPECT_TRUE(comesTrue([&] { return witness.timesSaid(kGoOn) == 1; })) << qPrintable(witness.said());
    release();
    EXPECT_TRUE(answers());
    EXPECT_EQ(witness.timesSaid(kGoOn), 1);
    leaveNotes();
    ASSERT_TRUE(record(kEmpty)) << "what it says is not so";
    ASSERT_TRUE(save());
    EXPECT_TRUE(isSpoken(note("A1")));
}

TEST_F(Takes, ANoteReachedWithoutLeavingNotesDoesNotGetTheSoundOfTheOneBefore) {
    ASSERT_NO_FATAL_FAILURE(open({kEmpty, kTouching}));
    ASSERT_TRUE(record(kEmpty));
    for (int step = 0; step <= 32; step += 4)
        pointAt(at(kEmpty.x + 25 + step, kEmpty.y + 25));
    ASSERT_TRUE(comesTrue([&] { return hasTagOver(kTouching); }));
    press();
    EXPECT_TRUE(comesTrue([&] { return witness.timesSaid(kGoOn) == 1; })) << qPrintable(witness.said());
    release();
    ASSERT_TRUE(save());
    EXPECT_TRUE(isSpoken(note("A1")));
    EXPECT_TRUE(isSilent(note("A2"))) << told(note("A2"));
}

TEST_F(Takes, OtherButtonsDoNotEndATake) {
    ASSERT_NO_FATAL_FAILURE(open({kEmpty}));
    ASSERT_TRUE(hover(kEmpty));
    ASSERT_TRUE(holdAndSpeak(1200));
    for (const char* button : {"3", "2"})
        hand({"click", button});
    QThread::msleep(2000); // goes on speaking
    EXPECT_TRUE(isListening());
    release();
    EXPECT_TRUE(fallsSilent());
    ASSERT_TRUE(save());
    EXPECT_TRUE(isSpoken(note("A1")));
    EXPECT_GT(number(note("A1"), 93), 2.5 * kBytesPerSecond) << "the take ended with another button";
}

TEST_F(Takes, ARecordingIsOneStepOfUndo) {
    ASSERT_NO_FATAL_FAILURE(open({kEmpty}));
    ASSERT_TRUE(record(kEmpty));
    leaveNotes();
    ASSERT_TRUE(save());
    const Record spoken = note("A1");
    ASSERT_TRUE(isSpoken(spoken));

    ASSERT_TRUE(command({"UNDO", "1"}));
    EXPECT_EQ(witness.timesSaid("Record note"), 1) << qPrintable(witness.said());
    ASSERT_TRUE(save());
    EXPECT_TRUE(isSilent(note("A1"))) << told(note("A1"));
    hand({"key", "ctrl+y"});
    EXPECT_TRUE(comesTrue([&] { return save() && note("A1") == spoken; }));
    hand({"key", "ctrl+z"});
    EXPECT_TRUE(comesTrue([&] { return save() && isSilent(note("A1")); }));
}

TEST_F(Takes, ATakeAndAnOlderMoveAreTakenBackAndDoneAgainInTheirOrder) {
    ASSERT_NO_FATAL_FAILURE(open({kEmpty}));
    ASSERT_TRUE(command({"MOVE", "All", "", "0,0", "100,0"}));
    const Note moved{"A1", kEmpty.x + 100, kEmpty.y};
    ASSERT_TRUE(record(moved));
    leaveNotes();
    ASSERT_TRUE(save());
    const Record spoken = note("A1");
    ASSERT_TRUE(isSpoken(spoken));
    EXPECT_EQ(number(spoken, 10), moved.x);

    ASSERT_TRUE(command({"UNDO", "1"}) && save());
    EXPECT_TRUE(isSilent(note("A1"))) << told(note("A1"));
    EXPECT_EQ(number(note("A1"), 10), moved.x);
    ASSERT_TRUE(command({"UNDO", "1"}) && save());
    EXPECT_TRUE(isSilent(note("A1"))) << told(note("A1"));
    EXPECT_EQ(number(note("A1"), 10), kEmpty.x);
    ASSERT_TRUE(command({"REDO", "1"}) && save());
    EXPECT_TRUE(isSilent(note("A1"))) << told(note("A1"));
    EXPECT_EQ(number(note("A1"), 10), moved.x);
    ASSERT_TRUE(command({"REDO", "1"}) && save());
    EXPECT_TRUE(note("A1") == spoken) << told(note("A1"));
}

TEST_F(Takes, TheLongestTakeIsToldAndKept) {
    ASSERT_NO_FATAL_FAILURE(open({kEmpty}));
    ASSERT_TRUE(hover(kEmpty));
    ASSERT_TRUE(holdAndSpeak(1));
    ASSERT_TRUE(comesTrue([&] { return !isListening(); }, 60'000)) << "the take goes on and on";
    EXPECT_TRUE(comesTrue([&] { return witness.timesSaid("30 s") == 1; })) << qPrintable(witness.said());
    release();
    ASSERT_TRUE(save());
    EXPECT_TRUE(isSpoken(note("A1")));
    EXPECT_GE(value(note("A1"), 3).chopped(1).toDouble(), 30.0);
    EXPECT_GT(number(note("A1"), 93), 20.0 * kBytesPerSecond); // on a busy machine the microphone loses some
    EXPECT_EQ(witness.timesSaid("30 s"), 1);
}

} // namespace
