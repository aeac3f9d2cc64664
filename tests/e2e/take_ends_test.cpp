// SPDX-License-Identifier: MIT
// Whatever ends a take ends it as a release does: the microphone is closed, and what was said is in its note, in the
// file that is saved meanwhile, and in the recovery file of a program that has to end.
#include "tests/e2e/real_notes.h"

#include <QDir>

#include <csignal>

using namespace merix::test;

namespace {

const Note kEmpty{"A1", 300, 300}, kRecorded{"B1", 600, 300, 20};

/// The button is held on the empty note and something was said.
struct InMidTake : RealNotes {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({kEmpty}));
        begin(kEmpty);
    }
    void begin(const Note& note) {
        ASSERT_TRUE(hover(note));
        ASSERT_TRUE(holdAndSpeak());
    }
    void TearDown() override {
        release();
        RealNotes::TearDown();
    }
    /// The button is still held: the microphone is closed all the same.
    void endsAsByARelease() {
        EXPECT_TRUE(fallsSilent()) << "the microphone listens on";
        release();
    }
    void isKept() {
        ASSERT_TRUE(save());
        EXPECT_TRUE(isSpoken(note("A1"))) << told(note("A1"));
    }
    void closeDialog(const char* kind) {
        hand({"key", "Escape"});
        EXPECT_TRUE(comesTrue([&] { return !witness.sees(kind); }));
    }
    /// The question whether to save the changes is answered by Save.
    void answerSave() {
        ASSERT_TRUE(comesTrue([&] { return witness.sees("QMessageBox") || !isRunning(); }));
        hand({"key", "Return"});
    }
    bool endsWell() {
        return merix->process().waitForFinished(30'000) && merix->process().exitStatus() == QProcess::NormalExit &&
               merix->process().exitCode() == 0;
    }
    bool isClosed() {
        return comesTrue([&] { return !witness.sees("MainWindow", "notes.dxf"); });
    }
};

TEST_F(InMidTake, AnOpenDialogEndsIt) {
    hand({"key", "ctrl+o"});
    ASSERT_TRUE(comesTrue([&] { return witness.sees("QFileDialog"); }));
    endsAsByARelease();
    closeDialog("QFileDialog");
    isKept();
}

TEST_F(InMidTake, AQuestionBeforeTheEndOfTheProgramEndsIt) {
    hand({"key", "ctrl+q"});
    ASSERT_TRUE(comesTrue([&] { return witness.sees("QMessageBox") || !isRunning(); }));
    ASSERT_TRUE(isRunning()) << "the program ended without a question";
    endsAsByARelease();
    closeDialog("QMessageBox");
    isKept();
}

TEST_F(InMidTake, ADialogOfTheModuleEndsIt) {
    type({"VOICEMAN"});
    ASSERT_TRUE(comesTrue([&] { return witness.sees("CPhonomarkManDlg"); }));
    endsAsByARelease();
    closeDialog("CPhonomarkManDlg");
    isKept();
}

TEST_F(InMidTake, AnotherProgramThatGetsTheFocusEndsIt) {
    const Running other("xmessage", {"-name", "other", "Another program"}, environment);
    ASSERT_TRUE(comesTrue([&] { return !windowNamed("other").isEmpty(); }));
    hand({"windowactivate", "--sync", windowNamed("other")});
    endsAsByARelease();
    hand({"windowactivate", "--sync", window});
    isKept();
}

TEST_F(InMidTake, ALostGrabEndsIt) {
    hand({"windowunmap", "--sync", window}); // the server takes the mouse away from a window that is not there
    endsAsByARelease();
    hand({"windowmap", "--sync", window});
    hand({"windowactivate", "--sync", window});
    isKept();
}

TEST_F(InMidTake, ErasingTheNoteEndsItAndUndoBringsTheNoteBackWithItsSound) {
    type({"ERASE", "All", ""});
    ASSERT_TRUE(comesTrue([&] { return witness.prompt() == "Command:" && witness.tag().isNull(); }));
    endsAsByARelease();
    ASSERT_TRUE(save());
    ASSERT_TRUE(note("A1").empty());
    hand({"key", "ctrl+z"});
    EXPECT_TRUE(comesTrue([&] { return save() && !note("A1").empty(); }));
    EXPECT_TRUE(isSpoken(note("A1"))) << told(note("A1"));
}

