// SPDX-License-Identifier: MIT
// How a recording begins on a device that hangs, and how it catches up with the moment of its end.
#include "phonomark/audio/recorder.h"

#include "phonomark/audio/sound_start.h"
#include "tests/phonomark/audio/audio_fixture.h"

#include <algorithm>
#include <cerrno>
#include <chrono>

using phonomark::workerCensus;
using namespace std::chrono_literals;

namespace {

std::atomic<std::int64_t> g_nowMs = 0;
std::int64_t testClock() {
    return g_nowMs;
}

const std::thread::id g_main = std::this_thread::get_id();
std::atomic<bool> g_clockWasAsked = false;

class RecorderEndTest : public AudioTest {
protected:
    RecorderEndTest() { g_nowMs = 1'000'000; }

    bool record() { return recorder.record(buffer.data(), &size); }
    std::uint32_t recorded() { return std::atomic_ref<std::uint32_t>(size).load(); }
    void waitForRecorded(std::uint32_t bytes) {
        while (recorded() < bytes)
            std::this_thread::yield();
    }
    /// Reads give silence, slowly enough for others to do something meanwhile.
    void readSlowly() {
        alsa.read = [](auto*, unsigned long frames) {
            std::this_thread::sleep_for(100us);
            return static_cast<long>(frames);
        };
    }
    /// Whether it comes back at once: it may be held up by the machine, but not every time, and its patience is longer.
    /// `prepare` comes before each attempt, `clean` after it.
    template <class Call>
    static bool isQuick(
        Call call, const std::function<void()>& prepare = [] {}, const std::function<void()>& clean = [] {}) {
        for (int i = 0; i < 20; ++i) {
            prepare();
            const auto start = std::chrono::steady_clock::now();
            call();
            const auto took = std::chrono::steady_clock::now() - start;
            clean();
            if (took < 200ms)
                return true;
        }
        return false;
    }

    std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes);
    std::uint32_t size = 0;
    VkAudioRecorder recorder{&testClock};
};

using RecorderEndDeathTest = RecorderEndTest;

/// What one period after another is read like while a recorder catches up.
struct Reads {
    explicit Reads(AlsaScript& script)
        : alsa(script) {}

    /// The number of the read that begins now, counted from the question to the device.
    int sinceAsked() { return number > 0 || alsa.count("snd_pcm_delay") > 0 ? ++number : 0; }

    AlsaScript& alsa;
    std::atomic<int> number = 0;
    std::atomic<bool> caughtUp = false;
    std::atomic<int> tooEarly = 0;
};

} // namespace

TEST(SoundStartTest, NobodyWaitsTwoSecondsForADevice) {
    EXPECT_LT(phonomark::kOpeningPatience, 2s);
    EXPECT_GE(phonomark::kOpeningPatience, 1s) << "a busy machine needs some time";
}

TEST_F(RecorderEndTest, ADeviceThatDoesNotAnswerIsGivenUpAndItsHandleClosedWhenItDoes) {
    for (const std::string call : {"snd_pcm_open", "snd_pcm_hw_params", "snd_pcm_close"}) {
        alsa.reset();
        alsa.setStatus("snd_pcm_hw_params", call == "snd_pcm_open" ? 0 : -EINVAL);
        alsa.hang(call);
        size = 77;
        Printed printed;
        EXPECT_FALSE(record());
        EXPECT_FALSE(record());
        EXPECT_EQ(alsa.count("snd_pcm_open"), 1) << "at once";
        EXPECT_FALSE(recorder.hasEnded());
        alsa.answer();
        workerCensus().wait();
        printed.take();
        EXPECT_EQ(printed.err, "the sound device does not answer\nthe sound device does not answer\n");
        EXPECT_EQ(alsa.openDevices(), 0);
        EXPECT_EQ(alsa.count("snd_pcm_readi"), 0);
        EXPECT_EQ(size, 77u);
    }
    alsa.reset();
    readSlowly();
    ASSERT_TRUE(record());
    waitForRecorded(640);
    recorder.stop();
}

