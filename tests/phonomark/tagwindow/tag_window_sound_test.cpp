// SPDX-License-Identifier: MIT
// Recording and playing in the tag window.
#include "phonomark/tagwindow/tag_window.h"

#include "host/rx/app.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"
#include "merix/ui/main_window.h"
#include "phonomark/app/entry_point.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>

#include <cstring>
#include <functional>
#include <latch>
#include <thread>

using merix::ap::DocManager;
using ::testing::HasSubstr;

namespace {

using TagSoundTest = SoundTest;

/// A recording that has to be in the file afterwards, in either kind of drawing file.
class FiledRecordingTest : public SoundTest, public ::testing::WithParamInterface<const char*> {
protected:
    QString file() const { return folder.filePath(QStringLiteral("note") + QString::fromLatin1(GetParam())); }

    void save() {
        const auto result = DocManager::instance().saveAs(document(), file());
        ASSERT_TRUE(result.ok) << qPrintable(result.message);
    }
    /// Closes the drawing and reads it from its file; the id of its only note.
    MxDbObjectId reopen() {
        DocManager::instance().close(document());
        merix::ap::Document* opened = nullptr;
        const auto result = DocManager::instance().open(file(), &opened);
        EXPECT_TRUE(result.ok) << qPrintable(result.message);
        useDocument(*opened);
        EXPECT_EQ(listed().size(), 1u);
        return listed().at(0);
    }
    /// The note of a drawing that has been saved and read again, and not been changed since.
    MxDbObjectId addFiledNote() {
        addNote();
        save();
        return reopen();
    }
    void lockLayerOf(MxDbObjectId id) {
        auto* layer = dynamic_cast<merix::db::LayerRecord*>(merix::db::DatabaseImp::peek(note(id).layerId()));
        ASSERT_TRUE(layer);
        layer->flags |= 4;
    }
    void expectRecorded(MxDbObjectId id, const wchar_t* text) {
        EXPECT_TRUE(note(id).isRecord());
        EXPECT_EQ(duration(id), text);
        ASSERT_EQ(note(id).getAudioDataSize(), 64u);
        EXPECT_EQ(note(id).getAudioData()[0], 1);
        EXPECT_EQ(note(id).getAudioData()[30], 16);
    }
};

INSTANTIATE_TEST_SUITE_P(DrawingFiles, FiledRecordingTest, ::testing::Values(".dxf", ".merix"),
                         [](const auto& suite) { return std::string(suite.param + 1); });

} // namespace

TEST_P(FiledRecordingTest, ARecordingOnALockedLayerIsSaved) {
    const MxDbObjectId id = addFiledNote();
    lockLayerOf(id);
    pressFor(openWindow(id), 1500);
    EXPECT_TRUE(document().isChanged());
    save();
    expectRecorded(reopen(), L"1.5\"");
}

TEST_P(FiledRecordingTest, ARecordingIntoADrawingHeldByAnotherCommandIsSaved) {
    const MxDbObjectId id = addFiledNote();
    {
        const DocumentLock lock(&document(), L"Other", 298);
        pressFor(openWindow(id), 1500);
    }
    EXPECT_TRUE(document().isChanged());
    save();
    expectRecorded(reopen(), L"1.5\"");
}

TEST_P(FiledRecordingTest, ARecordingThatWasNotKeptIsSavedAsNone) {
    addRecorded(L"2.4\"");
    save();
    const MxDbObjectId id = reopen();
    lockLayerOf(id);
    CPhonomarkTagUIDlg& window = openWindow(id);
    window.SetRecordStatus(false);
    pressFor(window, 500);
    save();
    const MxDbObjectId after = reopen();
    EXPECT_FALSE(note(after).isRecord());
    EXPECT_EQ(duration(after), L"0.0\"");
}

TEST_P(FiledRecordingTest, TheGrowingDurationIsSavedWhileARecordingGoesOn) {
    const MxDbObjectId id = addFiledNote();
    lockLayerOf(id);
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2400);
    tick(window, window.recordTimer());
    EXPECT_TRUE(document().isChanged());
    save();
    removeTagWindow();
    EXPECT_EQ(duration(reopen()), L"2.4\"");
}

TEST_F(TagSoundTest, APressOfUpToThreeHundredMillisecondsLeavesTheNoteEmptySilently) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    pressFor(window, 300);
    EXPECT_EQ(duration(id), L"0.0\"");
    EXPECT_FALSE(note(id).isRecord());
    EXPECT_EQ(note(id).getAudioData(), nullptr);
    EXPECT_EQ(printed(), "");
    EXPECT_TRUE(window.IsRecording()) << "the window counts as recording from its first recording on";
}