struct PlacedInMidTake : InMidTake {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({}));
        ASSERT_TRUE(command({"PHONOMARK", "300,300"}));
        begin(kEmpty);
    }
    Record placed() const { return notesIn(drawing).empty() ? Record() : notesIn(drawing).front(); }
};

TEST_F(PlacedInMidTake, TakingTheInsertionBackEndsItAndRedoBringsTheNoteWithItsSound) {
    hand({"key", "ctrl+z"});
    endsAsByARelease();
    for (int steps = 0; steps < 2 && save() && !placed().empty(); ++steps)
        hand({"key", "ctrl+z"});
    EXPECT_TRUE(placed().empty());
    EXPECT_TRUE(comesTrue(
        [&] {
            hand({"key", "ctrl+y"});
            return save() && isSpoken(placed());
        },
        10'000));
}

TEST_F(InMidTake, ASaveHoldsIt) {
    hand({"key", "ctrl+s"});
    EXPECT_TRUE(comesTrue([&] { return isSpoken(note("A1")); }, 10'000));
    release();
    EXPECT_TRUE(fallsSilent());
    isKept();
}

TEST_F(InMidTake, ASaveUnderAnotherNameHoldsIt) {
    const QString copy = folder.filePath("copy.dxf");
    type({"SAVEAS", copy});
    ASSERT_TRUE(comesTrue([&] { return witness.timesSaid("Saved ") == 1; }));
    EXPECT_TRUE(isSpoken(noteIn(copy, "A1")));
}

TEST_F(InMidTake, TheAutomaticCopyHoldsIt) {
    type({"AUTOSAVE"});
    ASSERT_TRUE(comesTrue([&] { return witness.timesSaid("Copied to ") == 1; }));
    const QString copy = folder.filePath("copy.merix");
    ASSERT_TRUE(QFile::copy(drawing + ".ms$", copy));
    ASSERT_EQ(runScript("OPEN copy.merix\nSAVEAS copied.dxf\n", folder.path()).status, 0);
    EXPECT_TRUE(isSpoken(noteIn(folder.filePath("copied.dxf"), "A1")));
}

TEST_F(InMidTake, ADrawingThatIsClosedAndSavedHoldsIt) {
    hand({"key", "ctrl+w"});
    ASSERT_NO_FATAL_FAILURE(answerSave());
    EXPECT_TRUE(isClosed());
    endsAsByARelease();
    EXPECT_TRUE(isSpoken(note("A1")));
}

TEST_F(InMidTake, ADrawingThatIsClosedAndSavedByItsTabHoldsIt) {
    const QPoint cross = witness.visible("CloseButton").place.center();
    hand({"mouseup", "1", "mousemove", QString::number(cross.x()), QString::number(cross.y()), "click", "1"});
    ASSERT_NO_FATAL_FAILURE(answerSave());
    EXPECT_TRUE(isClosed());
    EXPECT_TRUE(fallsSilent());
    EXPECT_TRUE(isSpoken(note("A1")));
}

TEST_F(InMidTake, AllDrawingsClosedAndSavedHoldIt) {
    type({"CLOSEALL"});
    ASSERT_TRUE(comesTrue([&] { return witness.prompt().contains("Save changes"); })) << "nothing was asked";
    type({"Yes"});
    EXPECT_TRUE(isClosed());
    endsAsByARelease();
    EXPECT_TRUE(isSpoken(note("A1")));
}

TEST_F(InMidTake, AProgramThatIsQuitAndSavedHoldsIt) {
    hand({"key", "ctrl+q"});
    ASSERT_NO_FATAL_FAILURE(answerSave());
    EXPECT_TRUE(endsWell());
    EXPECT_TRUE(fallsSilent());
    EXPECT_TRUE(isSpoken(note("A1")));
}

TEST_F(InMidTake, AModuleThatGoesLeavesIt) {
    type({"MODUNLOAD", "MrxPhonomark"});
    ASSERT_TRUE(comesTrue([&] { return witness.tag().isNull() && !witness.hasTag(); }));
    endsAsByARelease();
    ASSERT_TRUE(answers());
    isKept();
}

TEST_F(InMidTake, ASoundServerThatDiesEndsTheProgramAndTheRecoveryFileHoldsIt) {
    ASSERT_EQ(::kill(serverProcess(), SIGKILL), 0);
    ASSERT_TRUE(merix->process().waitForFinished(30'000)) << "the program goes on";
    EXPECT_EQ(merix->process().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(merix->process().exitCode(), 1);
    const QString kept = drawing + ".recovered.merix", copied = folder.filePath("copied.dxf");
    ASSERT_TRUE(QFile::exists(kept)) << merix->process().readAllStandardError().constData();
    ASSERT_EQ(run(MERIX_BINARY_DIR "/bin/merix", {"--convert", kept, copied}, folder.path()).status, 0);
    EXPECT_TRUE(isSpoken(noteIn(copied, "A1"))) << told(noteIn(copied, "A1"));
}

/// The recorded note is heard.
struct InMidPlay : RealNotes {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({kEmpty, kRecorded}));
        ASSERT_TRUE(hover(kRecorded));
        hand({"click", "1"});
        ASSERT_TRUE(comesTrue([&] { return isPlaying(); }));
        ASSERT_TRUE(answers()); // its window has come to rest
    }
    /// Long before its end.
    void isStopped() {
        EXPECT_TRUE(comesTrue([&] { return !isPlaying(); }, 8'000)) << "it plays on";
        EXPECT_TRUE(comesTrue([&] { return witness.tag().isNull(); }, 8'000)) << "the window stays";
    }
};

TEST_F(InMidPlay, ASoundServerThatDiesIsToldOnceAndTheProgramLives) {
    const int before = witness.timesSaid("sound device");
    ASSERT_EQ(::kill(serverProcess(), SIGKILL), 0);
    EXPECT_TRUE(comesTrue([&] { return witness.timesSaid("sound device") == before + 1; })) << "no word to the user";
    EXPECT_TRUE(answers());
    EXPECT_LT(merix->process().readAllStandardError().count('\n'), 50);
    EXPECT_EQ(witness.timesSaid("sound device"), before + 1);
    EXPECT_TRUE(isRunning());
}

TEST_F(InMidPlay, EscapeStopsIt) {
    hand({"key", "Escape"});
    isStopped();
    EXPECT_TRUE(answers());
}

TEST_F(InMidPlay, ErasingTheNoteStopsIt) {
    ASSERT_TRUE(command({"ERASE", "All", ""}));
    isStopped();
    EXPECT_TRUE(answers());
}

/// A sound server that is there and does not answer.
struct StoppedServer : RealNotes {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({kEmpty, m_short}));
    }
    void TearDown() override {
        ::kill(serverProcess(), SIGCONT);
        RealNotes::TearDown();
    }
    /// The window answers while the server does not, and afterwards.
    void doesNotHoldUp(const Note& note) {
        ASSERT_TRUE(hover(note));
        ASSERT_EQ(::kill(serverProcess(), SIGSTOP), 0);
        press();
        EXPECT_TRUE(answers(kPatienceMs)) << "the window hangs";
        release();
        EXPECT_TRUE(answers(kPatienceMs)) << "the window hangs";
        ASSERT_EQ(::kill(serverProcess(), SIGCONT), 0);
        ASSERT_TRUE(answers());
        EXPECT_TRUE(comesTrue([&] { return !isListening() && !isPlaying(); }));
        leaveNotes();
        ASSERT_TRUE(record(kEmpty)) << "no take after the server came back";
        ASSERT_TRUE(save());
        EXPECT_TRUE(isSpoken(this->note("A1")));
        EXPECT_TRUE(isRunning());
    }
    const Note m_short{"B1", 600, 300, 2};
    /// What a device is waited for, two seconds, and as much again for a busy machine, twice.
    static constexpr int kPatienceMs = 8'000;
};

TEST_F(StoppedServer, DoesNotHoldUpAPressOnAnEmptyNote) {
    doesNotHoldUp(kEmpty);
}

TEST_F(StoppedServer, DoesNotHoldUpAPressOnARecordedNote) {
    doesNotHoldUp(m_short);
}

} // namespace