TEST_F(RecorderEndTest, AnOpeningThatFailsDoesNotReviveAStoppedRecording) {
    std::latch letGo(1);
    alsa.read = [&](auto*, unsigned long frames) {
        letGo.wait();
        return static_cast<long>(frames);
    };
    ASSERT_TRUE(record());
    recorder.stop();
    alsa.setStatus("snd_pcm_hw_params_any", -EINVAL);
    const Printed printed;
    EXPECT_FALSE(record());
    letGo.count_down();
    workerCensus().wait();
    EXPECT_EQ(size, 0u);
}

TEST_F(RecorderEndTest, ARecordingHasEndedWhenItsWorkerTakesNoMore) {
    EXPECT_FALSE(recorder.hasEnded());
    readSlowly();
    ASSERT_TRUE(record());
    EXPECT_FALSE(recorder.hasEnded());
    waitForRecorded(640);
    g_nowMs += VkAudioRecorder::kLongestMs + 1;
    while (!recorder.hasEnded())
        std::this_thread::yield();
    ASSERT_TRUE(record());
    EXPECT_FALSE(recorder.hasEnded()) << "this one has not";
    recorder.stop();
    workerCensus().wait();
    EXPECT_TRUE(recorder.hasEnded());
    alsa.grantedPeriod = 250'000; // five chunks of it
    const Printed printed;
    ASSERT_TRUE(record());
    workerCensus().wait();
    EXPECT_EQ(size, VkAudioRecorder::kBufferBytes);
    EXPECT_TRUE(recorder.hasEnded());
}

TEST_F(RecorderEndTest, ARecordingHasEndedBeforeItsDeviceIsClosed) {
    readSlowly();
    alsa.hang("snd_pcm_drop");
    ASSERT_TRUE(record());
    recorder.stop();
    alsa.waitUntilItHangs();
    EXPECT_TRUE(recorder.hasEnded());
    alsa.answer();
}

TEST_F(RecorderEndDeathTest, ARecordingThatEndsTheProcessHasEnded) {
    for (const long error : {-19L, -32L}) {
        EXPECT_EXIT(
            {
                static std::atomic<bool> seen = false;
                g_atShutdown = [] { seen.wait(false); };
                alsa.setStatus("snd_pcm_prepare", -EIO);
                alsa.read = [error](auto*, unsigned long) { return error; };
                record();
                while (!recorder.hasEnded())
                    std::this_thread::yield();
                recorder.catchUp();
                seen = true;
                seen.notify_all();
                std::this_thread::sleep_for(20s);
            },
            testing::ExitedWithCode(1), "the host ends the process");
    }
}

TEST_F(RecorderEndTest, CatchingUpReadsAllThatTheDeviceHadTaken) {
    Reads reads(alsa);
    alsa.delay = 100; // six periods and a quarter
    alsa.read = [&](auto*, unsigned long frames) {
        const int number = reads.sinceAsked();
        std::this_thread::sleep_for(1ms);
        if (number >= 1 && number <= 7)
            reads.tooEarly += reads.caughtUp ? 1 : 0;
        if (number == 8)
            reads.caughtUp.wait(false); // it does not need this one
        return static_cast<long>(frames);
    };
    ASSERT_TRUE(record());
    waitForRecorded(640);
    EXPECT_TRUE(isQuick([&] {
        recorder.catchUp();
        reads.caughtUp = true;
        reads.caughtUp.notify_all();
    }));
    recorder.stop();
    workerCensus().wait();
    EXPECT_EQ(reads.tooEarly, 0);
}

TEST_F(RecorderEndTest, EachQuestionIsPutToTheDevice) {
    readSlowly();
    alsa.delay = 64;
    ASSERT_TRUE(record());
    recorder.catchUp();
    const std::uint32_t before = recorded();
    recorder.catchUp();
    EXPECT_GE(recorded(), before + 5 * 64) << "the period that was under way and four more";
    EXPECT_EQ(alsa.count("snd_pcm_delay"), 2);
    recorder.stop();
}