TEST_F(TagSoundTest, ARecordingOfLessThanASecondIsNotKeptAndTheUserIsTold) {
    for (const std::int64_t ms : {301, 500, 999}) {
        const MxDbObjectId id = addNote();
        pressFor(openWindow(id), ms);
        EXPECT_THAT(printed(), HasSubstr("shorter than one second")) << ms;
        EXPECT_EQ(duration(id), L"0.0\"");
        EXPECT_EQ(note(id).getAudioData(), nullptr);
        removeTagWindow();
    }
}

TEST_F(TagSoundTest, ExactlyOneSecondIsDiscardedSilently) {
    const MxDbObjectId id = addNote();
    pressFor(openWindow(id), 1000);
    EXPECT_EQ(printed(), "");
    EXPECT_FALSE(note(id).isRecord());
    EXPECT_EQ(duration(id), L"0.0\"");
}

TEST_F(TagSoundTest, MoreThanASecondIsKept) {
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

TEST_F(TagSoundTest, TheGrowingDurationIsWrittenIntoTheNoteAndItsRegionHidden) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2400);
    ASSERT_NE(window.recordTimer(), -1);
    tick(window, window.recordTimer());
    EXPECT_EQ(duration(id), L"2.4\"");
    EXPECT_FALSE(note(id).isRegionShown());
    letGo(window);
}

TEST_F(TagSoundTest, ARecordingMarksTheNoteForTheNextSave) {
    const MxDbObjectId id = addNote();
    database().imp().clearChanged();
    pressFor(openWindow(id), 1500);
    EXPECT_THAT(database().imp().changedSinceSave(), ::testing::Contains(id));
}

TEST_F(TagSoundTest, WithoutASoundDeviceTheUserIsToldAndNothingIsRecorded) {
    listDevices("");
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    press(window);
    EXPECT_THAT(printed(), HasSubstr("The sound device is not available."));
    EXPECT_FALSE(window.IsRecording());
    EXPECT_EQ(window.recordTimer(), -1);
}

TEST_F(TagSoundTest, ASecondPressInTheSameWindowDoesNotCaptureAgain) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    pressFor(window, 500);
    press(window);
    EXPECT_NE(window.recordTimer(), -1);
    letGo(window);
    EXPECT_EQ(alsa.count("snd_pcm_open"), 1);
}

TEST_F(TagSoundTest, AnErasedNoteIsNotRecorded) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    livePhManager()->ErasePhonomark(id, nullptr);
    press(window);
    EXPECT_FALSE(window.IsRecording());
    EXPECT_EQ(alsa.count("snd_pcm_open"), 0);
}

TEST_F(TagSoundTest, AWindowThatCameUpOverARecordedNoteCanRecordAnother) {
    const MxDbObjectId recorded = addRecorded(L"0.9\""), empty = addNote();
    CPhonomarkTagUIDlg& window = openWindow(recorded);
    EXPECT_EQ(&openWindow(empty), &window) << "the window moves on";
    pressFor(window, 2000);
    EXPECT_EQ(note(empty).getAudioDataSize(), 64u);
}

TEST_F(TagSoundTest, ARecordedNoteIsPlayedForASecondMoreThanItsWholeSeconds) {
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
        EXPECT_EQ(shown(window), resource(images[(ticks - 1) % 3])) << ticks;
    }
    tick(window, window.playTimer());
    EXPECT_FALSE(window.isVisible()) << "14 ticks of 300 ms are more than 4000 ms";
    EXPECT_FALSE(window.IsPlaying());
    EXPECT_EQ(window.playTimer(), -1);
    phonomark::workerCensus().wait();
    EXPECT_GT(alsa.count("snd_pcm_writei"), 0);
}

TEST_F(TagSoundTest, ANoteOfTwoSecondsAndABitIsHiddenByTheTenthTick) {
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"2.9\""));
    press(window);
    for (int ticks = 1; ticks <= 9; ++ticks) {
        tick(window, window.playTimer());
        ASSERT_TRUE(window.isVisible()) << ticks;
    }
    tick(window, window.playTimer());
    EXPECT_FALSE(window.isVisible());
}

TEST_F(TagSoundTest, NothingIsPlayedForThirtySeconds) {
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"60.0\""));
    press(window);
    for (int ticks = 1; ticks <= 99; ++ticks) {
        tick(window, window.playTimer());
        ASSERT_TRUE(window.isVisible()) << ticks;
    }
    tick(window, window.playTimer());
    EXPECT_FALSE(window.isVisible()) << "30000 ms are more than 29999";
    EXPECT_FALSE(window.IsPlaying());
}

