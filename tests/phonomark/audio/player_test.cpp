// SPDX-License-Identifier: MIT
#include "phonomark/audio/player.h"

#include "tests/phonomark/audio/audio_fixture.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <numeric>

using phonomark::workerCensus;

namespace {

using Periods = std::vector<std::vector<std::int16_t>>;

class PlayerTest : public AudioTest {
protected:
    PlayerTest() {
        alsa.write = [this](const std::int16_t* samples, unsigned long frames) {
            written.emplace_back(samples, samples + frames);
            return static_cast<long>(frames);
        };
    }

    /// A stored note of `periods` periods of `frames` samples, counted through from 1.
    static std::vector<char> note(int periods, int frames = 16) {
        std::vector<std::int16_t> samples;
        for (int period = 0; period < periods; ++period) {
            for (int i = 0; i < frames; ++i)
                samples.push_back(static_cast<std::int16_t>(period * frames + i + 1));
            samples.insert(samples.end(), static_cast<std::size_t>(frames), 0);
        }
        std::vector<char> bytes(samples.size() * 2);
        if (!bytes.empty())
            std::memcpy(bytes.data(), samples.data(), bytes.size());
        return bytes;
    }

    static std::vector<std::int16_t> counted(int from, int count) {
        std::vector<std::int16_t> samples(static_cast<std::size_t>(count));
        std::iota(samples.begin(), samples.end(), static_cast<std::int16_t>(from));
        return samples;
    }

    void expectRefusal(const std::string& call, int status, const std::string& err, const std::string& out = "") {
        SCOPED_TRACE(call);
        alsa.reset();
        alsa.setStatus(call, status);
        Printed here;
        VkAudioPlayer player;
        EXPECT_FALSE(player.play("", 0));
        workerCensus().wait();
        here.take();
        EXPECT_EQ(here.err, err);
        EXPECT_EQ(here.out, out);
        EXPECT_EQ(alsa.count("snd_pcm_writei"), 0);
        EXPECT_EQ(alsa.openDevices(), 0);
        EXPECT_EQ(alsa.parameterBlocks(), 0);
    }

    const std::vector<std::int16_t> silence = std::vector<std::int16_t>(16);
    Periods written;
    Printed printed;
};

using PlayerDeathTest = PlayerTest;

constexpr const char* kClosing = "start close play pcm\nend close play pcm\n";

} // namespace

TEST_F(PlayerTest, AsksForFortyKilohertzMonoInAFixedOrderOfCallsAndDrains) {
    list(""); // playback does not look at the listing
    VkAudioPlayer player;
    alsa.grantedBuffer = 48;
    EXPECT_TRUE(player.play("", 0));
    workerCensus().wait();
    const std::vector<std::string> expected = {
        "snd_pcm_open default playback 0",
        "snd_pcm_hw_params_malloc",
        "snd_pcm_hw_params_any",
        "snd_pcm_hw_params_set_access interleaved",
        "snd_pcm_hw_params_set_format s16le",
        "snd_pcm_hw_params_set_rate_near 40000 0",
        "snd_pcm_hw_params_set_channels 1",
        "snd_pcm_hw_params_set_buffer_size_near 32",
        "snd_pcm_hw_params_set_period_size_near 24",
        "snd_pcm_hw_params",
        "snd_pcm_hw_params_get_period_size",
        "snd_pcm_writei 24",
        "snd_pcm_drain",
        "snd_pcm_close",
    };
    std::vector<std::string> calls = alsa.calls();
    std::erase(calls, "snd_pcm_hw_params_free"); // on the caller's thread, at any time from here on
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(alsa.parameterBlocks(), 0);
    printed.take();
    EXPECT_EQ(printed.err, "size = 96\n");
    EXPECT_EQ(printed.out, kClosing);
}

TEST_F(PlayerTest, ANoteOfNoBytesSoundsAsOnePeriodOfSilence) {
    VkAudioPlayer player;
    EXPECT_TRUE(player.play(nullptr, 0));
    workerCensus().wait();
    EXPECT_EQ(written, (Periods{silence}));
    EXPECT_EQ(alsa.count("snd_pcm_drain"), 1);
    EXPECT_EQ(alsa.openDevices(), 0);
}

