// SPDX-License-Identifier: MIT
// Through the real libasound and a real sound server: what is spoken into the microphone is what the note holds, and
// what the note holds is what the loudspeaker is given.
#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"
#include "phonomark/audio/worker_census.h"
#include "tests/phonomark/audio/sound_server.h"
#include "tools/soundcheck/correlate.h"
#include "tools/soundcheck/note_stream.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using soundcheck::Likeness;
using soundcheck::Sound;

namespace {

constexpr const char* kSpeech = MERIX_BINARY_DIR "/speech/spoken.wav";

struct Granted {
    unsigned rate = 0;
    unsigned period = 0;
};

class RealSoundTest : public testing::TestWithParam<std::string> {
protected:
    RealSoundTest() { setenv("PHONOMARK_AUDIO_LOG", server.path("granted").c_str(), 1); }

    Granted granted(const std::string& direction) const {
        std::ifstream log(server.path("granted"));
        Granted found;
        for (std::string line; std::getline(log, line);) {
            if (line.starts_with(direction))
                std::sscanf(line.c_str() + direction.size(), " rate=%u period=%u", &found.rate, &found.period);
        }
        return found;
    }

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

} // namespace

TEST_P(RealSoundTest, WhatIsSpokenIsRecordedAndHeardAgain) {
    const Sound spoken = soundcheck::readSound(kSpeech);
    const double speechMs = static_cast<double>(spoken.samples.size()) * 1000 / spoken.rate;
    VkAudioRecorder recorder;
    ASSERT_TRUE(recorder.record(buffer.data(), &size));
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
    EXPECT_NEAR(static_cast<double>(recorded.samples.size()) * 1000 / capture.rate, recorder.getTimeMs(), 500);

    VkAudioPlayer player;
    ASSERT_TRUE(player.play(buffer.data(), size));
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
    ASSERT_TRUE(recorder.record(buffer.data(), &size));
    recorder.stop();
    phonomark::workerCensus().wait();
    EXPECT_LE(size, granted("capture").period * 4);
    VkAudioPlayer player;
    ASSERT_TRUE(player.play(buffer.data(), VkAudioRecorder::kBufferBytes));
    player.stop();
    phonomark::workerCensus().wait(); // much sooner than the thirty seconds of the buffer
}

INSTANTIATE_TEST_SUITE_P(Servers, RealSoundTest, testing::Values("pulseaudio", "pipewire"),
                         [](const auto& parameter) { return parameter.param; });
