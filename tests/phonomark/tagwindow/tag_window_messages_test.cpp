// SPDX-License-Identifier: MIT
#include "merix/ed/command_stack.h"
#include "phonomark/dbutil/documents.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

using ::testing::HasSubstr;

namespace {

class TagMessagesTest : public SoundTest {
protected:
    static bool send(CPhonomarkTagUIDlg& window, unsigned number, int x = 0, int y = 0, std::uintptr_t keys = 0) {
        tagMSG message{&window, number, keys, (x & 0xFFFF) | (y & 0xFFFF) << 16};
        return window.PreTranslateMessage(&message);
    }
    static void move(CPhonomarkTagUIDlg& window, QPointF at) {
        mouse(window, QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton);
    }
    /// Sends what was posted.
    static void deliver() { QCoreApplication::sendPostedEvents(); }
};

} // namespace

TEST_F(TagMessagesTest, APressIntoTheDeleteBoxIsDoneOnce) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    EXPECT_TRUE(send(window, 513, 30, 4));
    EXPECT_TRUE(note(id).isErased());
    EXPECT_FALSE(window.isVisible());
    const std::size_t steps = undoSteps().size();
    EXPECT_TRUE(send(window, 513, 34, 8));
    EXPECT_EQ(undoSteps().size(), steps) << "there was nothing left to erase";
}

TEST_F(TagMessagesTest, APressBesideTheBoxIsLeftToQt) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    for (const QPoint at : {QPoint(35, 4), QPoint(30, 9), QPoint(25, 4), QPoint(26, -1)})
        EXPECT_FALSE(send(window, 513, at.x(), at.y())) << at.x();
    EXPECT_FALSE(note(id).isErased());
    EXPECT_FALSE(window.IsRecording());
}

TEST_F(TagMessagesTest, AReleaseEndsARecordingOnce) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 500);
    EXPECT_TRUE(send(window, 514));
    EXPECT_EQ(window.recordTimer(), -1);
    EXPECT_THAT(printed(), HasSubstr("shorter than one second"));
    release();
}

TEST_F(TagMessagesTest, WhileANotePlaysTheMouseIsLeftToQt) {
    const MxDbObjectId id = addRecorded(L"5.5\"");
    CPhonomarkTagUIDlg& window = openWindow(id);
    press(window);
    window.setToolTip(QStringLiteral("kept"));
    EXPECT_FALSE(send(window, 513, 30, 4));
    EXPECT_FALSE(send(window, 514));
    EXPECT_FALSE(send(window, 512, 30, 4));
    EXPECT_FALSE(note(id).isErased());
    EXPECT_EQ(window.toolTip(), QStringLiteral("kept"));
}

TEST_F(TagMessagesTest, TheTooltipTellsWhatAPressThereWillDo) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    move(window, {30, 4});
    EXPECT_EQ(window.toolTip(), QStringLiteral("Delete this note"));
    move(window, {5, 20});
    EXPECT_EQ(window.toolTip(), QStringLiteral("Press and hold to record, up to 30 s"));
    openWindow(addRecorded(L"0.9\""));
    move(window, {30, 5});
    EXPECT_EQ(window.toolTip(), QStringLiteral("Delete this note"));
    move(window, {5, 20});
    EXPECT_EQ(window.toolTip(), QStringLiteral("Anna\n2026/3/7 9:5:0\nPress to play"));
    window.setToolTip(QStringLiteral("kept"));
    move(window, {5, 20});
    EXPECT_EQ(window.toolTip(), QStringLiteral("kept")) << "the mouse is where it was";
}

TEST_F(TagMessagesTest, TheDeleteBoxStandsOutUnderTheCursor) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    const QImage plain = shown(window);
    move(window, {30, 4});
    const QImage marked = shown(window);
    EXPECT_NE(marked, plain);
    EXPECT_NE(marked.copy(26, 0, 9, 9), plain.copy(26, 0, 9, 9));
    EXPECT_EQ(marked.copy(0, 10, 36, 26), plain.copy(0, 10, 36, 26));
    EXPECT_EQ(marked.copy(0, 0, 25, 36), plain.copy(0, 0, 25, 36));
    move(window, {30, 9});
    EXPECT_EQ(shown(window), plain);
    move(window, {30, 4});
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_EQ(shown(window), plain);
}

TEST_F(TagMessagesTest, LeavingTheWindowEndsARecording) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2000);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_EQ(window.recordTimer(), -1);
    EXPECT_TRUE(note(id).isRecord());
    EXPECT_FALSE(window.isVisible());
    release();
}