TEST_F(TagSoundTest, ARecordingDoesNotWriteIntoTheSoundThatIsStillBeingPlayed) {
    const MxDbObjectId recorded = addRecorded(L"0.9\"", VkAudioRecorder::kBufferBytes), empty = addNote();
    std::latch writing{1}, overwritten{1};
    std::int16_t before = 0, after = 0;
    alsa.write = [&, writes = 0](const std::int16_t* samples, unsigned long frames) mutable {
        if (++writes == 1) {
            before = samples[0];
            writing.count_down();
            overwritten.wait();
            after = samples[0];
        }
        return static_cast<long>(frames);
    };
    CPhonomarkTagUIDlg& window = openWindow(recorded);
    press(window);
    writing.wait();
    openWindow(empty);
    hold(window, 2000);
    overwritten.count_down();
    letGo(window);
    for (int ticks = 0; ticks < 4; ++ticks)
        tick(window, window.playTimer()); // the player stops
    release();
    phonomark::workerCensus().wait();
    EXPECT_EQ(before, 0x0201);
    EXPECT_EQ(after, before);
    EXPECT_EQ(note(empty).getAudioDataSize(), 64u);
}

TEST_F(TagSoundTest, ALaterReleaseKeepsTheTakeAgainAndShowsThePlayImage) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    pressFor(window, 2000);
    note(id).setDuration(L"9.9\"");
    press(window); // plays now
    ASSERT_TRUE(window.IsPlaying());
    tick(window, window.playTimer());
    letGo(window);
    EXPECT_TRUE(window.IsRecording());
    EXPECT_TRUE(window.IsPlaying());
    EXPECT_EQ(duration(id), L"2.0\"") << "of the kept recorder";
    EXPECT_EQ(note(id).getAudioDataSize(), 64u);
    EXPECT_EQ(shown(window), resource("IDB_PNG_TAG_PLAY"));
}

TEST_F(TagSoundTest, TheWaveFormatOfAPlayedNoteIsFiledWithTheNextRecording) {
    const MxDbObjectId recorded = addRecorded(L"0.9\""), empty = addNote();
    tWAVEFORMATEX format;
    format.wFormatTag = 7;
    format.nSamplesPerSec = 8000;
    format.wBitsPerSample = 16;
    note(recorded).setWaveFormat(&format);
    CPhonomarkTagUIDlg& window = openWindow(recorded);
    press(window);
    for (int ticks = 0; ticks < 4; ++ticks)
        tick(window, window.playTimer());
    openWindow(empty);
    pressFor(window, 2000);
    tWAVEFORMATEX filed;
    note(empty).getWaveFormat(filed);
    EXPECT_EQ(std::memcmp(&filed, &format, sizeof filed), 0);
}

TEST_F(TagSoundTest, AfterAFailedRecordingASecondPressRecordsNothingAndItsReleaseResetsTheNote) {
    alsa.setStatus("snd_pcm_open", -19);
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    press(window);
    letGo(window);
    EXPECT_FALSE(window.IsRecording());
    EXPECT_THAT(printed(), HasSubstr("The sound device is not available."));
    alsa.setStatus("snd_pcm_open", 0);
    note(id).setDuration(L"7.7\"");
    press(window);
    EXPECT_TRUE(window.IsRecording());
    EXPECT_NE(window.recordTimer(), -1);
    letGo(window);
    EXPECT_EQ(window.recordTimer(), -1);
    EXPECT_EQ(alsa.count("snd_pcm_open"), 1);
    EXPECT_EQ(duration(id), L"0.0\"");
    EXPECT_FALSE(note(id).isRecord());
    EXPECT_THAT(printed(), HasSubstr("Nothing is recorded"));
}

TEST_F(TagSoundTest, PlayingANoteWithoutSoundLeavesItOpenAndTheDrawingLockedUntilTheNextCommand) {
    const MxDbObjectId id = addNote();
    note(id).setRecord(true);
    CPhonomarkTagUIDlg& window = openWindow(id);
    press(window);
    EXPECT_TRUE(window.IsPlaying());
    EXPECT_EQ(window.playTimer(), -1);
    EXPECT_EQ(alsa.count("snd_pcm_open"), 0);
    MxDbPhonomark* opened = nullptr;
    EXPECT_EQ(mxdbOpenObject(opened, id, Mx::kForWrite), Mx::eOpenForRead);
    EXPECT_FALSE(DocumentLock(&document(), L"Other", 298).isHeld());
    printed();
    addLine();
    run("VOICESHOW");
    EXPECT_EQ(undoSteps().front(), "Play note") << "the unit that was left open";
    EXPECT_THAT(printed(), HasSubstr("Voice notes are hidden."));
    EXPECT_TRUE(DocumentLock(&document(), L"Other", 298).isHeld());
}

