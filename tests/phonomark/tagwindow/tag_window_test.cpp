// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/tag_window.h"

#include "phonomark/dbutil/documents.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

#include <cstring>

using merix::ap::DocManager;
using ::testing::HasSubstr;

namespace {

using TagWindowTest = SoundTest;

QImage resource(const char* name) {
    return QImage(QString::fromLatin1(":/MrxPhonomarkRes/MrxPhonomarkRes/") + QString::fromLatin1(name));
}

} // namespace

TEST_F(TagWindowTest, APressOfUpToThreeHundredMillisecondsLeavesTheNoteEmptySilently) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    pressFor(window, 300);
    EXPECT_EQ(duration(id), L"0.0\"");
    EXPECT_FALSE(note(id).isRecord());
    EXPECT_EQ(note(id).getAudioData(), nullptr);
    EXPECT_EQ(printed(), "");
    EXPECT_TRUE(window.IsRecording()) << "the window counts as recording from its first recording on";
}

TEST_F(TagWindowTest, ARecordingOfLessThanASecondIsNotKeptAndTheUserIsTold) {
    for (const std::int64_t ms : {301, 500, 999}) {
        const MxDbObjectId id = addNote();
        pressFor(openWindow(id), ms);
        EXPECT_THAT(printed(), HasSubstr("shorter than one second")) << ms;
        EXPECT_EQ(duration(id), L"0.0\"");
        EXPECT_EQ(note(id).getAudioData(), nullptr);
        removeTagWindow();
    }
}

TEST_F(TagWindowTest, ExactlyOneSecondIsDiscardedSilently) {
    const MxDbObjectId id = addNote();
    pressFor(openWindow(id), 1000);
    EXPECT_EQ(printed(), "");
    EXPECT_FALSE(note(id).isRecord());
    EXPECT_EQ(duration(id), L"0.0\"");
}

TEST_F(TagWindowTest, MoreThanASecondIsKept) {
    const MxDbObjectId id = addNote();
    note(id).setSpokesman(L"Anna");
    note(id).setDatatime(L"2026/3/7 9:5:0");
    CPhonomarkTagUIDlg& window = openWindow(id);
    pressFor(window, 1001);
    MxDbPhonomark& kept = note(id);
    EXPECT_TRUE(kept.isRecord());
    EXPECT_EQ(duration(id), L"1.0\"");
    ASSERT_EQ(kept.getAudioDataSize(), 64u) << "one period of 16 frames and as many zero bytes";
    std::int16_t first = 0, last = 0;
    std::memcpy(&first, kept.getAudioData(), 2);
    std::memcpy(&last, kept.getAudioData() + 30, 2);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(last, 16);
    EXPECT_EQ(kept.getAudioData()[32], 0);
    tWAVEFORMATEX format;
    kept.getWaveFormat(format);
    EXPECT_EQ(format.wFormatTag, 1);
    EXPECT_EQ(format.nChannels, 1);
    EXPECT_EQ(format.nSamplesPerSec, 40000u);
    EXPECT_EQ(format.nAvgBytesPerSec, 40000u);
    EXPECT_EQ(format.nBlockAlign, 1);
    EXPECT_EQ(format.wBitsPerSample, 8);
    EXPECT_EQ(format.cbSize, 0);
    EXPECT_TRUE(window.GetRecordStatus());
    EXPECT_EQ(window.toolTip(), QStringLiteral("Anna\n2026/3/7 9:5:0\nPress to play"));
    EXPECT_EQ(window.recordTimer(), -1);
    EXPECT_EQ(printed(), "");
}

TEST_F(TagWindowTest, TheGrowingDurationIsWrittenIntoTheNoteAndItsRegionHidden) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2400);
    ASSERT_NE(window.recordTimer(), -1);
    tick(window, window.recordTimer());
    EXPECT_EQ(duration(id), L"2.4\"");
    EXPECT_FALSE(note(id).isRegionShown());
    letGo(window);
}

TEST_F(TagWindowTest, ARecordingMarksTheNoteForTheNextSave) {
    const MxDbObjectId id = addNote();
    database().imp().clearChanged();
    pressFor(openWindow(id), 1500);
    EXPECT_THAT(database().imp().changedSinceSave(), ::testing::Contains(id));
}

TEST_F(TagWindowTest, WithoutASoundDeviceTheUserIsToldAndNothingIsRecorded) {
    listDevices("");
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    press(window);
    EXPECT_THAT(printed(), HasSubstr("The sound device is not available."));
    EXPECT_FALSE(window.IsRecording());
    EXPECT_EQ(window.recordTimer(), -1);
}

TEST_F(TagWindowTest, ASecondPressInTheSameWindowDoesNotCaptureAgain) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    pressFor(window, 500);
    press(window);
    EXPECT_NE(window.recordTimer(), -1);
    letGo(window);
    EXPECT_EQ(alsa.count("snd_pcm_open"), 1);
}

TEST_F(TagWindowTest, AnErasedNoteIsNotRecorded) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    livePhManager()->ErasePhonomark(id, nullptr);
    press(window);
    EXPECT_FALSE(window.IsRecording());
    EXPECT_EQ(alsa.count("snd_pcm_open"), 0);
}

TEST_F(TagWindowTest, ANoteWhoseDrawingHasGoneCountsAsErased) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    DocManager::instance().create();
    DocManager::instance().close(document());
    EXPECT_EQ(window.GetMxDbOwner(), nullptr);
    press(window);
    EXPECT_FALSE(window.IsRecording());
    press(window, {30, 4});
    window.SetRecordStatus(true);
    press(window);
    EXPECT_TRUE(window.IsPlaying()) << "of nothing";
}