TEST_F(TagMessagesTest, TheMessageThatTheMouseHasLeftEndsARecordingToo) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2000);
    window.OnMouseLeave();
    EXPECT_EQ(window.recordTimer(), -1);
    EXPECT_TRUE(note(id).isRecord());
    EXPECT_TRUE(window.isVisible());
    release();
}

TEST_F(TagMessagesTest, ALostPressEndsARecordingAndNothingElse) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    window.OnCaptureChanged();
    EXPECT_FALSE(window.IsRecording());
    hold(window, 2000);
    window.hide();
    EXPECT_EQ(window.recordTimer(), -1);
    EXPECT_TRUE(note(id).isRecord());
    release();
    note(id).setDuration(L"9.9\"");
    window.OnCaptureChanged();
    EXPECT_EQ(duration(id), L"9.9\"") << "the take had ended";
}

TEST_F(TagMessagesTest, TheTickOfALegacyTimerWritesTenths) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 500);
    for (int i = 0; i < 12; ++i)
        CWnd::PostMessage(&window, kWindowTimer, 1);
    deliver();
    EXPECT_EQ(duration(id), L"1.2\"");
    letGo(window);
    release();
    phonomark::workerCensus().wait();
    press(window); // begins to count anew
    window.OnTimer(1);
    EXPECT_EQ(duration(id), L"0.1\"");
    letGo(window);
}

TEST_F(TagMessagesTest, TheLegacyTickWaitsForItsLock) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    {
        const DocumentLock lock(&document(), L"Other", 298);
        window.OnTimer(1);
        EXPECT_EQ(duration(id), L"0.0\"");
        EXPECT_THAT(printed(), HasSubstr("PhonomarkOnTimer"));
    }
    window.OnTimer(1);
    EXPECT_EQ(duration(id), L"0.2\"") << "the tick before was counted";
    window.OnTimer(3);
    EXPECT_EQ(duration(id), L"0.2\"");
}

TEST_F(TagMessagesTest, ALegacyTimerMovesTheAnimationOfANoteThatPlays) {
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"0.9\""));
    window.OnTimer(2);
    EXPECT_EQ(shown(window), resource("IDB_PNG_TAG_PLAY"));
    press(window);
    window.OnTimer(2);
    EXPECT_EQ(shown(window), resource("IDB_PNG_TAG_PLAYING_II"));
    for (int i = 0; i < 3; ++i)
        window.OnTimer(2);
    EXPECT_FALSE(window.isVisible()) << "after 1200 ms";
    EXPECT_FALSE(window.IsPlaying());
}

TEST(DurationOfTenthsTest, ItBeginsAnewAfterAMinute) {
    EXPECT_EQ(durationOfTenths(0), L"0.0\"");
    EXPECT_EQ(durationOfTenths(59), L"5.9\"");
    EXPECT_EQ(durationOfTenths(599), L"59.9\"");
    EXPECT_EQ(durationOfTenths(600), L"0.0\"");
    EXPECT_EQ(durationOfTenths(659), L"5.9\"");
}

TEST_F(TagMessagesTest, DestroyingTheWindowWaitsForItsWorkersAndKeepsTheTake) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2000);
    takeSlept();
    window.DestroyWindow();
    EXPECT_EQ(takeSlept(), std::vector<unsigned long>{500});
    EXPECT_TRUE(note(id).isRecord());
    EXPECT_FALSE(window.isVisible());
    window.DestroyWindow();
    EXPECT_TRUE(takeSlept().empty()) << "it was destroyed";
    release();
    removeTagWindow();
    CPhonomarkTagUIDlg& second = openWindow(id);
    press(second);
    takeSlept();
    second.DestroyWindow();
    EXPECT_EQ(takeSlept(), std::vector<unsigned long>{500});
    removeTagWindow();
    openWindow(id).DestroyWindow();
    EXPECT_TRUE(takeSlept().empty()) << "nothing was under way";
    EXPECT_FALSE(openWindow(id).IsDestroyed()) << "the next one is new";
}

TEST_F(TagMessagesTest, AWindowThatHasRecordedAndPlaysWaitsForBoth) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    pressFor(window, 2000);
    press(window);
    takeSlept();
    window.DestroyWindow();
    EXPECT_EQ(takeSlept(), (std::vector<unsigned long>{500, 500}));
}

TEST_F(TagMessagesTest, MovingOffANoteWaitsForNothing) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    pressFor(window, 2000);
    takeSlept();
    DestroyTagWindow();
    EXPECT_EQ(g_taguidlg, nullptr);
    EXPECT_TRUE(takeSlept().empty());
}

TEST_F(TagMessagesTest, ClosingTheWindowHidesIt) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    window.close();
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(g_taguidlg, &window);
}