TEST_F(TagSoundTest, WithoutAPlaybackDeviceTheUserIsToldAndTheWindowHidesInTime) {
    alsa.setStatus("snd_pcm_open", -19);
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"0.9\""));
    press(window);
    EXPECT_THAT(printed(), HasSubstr("The sound device is not available."));
    for (int ticks = 0; ticks < 4; ++ticks)
        tick(window, window.playTimer());
    EXPECT_FALSE(window.isVisible());
}

TEST_F(TagSoundTest, ADrawingHeldByAnotherCommandLeavesTheWindowPlayingWithoutATimer) {
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"0.9\""));
    const DocumentLock lock(&document(), L"Other", 298);
    press(window);
    EXPECT_TRUE(window.IsPlaying());
    EXPECT_EQ(window.playTimer(), -1);
    EXPECT_EQ(alsa.count("snd_pcm_open"), 0);
}

TEST_F(TagSoundTest, TimersTickEveryTenthAndEveryThirdOfASecond) {
    const auto timerOf = [](QObject& window, int id) {
        for (const auto& timer : QAbstractEventDispatcher::instance()->registeredTimers(&window))
            if (timer.timerId == id)
                return timer;
        return QAbstractEventDispatcher::TimerInfo(-1, -1, Qt::PreciseTimer);
    };
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    hold(window, 500);
    const auto recording = timerOf(window, window.recordTimer());
    EXPECT_EQ(recording.interval, 100);
    EXPECT_EQ(recording.timerType, Qt::CoarseTimer);
    letGo(window);
    release();
    openWindow(addRecorded(L"0.9\""));
    press(window);
    const auto playing = timerOf(window, window.playTimer());
    EXPECT_EQ(playing.interval, 300);
    EXPECT_EQ(playing.timerType, Qt::CoarseTimer);
}

TEST_F(TagSoundTest, AWindowThatPlaysRisesInTheCornerInFourSteps) {
    merix::ui::MainWindow frame;
    frame.resize(900, 600);
    frame.show();
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"0.9\""));
    class Moves : public QObject {
    public:
        bool eventFilter(QObject* object, QEvent* event) override {
            if (event->type() == QEvent::Move)
                places.push_back(static_cast<QWidget*>(object)->pos());
            return false;
        }
        std::vector<QPoint> places;
    } moves;
    window.installEventFilter(&moves);
    takeSlept();
    press(window);
    EXPECT_EQ(takeSlept(), std::vector<unsigned long>(4, 200));
    EXPECT_EQ(moves.places, (std::vector<QPoint>{{900 - 48, 591}, {900 - 48, 582}, {900 - 48, 573}, {900 - 48, 564}}));
    removeTagWindow();
}

TEST_F(TagSoundTest, PlayingHidesTheRegionThatIsShown) {
    const MxDbObjectId id = addRecorded(L"0.9\"");
    note(id).setPhonomarkType(kRegionNote);
    note(id).doHighlight();
    ASSERT_TRUE(note(id).isRegionShown());
    press(openWindow(id));
    EXPECT_FALSE(note(id).isRegionShown());
}