TEST_F(PlayerTest, TheZerosBehindEachPeriodAreSkippedSoThatTheSoundHasNoGap) {
    const std::vector<char> bytes = note(3);
    VkAudioPlayer player;
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    workerCensus().wait();
    EXPECT_EQ(written, (Periods{counted(1, 16), counted(17, 16), counted(33, 16), silence}))
        << "whole chunks are followed by a period of silence";
}

TEST_F(PlayerTest, WithAnotherPeriodThePaddingSoundsInWrongPlaces) {
    const std::vector<char> bytes = note(1, 16);
    alsa.grantedPeriod = 8;
    VkAudioPlayer player;
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    workerCensus().wait();
    const std::vector<std::int16_t> quiet(8);
    EXPECT_EQ(written, (Periods{counted(1, 8), quiet, quiet})) << "samples 9 to 16 are taken for padding";
}

TEST_F(PlayerTest, NoByteBehindTheNoteIsReadAndTheLastPeriodIsFilledUpWithZeros) {
    for (std::uint32_t size = 0; size <= 130; ++size) {
        written.clear();
        std::vector<char> bytes = note(3);
        bytes.resize(size);
        bytes.shrink_to_fit(); // AddressSanitizer sees a read behind it
        VkAudioPlayer player;
        ASSERT_TRUE(player.play(bytes.data(), size));
        workerCensus().wait();
        ASSERT_EQ(written.size(), size / 64 + 1u) << size;
        bytes.resize(written.size() * 64);
        for (std::size_t i = 0; i < written.size(); ++i)
            EXPECT_EQ(std::memcmp(written[i].data(), &bytes[i * 64], 32), 0) << size;
    }
}

TEST_F(PlayerTest, AStopLetsTheCurrentWriteCompleteAndDrains) {
    const std::vector<char> bytes = note(100);
    VkAudioPlayer player;
    alsa.write = [&](const std::int16_t* samples, unsigned long frames) {
        written.emplace_back(samples, samples + frames);
        if (written.size() == 2) {
            EXPECT_TRUE(player.stop());
        }
        return static_cast<long>(frames);
    };
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    workerCensus().wait();
    EXPECT_EQ(written, (Periods{counted(1, 16), counted(17, 16)}));
    EXPECT_EQ(alsa.count("snd_pcm_drain"), 1);
    EXPECT_EQ(alsa.openDevices(), 0);
    printed.take();
    EXPECT_EQ(printed.out, kClosing);
}

TEST_F(PlayerTest, AStopRightAfterTheStartIsNotUndone) {
    const std::vector<char> bytes = note(10);
    std::latch stopped(1);
    alsa.write = [&](const std::int16_t* samples, unsigned long frames) {
        stopped.wait();
        written.emplace_back(samples, samples + frames);
        return static_cast<long>(frames);
    };
    VkAudioPlayer player;
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    player.stop();
    stopped.count_down();
    workerCensus().wait();
    EXPECT_EQ(written.size(), 1u);
}

TEST_F(PlayerTest, AnUnderrunSkipsNothingAndRepeatsNothing) {
    const std::vector<char> bytes = note(3);
    alsa.setStatus("snd_pcm_prepare", -EIO); // its result does not matter
    alsa.write = [&](const std::int16_t* samples, unsigned long frames) {
        written.emplace_back(samples, samples + frames);
        return written.size() == 2 ? -32L : static_cast<long>(frames);
    };
    VkAudioPlayer player;
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    workerCensus().wait();
    EXPECT_EQ(written, (Periods{counted(1, 16), counted(17, 16), counted(33, 16), silence}));
    EXPECT_EQ(alsa.count("snd_pcm_prepare"), 1);
    printed.take();
    EXPECT_EQ(printed.err, "size = 64\nunderrun occurred\n");
}

TEST_F(PlayerTest, AWriteErrorIsReportedAndPassedOver) {
    const std::vector<char> bytes = note(2);
    alsa.write = [&](const std::int16_t* samples, unsigned long frames) {
        written.emplace_back(samples, samples + frames);
        return -5L;
    };
    VkAudioPlayer player;
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    workerCensus().wait();
    EXPECT_EQ(written, (Periods{counted(1, 16), counted(17, 16), silence}));
    EXPECT_EQ(alsa.count("snd_pcm_prepare"), 0);
    printed.take();
    const std::string line = "error from writei: status -5\n";
    EXPECT_EQ(printed.err, "size = 64\n" + line + line + line);
}

