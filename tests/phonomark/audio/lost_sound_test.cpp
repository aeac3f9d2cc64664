// SPDX-License-Identifier: MIT
// A real sound server that stops answering or dies, before and while sound is moved.
#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"
#include "phonomark/audio/worker_census.h"
#include "tests/phonomark/audio/audio_fixture.h"
#include "tests/phonomark/audio/counting_microphone.h"

#include <thread>

using phonomark::workerCensus;

namespace {

class LostSoundTest : public testing::TestWithParam<std::string> {
protected:
    bool record(VkAudioRecorder& recorder) { return recorder.record(buffer.data(), &size); }
    bool play(VkAudioPlayer& player) const { return player.play(buffer.data(), VkAudioRecorder::kBufferBytes); }
    bool begin(VkAudioRecorder& recorder) {
        size = 0;
        return pressAgainUntil([&] { return record(recorder); });
    }
    bool begin(VkAudioPlayer& player) const {
        return pressAgainUntil([&] { return play(player); });
    }
    std::uint32_t recorded() { return std::atomic_ref<std::uint32_t>(size).load(); }
    void waitForRecorded(std::uint32_t bytes) {
        while (recorded() < bytes)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    int sampleAt(std::size_t byte) const {
        std::int16_t sample = 0;
        std::memcpy(&sample, &buffer[byte], sizeof sample);
        return sample;
    }
    static int lines(const std::string& text, const std::string& with) {
        int count = 0;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);)
            count += line.find(with) != std::string::npos ? 1 : 0;
        return count;
    }

    static constexpr const char* kNoAnswer = "the sound device does not answer";

    CountingMicrophone microphone{GetParam()};
    std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes);
    std::uint32_t size = 0;
};

} // namespace

TEST_P(LostSoundTest, AServerThatStoppedHoldsUpNoStartAndServesAgainWhenItGoesOn) {
    VkAudioRecorder recorder;
    VkAudioPlayer player;
    Printed printed;
    microphone.server.signal(SIGSTOP);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(record(recorder));
        EXPECT_FALSE(play(player));
    }
    microphone.server.signal(SIGCONT);
    workerCensus().wait();
    ASSERT_TRUE(begin(recorder));
    ASSERT_TRUE(begin(player));
    waitForRecorded(10'000);
    recorder.stop();
    player.stop();
    workerCensus().wait();
    printed.take();
    EXPECT_GE(lines(printed.err, kNoAnswer), 6) << printed.err;
    EXPECT_FALSE(player.hasFailed());
}

TEST_P(LostSoundTest, AServerThatStopsInMidTakeAndMidPlayHoldsUpNothing) {
    VkAudioRecorder recorder;
    VkAudioPlayer player;
    const Printed printed;
    ASSERT_TRUE(begin(recorder));
    ASSERT_TRUE(begin(player));
    waitForRecorded(10'000);
    microphone.server.signal(SIGSTOP);
    recorder.catchUp();
    recorder.stop();
    player.stop();
    EXPECT_FALSE(record(recorder));
    EXPECT_FALSE(play(player));
    microphone.server.signal(SIGCONT);
    workerCensus().wait();
    EXPECT_TRUE(recorder.hasEnded());
    EXPECT_GE(recorded(), 10'000u);
}

TEST_P(LostSoundTest, AServerThatDiesInMidPlayIsToldOfOnceAndTheWorkerEnds) {
    VkAudioPlayer player;
    Printed printed;
    ASSERT_TRUE(begin(player));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_FALSE(player.hasFailed());
    microphone.server.signal(SIGKILL);
    workerCensus().wait();
    EXPECT_TRUE(player.hasFailed());
    EXPECT_FALSE(play(player));
    EXPECT_FALSE(player.hasFailed());
    printed.take();
    EXPECT_LE(lines(printed.err, "error from writei"), 1) << printed.err;
    EXPECT_LE(lines(printed.err, "underrun occurred"), 1) << printed.err;
    EXPECT_GE(lines(printed.err, ""), 1);
}

TEST_P(LostSoundTest, AServerThatDiesInMidTakeEndsTheProcessThroughTheHostAndTheTakeCanBeRead) {
    std::latch asked(1);
    g_atShutdown = [&asked] {
        asked.count_down();
        for (;;)
            pause(); // the process is ending
    };
    VkAudioRecorder recorder;
    Printed printed;
    ASSERT_TRUE(begin(recorder));
    waitForRecorded(40'000);
    microphone.server.signal(SIGKILL);
    asked.wait();
    recorder.catchUp();
    workerCensus().wait(); // not for the worker that ends the process
    printed.take();
    EXPECT_TRUE(recorder.hasEnded());
    EXPECT_NE(printed.err, "");
    ASSERT_GE(recorded(), 40'000u);
    const int period = 64;
    for (std::size_t i = 1; i < period; ++i)
        EXPECT_EQ(sampleAt(2 * i) - sampleAt(2 * i - 2), 1);
}

INSTANTIATE_TEST_SUITE_P(Servers, LostSoundTest, testing::Values("pulseaudio", "pipewire"),
                         [](const auto& parameter) { return parameter.param; });