TEST_F(TagSoundTest, ThePlayerIsStoppedAtTheEnd) {
    const MxDbObjectId id = addRecorded(L"0.9\"", 64'000);
    std::latch atEnd{1};
    std::atomic<int> writes = 0;
    alsa.write = [&](const std::int16_t*, unsigned long frames) {
        if (++writes == 1)
            atEnd.wait();
        return static_cast<long>(frames);
    };
    CPhonomarkTagUIDlg& window = openWindow(id);
    press(window);
    for (int ticks = 0; ticks < 4; ++ticks)
        tick(window, window.playTimer());
    ASSERT_FALSE(window.isVisible());
    atEnd.count_down();
    phonomark::workerCensus().wait();
    EXPECT_EQ(writes, 1) << "of a thousand";
}

TEST_F(TagSoundTest, APressOnAWindowThatPlaysEndsTheSoundBefore) {
    const MxDbObjectId id = addRecorded(L"9.0\"", 64'000);
    std::latch pressedAgain{1};
    std::atomic<int> writes = 0;
    alsa.write = [&](const std::int16_t*, unsigned long frames) {
        if (++writes == 1)
            pressedAgain.wait();
        return static_cast<long>(frames);
    };
    CPhonomarkTagUIDlg& window = openWindow(id);
    press(window);
    while (writes == 0)
        std::this_thread::yield();
    press(window);
    pressedAgain.count_down();
    phonomark::workerCensus().wait();
    EXPECT_GE(writes, 1001) << "one, and the whole sound anew";
    EXPECT_LT(writes, 1500);
}

TEST_F(TagSoundTest, AReleaseStopsTheRecorder) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    hold(window, 2000);
    letGo(window);
    release();
    QElapsedTimer patience;
    patience.start();
    while (alsa.count("snd_pcm_close") == 0 && patience.elapsed() < 60'000)
        std::this_thread::yield();
    EXPECT_EQ(alsa.count("snd_pcm_close"), 1);
    EXPECT_LT(alsa.count("snd_pcm_readi"), 10) << "it did not go on until the buffer was full";
    VkAudioRecorder().stop();
}

TEST_F(TagSoundTest, TheNoteIsDrawnAnewWheneverItsTimeOrItsSoundChanges) {
    class Drawn : public merix::db::DatabaseListener {
    public:
        void objectGraphicsModified(MxDbObject&) override { ++times; }
        int times = 0;
    } drawn;
    const MxDbObjectId id = addNote();
    database().imp().addListener(&drawn);
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2000);
    const int before = drawn.times;
    note(id).ShowRegion(false);
    const int ofRegion = drawn.times - before;
    tick(window, window.recordTimer());
    EXPECT_EQ(drawn.times, before + 2 * ofRegion + 1) << "the region, then the note itself";
    letGo(window);
    EXPECT_EQ(drawn.times, before + 3 * ofRegion + 2) << "as its sound was put in, the record flag hides the region";
    database().imp().removeListener(&drawn);
}

TEST_F(TagSoundTest, AWindowThatGoesKeepsTheTake) {
    const MxDbObjectId id = addNote();
    hold(openWindow(id), 2000);
    removeTagWindow();
    EXPECT_TRUE(note(id).isRecord());
    EXPECT_EQ(duration(id), L"2.0\"");
    EXPECT_EQ(sound(id).size(), 64u);
}

TEST_F(TagSoundTest, ThirtySecondsAreSaidOnce) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    hold(window, 30'000);
    tick(window, window.recordTimer());
    EXPECT_EQ(printed(), "") << "the longest time has not been passed";
    letGo(window);
    release();
    phonomark::workerCensus().wait(); // all recorders share one flag
    removeTagWindow();
    const MxDbObjectId id = addNote();
    openWindow(id);
    hold(*g_taguidlg, 29'000);
    advance(1'001);
    release(); // the next period is the last
    phonomark::workerCensus().wait();
    tick(*g_taguidlg, g_taguidlg->recordTimer());
    EXPECT_THAT(printed(), HasSubstr("30 s"));
    tick(*g_taguidlg, g_taguidlg->recordTimer());
    EXPECT_EQ(printed(), "");
    letGo(*g_taguidlg);
    EXPECT_EQ(duration(id), L"30.0\"");
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

TEST_F(TagSoundTest, AnUnloadWhileANoteIsRecordedKeepsTheTake) {
    /// Lets the sound device go on once the note has been given its take.
    class LetGo : public merix::db::DatabaseListener {
    public:
        explicit LetGo(std::function<void()> action)
            : m_action(std::move(action)) {}
        void objectGraphicsModified(MxDbObject&) override { m_action(); }

    private:
        std::function<void()> m_action;
    };
    const MxDbObjectId id = addNote();
    hold(openWindow(id), 2000);
    LetGo listener([this] { release(); });
    database().imp().addListener(&listener);
    EXPECT_EQ(mxrxEntryPoint(kUnloadAppMsg, this), 0);
    database().imp().removeListener(&listener);
    EXPECT_FALSE(g_taguidlg);
    ASSERT_EQ(mxrxEntryPoint(kInitAppMsg, this), 0);
    EXPECT_TRUE(note(id).isRecord());
    EXPECT_EQ(note(id).getAudioDataSize(), 64u);
    EXPECT_EQ(duration(id), L"2.0\"");
    EXPECT_EQ(listed(), std::vector<MxDbObjectId>{id});
}