TEST_F(PlayerTest, APartialWriteIsNotRetried) {
    const std::vector<char> bytes = note(2);
    alsa.write = [&](const std::int16_t* samples, unsigned long frames) {
        written.emplace_back(samples, samples + frames);
        return 3L;
    };
    VkAudioPlayer player;
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    workerCensus().wait();
    EXPECT_EQ(written, (Periods{counted(1, 16), counted(17, 16), silence}));
    printed.take();
    EXPECT_EQ(printed.err, "size = 64\n");
}

TEST_F(PlayerTest, ADrainErrorIsReportedAndTheDeviceClosedAnyway) {
    alsa.setStatus("snd_pcm_drain", -EBADFD);
    VkAudioPlayer player;
    ASSERT_TRUE(player.play("", 0));
    workerCensus().wait();
    EXPECT_EQ(alsa.openDevices(), 0);
    printed.take();
    EXPECT_EQ(printed.err, "size = 64\nsnd_pcm_drain: status -77\n");
    EXPECT_EQ(printed.out, kClosing);
}

TEST_F(PlayerTest, AStepThatFailsIsNamedAndNothingStaysOpen) {
    printed.take();
    expectRefusal("snd_pcm_open", -EBUSY, "snd_pcm_open: Device or resource busy\n");
    for (const std::string call :
         {"snd_pcm_hw_params_any", "snd_pcm_hw_params_set_access", "snd_pcm_hw_params_set_format",
          "snd_pcm_hw_params_set_rate_near", "snd_pcm_hw_params_set_channels", "snd_pcm_hw_params_get_period_size"})
        expectRefusal(call, -EINVAL, call + ": Invalid argument\n");
}

TEST_F(PlayerTest, ARefusedBufferSizeEndsTheAttempt) {
    printed.take();
    expectRefusal("snd_pcm_hw_params_set_buffer_size_near", -EINVAL, "", "Unable to set buffer size 64 : status -22\n");
}

TEST_F(PlayerTest, ARefusedPeriodSizeIsReportedAndIgnored) {
    alsa.setStatus("snd_pcm_hw_params_set_period_size_near", -EPERM);
    VkAudioPlayer player;
    EXPECT_TRUE(player.play("", 0));
    workerCensus().wait();
    EXPECT_EQ(written.size(), 1u);
    printed.take();
    EXPECT_EQ(printed.out, std::string("Unable to set period size 16 : status -1\n") + kClosing);
}

TEST_F(PlayerDeathTest, WithoutAParameterBlockTheProcessEnds) {
    printed.take();
    EXPECT_EXIT(
        {
            alsa.setStatus("snd_pcm_hw_params_malloc", -ENOMEM);
            VkAudioPlayer().play("", 0);
        },
        testing::ExitedWithCode(1), "snd_pcm_hw_params_malloc: Cannot allocate memory\nthe host ends the process");
}

TEST_F(PlayerDeathTest, ParametersThatCannotBeAppliedEndTheProcess) {
    printed.take();
    EXPECT_EXIT(
        {
            alsa.setStatus("snd_pcm_hw_params", -EINVAL);
            VkAudioPlayer().play("", 0);
        },
        testing::ExitedWithCode(1), "snd_pcm_hw_params: Invalid argument\nthe host ends the process");
}

TEST_F(PlayerTest, APlaybackOutlivesItsPlayerAndKeepsItsBytes) {
    auto bytes = std::make_shared<std::vector<char>>(note(5));
    const std::weak_ptr<std::vector<char>> watched = bytes;
    std::latch released(1);
    alsa.write = [&](const std::int16_t* samples, unsigned long frames) {
        released.wait();
        written.emplace_back(samples, samples + frames);
        return static_cast<long>(frames);
    };
    auto player = std::make_unique<VkAudioPlayer>();
    ASSERT_TRUE(player->play(bytes->data(), static_cast<std::uint32_t>(bytes->size()), bytes));
    player.reset();
    bytes.reset();
    EXPECT_FALSE(watched.expired());
    released.count_down();
    workerCensus().wait();
    EXPECT_EQ(written.size(), 6u);
    EXPECT_EQ(written[4], counted(65, 16));
    EXPECT_TRUE(watched.expired());
}
