// SPDX-License-Identifier: MIT
// Through the real libasound and a real sound server: what is spoken into the microphone is what the note holds, and
// what the note holds is what the loudspeaker is given.
#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"
#include "phonomark/audio/worker_census.h"
#include "tests/phonomark/audio/counted_sound.h"
#include "tools/soundcheck/correlate.h"
#include "tools/soundcheck/note_stream.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using soundcheck::Likeness;
using soundcheck::Sound;

namespace {

constexpr const char* kSpeech = MERIX_BINARY_DIR "/speech/spoken.wav";

class RealSoundTest : public testing::TestWithParam<std::string> {
protected:
    RealSoundTest() { setenv("PHONOMARK_AUDIO_LOG", server.path("granted").c_str(), 1); }

    Granted granted(const std::string& direction) const { return lastGranted(server.path("granted"), direction); }

    /// Until the recording holds so many milliseconds of sound, by its own count.
    void waitForRecorded(double ms) {
        const std::atomic_ref<std::uint32_t> count(size);
        while (count.load() < ms * 160 && count.load() + 40'000 < VkAudioRecorder::kBufferBytes)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    static void expectWhole(const Likeness& likeness) {
        SCOPED_TRACE(soundcheck::toJson(likeness));
        EXPECT_GE(likeness.peak, 0.99);
        EXPECT_GE(likeness.first100Ms, 0.95);
        EXPECT_GE(likeness.last100Ms, 0.95);
        EXPECT_NEAR(likeness.gain, 1, 0.05);
        EXPECT_TRUE(likeness.gaps.empty());
    }

    SoundServer server{GetParam(), kSpeech};
    std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes);
    std::uint32_t size = 0;
};

class RealEndOfSpeechTest : public testing::TestWithParam<std::string> {
protected:
    RealEndOfSpeechTest() { setenv("PHONOMARK_AUDIO_LOG", microphone.server.path("granted").c_str(), 1); }

    CountingMicrophone microphone{GetParam()};
    std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes);
    std::uint32_t size = 0;
};

} // namespace

