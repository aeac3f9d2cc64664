// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/play_sound.h"

#include "phonomark/audio/wave_out.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

#include <QElapsedTimer>

#include <thread>

namespace {

class PlaySoundTest : public SoundTest {
protected:
    /// Turns the main thread's event loop until `done`.
    template <class Done> static void turnUntil(const Done& done) {
        while (!done())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
};

class Listening : public CWnd {
public:
    bool PreTranslateMessage(tagMSG* message) override {
        messages.push_back(message->message);
        return false;
    }
    std::vector<unsigned> messages;
};

} // namespace

TEST_F(PlaySoundTest, ANoteHasItsPlayingMarkForASecondMoreThanItsWholeSeconds) {
    const MxDbObjectId id = addRecorded(L"0.4\"");
    note(id).setPhonomarkType(kRegionNote);
    note(id).doHighlight();
    const std::size_t steps = undoSteps().size();
    const tWAVEHDR* before = pWaveHdr.load();
    std::atomic<bool> over = false;
    QElapsedTimer clock;
    clock.start();
    MxDbPhonomark* const played = &note(id);
    std::thread caller([&] {
        EXPECT_EQ(PlaySndFunc(played), nullptr);
        over = true;
    });
    turnUntil([&] { return played->isPlaying() || over; });
    EXPECT_TRUE(played->isPlaying());
    EXPECT_FALSE(note(id).isRegionShown());
    turnUntil([&] { return over.load(); });
    caller.join();
    EXPECT_GE(clock.elapsed(), 1000);
    EXPECT_FALSE(note(id).isPlaying());
    ASSERT_NE(pWaveHdr.load(), before);
    EXPECT_EQ(pWaveHdr.load()->dwBufferLength, 640u);
    EXPECT_EQ(undoSteps().size(), steps) << "nothing that is filed was changed";
    EXPECT_EQ(alsa.count("snd_pcm_open"), 0);
}

TEST_F(PlaySoundTest, OnTheMainThreadItReturnsWhenTheNoteHasSounded) {
    const MxDbObjectId id = addRecorded(L"0.0\"");
    QElapsedTimer clock;
    clock.start();
    PlaySndFunc(&note(id));
    EXPECT_GE(clock.elapsed(), 1000);
    EXPECT_FALSE(note(id).isPlaying());
}

TEST_F(PlaySoundTest, TheDrawingIsHeldUnderItsName) {
    const MxDbObjectId id = addRecorded(L"0.0\"");
    const DocumentLock lock(&document(), L"Other", 298);
    PlaySndFunc(&note(id));
    EXPECT_THAT(printed(), ::testing::HasSubstr("PlaySnd:"));
    EXPECT_FALSE(note(id).isPlaying());
}

TEST_F(PlaySoundTest, TheMarkGoesAlsoFromANoteThatWasErasedMeanwhile) {
    const MxDbObjectId id = addRecorded(L"0.0\"");
    std::atomic<bool> over = false;
    MxDbPhonomark* const played = &note(id);
    std::thread caller([&] {
        PlaySndFunc(played);
        over = true;
    });
    turnUntil([&] { return played->isPlaying() || over; });
    livePhManager()->ErasePhonomark(id, nullptr);
    turnUntil([&] { return over.load(); });
    caller.join();
    EXPECT_FALSE(note(id).isPlaying());
}

TEST_F(PlaySoundTest, TheDrawingMayBeClosedMeanwhile) {
    const MxDbObjectId id = addRecorded(L"0.0\"");
    MxDbPhonomark* const played = &note(id);
    std::atomic<bool> over = false;
    std::thread caller([&] {
        PlaySndFunc(played);
        over = true;
    });
    turnUntil([&] { return played->isPlaying() || over; });
    merix::ap::DocManager::instance().create();
    merix::ap::DocManager::instance().close(document());
    turnUntil([&] { return over.load(); });
    caller.join();
}

TEST_F(PlaySoundTest, NothingIsPlayedOfNoNoteOrOneThatIsErased) {
    const tWAVEHDR* before = pWaveHdr.load();
    EXPECT_EQ(PlaySndFunc(nullptr), nullptr);
    const MxDbObjectId id = addRecorded(L"0.0\"");
    livePhManager()->ErasePhonomark(id, nullptr);
    PlaySndFunc(&note(id));
    EXPECT_EQ(pWaveHdr.load(), before);
}

TEST_F(PlaySoundTest, ATextIsHandedOnAndItsWindowToldAfterTheDelay) {
    Listening window;
    tPlaySndContext context{"12345", 30, &window};
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(PlaySndFuncEx(&context), nullptr);
    EXPECT_GE(clock.elapsed(), 30);
    EXPECT_EQ(pWaveHdr.load()->lpData, context.text);
    EXPECT_EQ(pWaveHdr.load()->dwBufferLength, 5u);
    EXPECT_TRUE(window.messages.empty()) << "it is posted, not sent";
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(window.messages, std::vector<unsigned>{1125});
}

TEST_F(PlaySoundTest, WithoutATextNobodyIsTold) {
    Listening window;
    tPlaySndContext context{nullptr, 0, &window};
    PlaySndFuncEx(&context);
    PlaySndFuncEx(nullptr);
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(window.messages.empty());
}

TEST_F(PlaySoundTest, AWindowThatHasGoneIsNotTold) {
    auto window = std::make_unique<Listening>();
    tPlaySndContext context{"1", 0, window.get()};
    window.reset();
    PlaySndFuncEx(&context);
    QCoreApplication::sendPostedEvents();
}