TEST_F(TagWindowTest, AWindowThatCameUpOverARecordedNoteCanRecordAnother) {
    const MxDbObjectId recorded = addRecorded(L"0.9\""), empty = addNote();
    CPhonomarkTagUIDlg& window = openWindow(recorded);
    EXPECT_EQ(&openWindow(empty), &window) << "the window moves on";
    pressFor(window, 2000);
    EXPECT_EQ(note(empty).getAudioDataSize(), 64u);
}

TEST_F(TagWindowTest, APressIntoTheCornerBoxDeletesTheNote) {
    for (const QPointF at : {QPointF(30, 4), QPointF(26, 0), QPointF(34.4, 8.4), QPointF(25.6, 0)}) {
        const MxDbObjectId id = addNote();
        CPhonomarkTagUIDlg& window = openWindow(id);
        press(window, at);
        EXPECT_TRUE(note(id).isErased()) << at.x();
        EXPECT_FALSE(window.isVisible());
        EXPECT_FALSE(window.IsRecording());
        removeTagWindow();
    }
}

TEST_F(TagWindowTest, APressBesideTheCornerBoxRecords) {
    for (const QPointF at : {QPointF(35, 4), QPointF(30, 9), QPointF(25, 4), QPointF(34.6, 4)}) {
        const MxDbObjectId id = addNote();
        CPhonomarkTagUIDlg& window = openWindow(id);
        press(window, at);
        EXPECT_TRUE(window.IsRecording()) << at.x();
        EXPECT_FALSE(note(id).isErased());
        letGo(window);
        phonomark::workerCensus().wait();
        removeTagWindow();
    }
}

TEST_F(TagWindowTest, ARecordedNoteIsPlayedForASecondMoreThanItsWholeSeconds) {
    const MxDbObjectId id = addRecorded(L"3.7\"");
    CPhonomarkTagUIDlg& window = openWindow(id);
    EXPECT_EQ(window.toolTip(), QStringLiteral("Anna\n2026/3/7 9:5:0\nPress to play"));
    press(window);
    EXPECT_TRUE(window.IsPlaying());
    ASSERT_NE(window.playTimer(), -1);
    const char* images[] = {"IDB_PNG_TAG_PLAYING_II", "IDB_PNG_TAG_PLAYING_III", "IDB_PNG_TAG_PLAYING_I"};
    for (int ticks = 1; ticks <= 13; ++ticks) {
        tick(window, window.playTimer());
        ASSERT_TRUE(window.isVisible()) << ticks;
        QImage shown(36, 36, QImage::Format_ARGB32_Premultiplied);
        shown.fill(Qt::transparent);
        window.render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
        EXPECT_EQ(shown, resource(images[(ticks - 1) % 3]).convertToFormat(shown.format())) << ticks;
    }
    tick(window, window.playTimer());
    EXPECT_FALSE(window.isVisible()) << "14 ticks of 300 ms are more than 4000 ms";
    EXPECT_FALSE(window.IsPlaying());
    EXPECT_EQ(window.playTimer(), -1);
    phonomark::workerCensus().wait();
    EXPECT_GT(alsa.count("snd_pcm_writei"), 0);
}

TEST_F(TagWindowTest, WithoutAPlaybackDeviceTheUserIsToldAndTheWindowHidesInTime) {
    alsa.setStatus("snd_pcm_open", -19);
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"0.9\""));
    press(window);
    EXPECT_THAT(printed(), HasSubstr("The sound device is not available."));
    for (int ticks = 0; ticks < 4; ++ticks)
        tick(window, window.playTimer());
    EXPECT_FALSE(window.isVisible());
}

TEST_F(TagWindowTest, ADrawingHeldByAnotherCommandLeavesTheWindowPlayingWithoutATimer) {
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"0.9\""));
    const DocumentLock lock(&document(), L"Other", 298);
    press(window);
    EXPECT_TRUE(window.IsPlaying());
    EXPECT_EQ(window.playTimer(), -1);
    EXPECT_EQ(alsa.count("snd_pcm_open"), 0);
}

TEST_F(TagWindowTest, LeavingTheWindowHidesItUnlessItPlays) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_FALSE(window.isVisible());
    openWindow(addRecorded(L"0.9\""));
    press(window);
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(TagWindowTest, TheWindowIsAFramelessSquareOfThirtySixPixels) {
    const CPhonomarkTagUIDlg& window = openWindow(addNote());
    EXPECT_EQ(window.size(), QSize(36, 36));
    EXPECT_TRUE(window.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(window.toolTip(), QStringLiteral("Press and hold to record"));
    EXPECT_EQ(window.cursor().shape(), Qt::ArrowCursor);
}

TEST(PlayDurationTest, ItIsOneSecondMoreThanTheWholeSeconds) {
    EXPECT_EQ(playDurationMs(L"0.0\""), 1000);
    EXPECT_EQ(playDurationMs(L"3.9\""), 4000);
    EXPECT_EQ(playDurationMs(L"12"), 13000);
    EXPECT_EQ(playDurationMs(L"none"), 1000);
    EXPECT_EQ(playDurationMs(L""), 1000);
    EXPECT_GT(playDurationMs(L"99999999999999999999.0\""), 0);
    EXPECT_LT(playDurationMs(L"-99999999999999999999.0\""), 0);
}