TEST_P(RealSoundTest, WhatIsSpokenIsRecordedAndHeardAgain) {
    const Sound spoken = soundcheck::readSound(kSpeech);
    const double speechMs = static_cast<double>(spoken.samples.size()) * 1000 / spoken.rate;
    VkAudioRecorder recorder;
    ASSERT_TRUE(pressAgainUntil([&] { return recorder.record(buffer.data(), &size); }));
    waitForRecorded(300);
    server.speak();
    waitForRecorded(300 + speechMs + 1500);
    recorder.stop();
    phonomark::workerCensus().wait();

    const Granted capture = granted("capture");
    EXPECT_EQ(capture.rate, 40'000u);
    const std::vector<unsigned char> stored(buffer.begin(), buffer.begin() + size);
    const Sound recorded{capture.rate, soundcheck::samplesOfNote(stored, capture.period)};
    const Likeness asRecorded = soundcheck::compare(spoken, recorded);
    expectWhole(asRecorded);
    if (HasFailure()) // for people to listen to
        soundcheck::writeWav(MERIX_BINARY_DIR "/speech/failed-" + GetParam() + ".wav", recorded);
    EXPECT_NEAR(static_cast<double>(recorded.samples.size()) * 1000 / capture.rate, recorder.getTimeMs(), 500);

    VkAudioPlayer player;
    ASSERT_TRUE(pressAgainUntil([&] { return player.play(buffer.data(), size); }));
    phonomark::workerCensus().wait();
    const Granted playback = granted("playback");
    EXPECT_EQ(playback.rate, 40'000u);
    EXPECT_EQ(playback.period, capture.period) << "or the padding would sound in wrong places";
    server.heard(server.path("heard.wav"));
    const Likeness asHeard = soundcheck::compare(spoken, soundcheck::readSound(server.path("heard.wav")));
    expectWhole(asHeard);
    RecordProperty("recorded", soundcheck::toJson(asRecorded));
    RecordProperty("heard", soundcheck::toJson(asHeard));
}

TEST_P(RealSoundTest, AStopRightAfterTheStartLeavesNothing) {
    VkAudioRecorder recorder;
    ASSERT_TRUE(pressAgainUntil([&] { return recorder.record(buffer.data(), &size); }));
    recorder.stop();
    phonomark::workerCensus().wait();
    EXPECT_LE(size, granted("capture").period * 4);
    VkAudioPlayer player;
    ASSERT_TRUE(pressAgainUntil([&] { return player.play(buffer.data(), VkAudioRecorder::kBufferBytes); }));
    player.stop();
    phonomark::workerCensus().wait(); // much sooner than the thirty seconds of the buffer
}

TEST(RealMicrophoneTest, MissingSamplesAreThoseFromTheLastOneToTheEnd) {
    using Microphone = CountingMicrophone;
    EXPECT_EQ(Microphone::missing(100, Microphone::sample(99)), 0);
    EXPECT_EQ(Microphone::missing(100, Microphone::sample(89)), 10);
    EXPECT_EQ(Microphone::missing(100, Microphone::sample(109)), -10);
    EXPECT_EQ(Microphone::missing(Microphone::kCount + 5, Microphone::sample(Microphone::kCount - 1)), 5);
    EXPECT_EQ(Microphone::missing(Microphone::kCount, Microphone::sample(Microphone::kCount + 4)), -5);
}

/// What is said until the release is in the note, however late the server hands it over.
TEST_P(RealEndOfSpeechTest, TheNoteHoldsAllThatWasTakenBeforeTheRelease) {
    constexpr int kTakes = 10;
    int whole = 0;
    for (int take = 0; take < kTakes; ++take) {
        VkAudioRecorder recorder;
        size = 0;
        ASSERT_TRUE(pressAgainUntil([&] { return recorder.record(buffer.data(), &size); }));
        while (std::atomic_ref<std::uint32_t>(size).load() < 50'000)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const std::int64_t end = microphone.taken();
        recorder.catchUp();
        recorder.stop();
        const std::uint32_t count = std::atomic_ref<std::uint32_t>(size).load();
        phonomark::workerCensus().wait();
        std::int16_t last = 0; // of the last period, before its padding
        const std::size_t period = lastGranted(microphone.server.path("granted"), "capture").period;
        std::memcpy(&last, &buffer[count - period * 2 - sizeof last], sizeof last);
        whole += CountingMicrophone::missing(end, last) <= 0 ? 1 : 0;
    }
    EXPECT_GE(whole, kTakes - 2) << "but where the machine held up the worker for long";
}

TEST_P(RealEndOfSpeechTest, ShortTakesAndPlaybacksLeaveNoThreadAndNoOpenFile) {
    const auto entries = [](const char* folder) {
        return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
    };
    std::ptrdiff_t threads = 0;
    std::ptrdiff_t files = 0;
    for (int i = 0; i < 22; ++i) {
        if (i == 2) { // what is made once has been made
            threads = entries("/proc/self/task");
            files = entries("/proc/self/fd");
        }
        VkAudioRecorder recorder;
        size = 0;
        ASSERT_TRUE(pressAgainUntil([&] { return recorder.record(buffer.data(), &size); }));
        while (std::atomic_ref<std::uint32_t>(size).load() < 2'000)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        recorder.stop();
        VkAudioPlayer player;
        ASSERT_TRUE(pressAgainUntil([&] { return player.play(buffer.data(), 2'000); }));
        phonomark::workerCensus().wait();
    }
    EXPECT_EQ(entries("/proc/self/task"), threads);
    EXPECT_EQ(entries("/proc/self/fd"), files);
}

INSTANTIATE_TEST_SUITE_P(Servers, RealEndOfSpeechTest, testing::Values("pulseaudio", "pipewire"),
                         [](const auto& parameter) { return parameter.param; });
INSTANTIATE_TEST_SUITE_P(Servers, RealSoundTest, testing::Values("pulseaudio", "pipewire"),
                         [](const auto& parameter) { return parameter.param; });