TEST_F(RecorderEndTest, NothingOutstandingAndADeviceThatCannotTellAreNotWaitedFor) {
    readSlowly();
    ASSERT_TRUE(record());
    EXPECT_TRUE(isQuick([this] { recorder.catchUp(); }));
    alsa.delay = 1'000'000;
    alsa.setStatus("snd_pcm_delay", -EPIPE);
    EXPECT_TRUE(isQuick([this] { recorder.catchUp(); }));
    recorder.stop();
}

TEST_F(RecorderEndTest, WhatWasTakenAfterTheCallIsNotWaitedFor) {
    // Ten frames a millisecond. The read that is under way lasts for 101 more; by its end the device holds 1600 frames,
    // about 700 of which it has taken since the question.
    VkAudioRecorder asking([]() -> std::int64_t {
        if (std::this_thread::get_id() == g_main) {
            g_clockWasAsked = true;
            g_clockWasAsked.notify_all();
        }
        return g_nowMs;
    });
    std::unique_ptr<Reads> reads;
    std::unique_ptr<std::latch> underWay;
    const auto prepare = [&] {
        alsa.reset();
        alsa.grantedPeriod = 10;
        alsa.delay = 1600;
        reads = std::make_unique<Reads>(alsa);
        underWay = std::make_unique<std::latch>(1);
        g_clockWasAsked = false;
        alsa.read = [&, done = 0](auto*, unsigned long frames) mutable {
            const int number = reads->sinceAsked();
            if (++done == 200) {
                underWay->count_down();
                g_clockWasAsked.wait(false);
                g_nowMs += 101;
            }
            if (number >= 70 && number <= 80)
                std::this_thread::sleep_for(500us); // who is told too early comes back meanwhile
            if (number == 110)
                reads->caughtUp.wait(false); // it does not need this one
            g_nowMs += done < 200 ? 1 : 0;
            return static_cast<long>(frames);
        };
        ASSERT_TRUE(asking.record(buffer.data(), &size));
        underWay->wait();
    };
    const auto clean = [&] {
        reads->caughtUp = true;
        reads->caughtUp.notify_all();
        asking.stop();
        workerCensus().wait();
    };
    int number = 0;
    EXPECT_TRUE(isQuick(
        [&] {
            asking.catchUp();
            number = reads->number;
        },
        prepare, clean));
    EXPECT_GE(number, 90);
}

TEST_F(RecorderEndTest, CatchingUpEndsWithTheRecording) {
    alsa.delay = 1'000'000;
    EXPECT_TRUE(isQuick([this] {
        alsa.read = [reads = 0](auto*, unsigned long frames) mutable {
            std::this_thread::sleep_for(100us);
            g_nowMs += ++reads > 100 ? VkAudioRecorder::kLongestMs + 1 : 0;
            return static_cast<long>(frames);
        };
        ASSERT_TRUE(record());
        recorder.catchUp();
        EXPECT_TRUE(recorder.hasEnded());
        workerCensus().wait();
    }));
}

TEST_F(RecorderEndTest, WithoutARecordingThereIsNothingToCatchUpWith) {
    recorder.catchUp();
    alsa.hang("snd_pcm_readi");
    ASSERT_TRUE(record());
    alsa.waitUntilItHangs();
    recorder.stop();
    EXPECT_TRUE(isQuick([this] { recorder.catchUp(); })) << "the worker would not answer";
    alsa.answer();
    workerCensus().wait();
    EXPECT_EQ(alsa.count("snd_pcm_delay"), 0);
}

TEST_F(RecorderEndTest, ADeviceThatHangsHoldsUpNobodyWhoCatchesUp) {
    alsa.delay = 100;
    alsa.hang("snd_pcm_readi");
    ASSERT_TRUE(record());
    alsa.waitUntilItHangs();
    recorder.catchUp();
    recorder.stop();
    EXPECT_FALSE(recorder.hasEnded());
    alsa.answer();
    workerCensus().wait();
    EXPECT_EQ(size, 0u);
}
