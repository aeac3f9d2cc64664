// SPDX-License-Identifier: MIT
#include "phonomark/audio/player.h"

#include "phonomark/audio/recorder.h"
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
        "snd_pcm_hw_params_free",
        "snd_pcm_writei 24",
        "snd_pcm_drain",
        "snd_pcm_close",
    };
    EXPECT_EQ(alsa.calls(), expected);
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

TEST_F(PlayerTest, WriteErrorsArePassedOverAndToldOfOnceUntilAWriteSucceeds) {
    const std::vector<long> results = {-5, -5, 16, -5, -19, -5, -19, -32, -32, 16, -32, 16, -32, 16};
    const std::vector<char> bytes = note(static_cast<int>(results.size()) - 1);
    VkAudioPlayer player;
    std::vector<bool> failed;
    alsa.write = [&](const std::int16_t* samples, unsigned long frames) {
        failed.push_back(player.hasFailed());
        written.emplace_back(samples, samples + frames);
        return results[written.size() - 1];
    };
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    workerCensus().wait();
    ASSERT_EQ(written.size(), results.size());
    EXPECT_EQ(written[4], counted(65, 16));
    EXPECT_EQ(alsa.count("snd_pcm_prepare"), 4) << "one for each underrun";
    printed.take();
    EXPECT_EQ(printed.err, "size = 64\nerror from writei: status -5\nerror from writei: status -5\n"
                           "error from writei: status -19\nunderrun occurred\nunderrun occurred\nunderrun occurred\n");
    EXPECT_EQ(failed, (std::vector<bool>{false, true, true, false, true, true, true, true, true, true, false, false,
                                         false, false}));
    EXPECT_FALSE(player.hasFailed()) << "sound is taken again";
}

TEST_F(PlayerTest, OneUnderrunIsNoLossASecondBeforeAWriteSucceedsIs) {
    const std::vector<char> bytes = note(2);
    VkAudioPlayer player;
    std::vector<bool> failed;
    alsa.write = [&](auto*, unsigned long) {
        failed.push_back(player.hasFailed());
        return -32L;
    };
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    workerCensus().wait();
    EXPECT_EQ(failed, (std::vector<bool>{false, false, true}));
    EXPECT_TRUE(player.hasFailed());
    alsa.setStatus("snd_pcm_open", -EBUSY);
    EXPECT_FALSE(player.play("", 0));
    EXPECT_FALSE(player.hasFailed()) << "each attempt begins anew";
}

TEST_F(PlayerTest, AnEarlierPlaybackThatFailsIsNotTakenForTheLast) {
    const std::vector<char> bytes = note(1);
    std::latch released(1);
    std::atomic<int> writes = 0;
    alsa.write = [&](auto*, unsigned long frames) {
        if (++writes > 1)
            return static_cast<long>(frames);
        released.wait();
        return -5L;
    };
    VkAudioPlayer player;
    ASSERT_TRUE(player.play(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    while (writes == 0)
        std::this_thread::yield();
    ASSERT_TRUE(player.play(nullptr, 0));
    player.stop();
    released.count_down();
    workerCensus().wait();
    EXPECT_FALSE(player.hasFailed());
}

TEST_F(PlayerTest, ADeviceThatDoesNotAnswerIsGivenUpAndItsHandleClosedWhenItDoes) {
    for (const std::string call : {"snd_pcm_open", "snd_pcm_hw_params"}) {
        alsa.reset();
        alsa.setStatus("snd_pcm_hw_params", -EINVAL); // would end the process
        alsa.hang(call);
        VkAudioPlayer player;
        EXPECT_FALSE(player.play("", 0));
        EXPECT_FALSE(player.play("", 0));
        EXPECT_EQ(alsa.count("snd_pcm_open"), 1) << "at once";
        alsa.answer();
        workerCensus().wait();
        EXPECT_EQ(alsa.openDevices(), 0);
        EXPECT_EQ(alsa.count("snd_pcm_writei"), 0);
        alsa.setStatus("snd_pcm_hw_params", 0);
        EXPECT_TRUE(player.play("", 0));
        workerCensus().wait();
        EXPECT_EQ(alsa.count("snd_pcm_writei"), 1);
    }
    printed.take();
    const std::string line = "the sound device does not answer\n";
    EXPECT_EQ(printed.err, line + line + "size = 64\n" + line + line + "size = 64\n");
}

TEST_F(PlayerTest, APlaybackIsNotHeldUpByARecordingThatCannotBegin) {
    std::vector<char> buffer(VkAudioRecorder::kBufferBytes);
    std::uint32_t size = 0;
    alsa.hang("snd_pcm_open");
    VkAudioRecorder recorder;
    EXPECT_FALSE(recorder.record(buffer.data(), &size));
    VkAudioPlayer player;
    EXPECT_TRUE(player.play("", 0));
    alsa.answer();
    workerCensus().wait();
    EXPECT_EQ(written.size(), 1u);
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
    EXPECT_TRUE(player.hasFailed()) << "the end was not heard";
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
            g_atShutdown = [caller = std::this_thread::get_id()] {
                if (std::this_thread::get_id() != caller || AlsaScript::instance().openDevices() != 0)
                    _exit(2);
            };
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
