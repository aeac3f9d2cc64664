// SPDX-License-Identifier: MIT
#include "phonomark/audio/recorder.h"

#include "tests/phonomark/audio/audio_fixture.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <utility>

using phonomark::workerCensus;

namespace {

std::atomic<std::int64_t> g_nowMs = 0;
std::int64_t testClock() {
    return g_nowMs;
}

class RecorderTest : public AudioTest {
protected:
    RecorderTest() { g_nowMs = 1'000'000; }

    bool record(VkAudioRecorder& recorder) { return recorder.record(buffer.data(), &size); }

    /// The recording ends in the `count`th read, whose period is dropped.
    void stopInRead(int count, VkAudioRecorder& recorder) {
        alsa.read = [&recorder, count, done = 0](std::int16_t* samples, unsigned long frames) mutable {
            ++done;
            for (unsigned long i = 0; i < frames; ++i)
                samples[i] = static_cast<std::int16_t>(100 * done + static_cast<int>(i));
            if (done == count)
                recorder.stop();
            return static_cast<long>(frames);
        };
    }

    std::int16_t sampleAt(std::size_t byte) const {
        std::int16_t sample = 0;
        std::memcpy(&sample, &buffer[byte], sizeof sample);
        return sample;
    }

    /// Recording fails silently or with `err` / `out`, leaves nothing open and starts no worker.
    void expectRefusal(const std::string& call, int status, const std::string& err) {
        SCOPED_TRACE(call);
        alsa.reset();
        alsa.setStatus(call, status);
        Printed printed;
        VkAudioRecorder recorder(&testClock);
        EXPECT_FALSE(record(recorder));
        workerCensus().wait();
        printed.take();
        EXPECT_EQ(printed.err, err);
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(alsa.count("snd_pcm_readi"), 0);
        EXPECT_EQ(alsa.openDevices(), 0);
        EXPECT_EQ(alsa.parameterBlocks(), 0);
    }

    /// Slack behind the bound shows a write past it.
    std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes + 4096, '\x55');
    std::uint32_t size = 77;
};

using RecorderDeathTest = RecorderTest;

} // namespace

TEST_F(RecorderTest, AsksForFortyKilohertzMonoInAFixedOrderOfCalls) {
    VkAudioRecorder recorder(&testClock);
    stopInRead(2, recorder);
    alsa.grantedBuffer = 48;
    EXPECT_TRUE(record(recorder));
    workerCensus().wait();
    const std::vector<std::string> expected = {
        "snd_pcm_open default capture 0",
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
        "snd_pcm_readi 24",
        "snd_pcm_readi 24",
        "snd_pcm_drop",
        "snd_pcm_close",
    };
    EXPECT_EQ(alsa.calls(), expected);
}

TEST_F(RecorderTest, EveryPeriodIsFollowedByAsManyZeroBytes) {
    VkAudioRecorder recorder(&testClock);
    stopInRead(3, recorder);
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    ASSERT_EQ(size, 2u * 16 * 4);
    for (std::size_t period = 0; period < 2; ++period) {
        for (std::size_t i = 0; i < 16; ++i) {
            EXPECT_EQ(sampleAt(period * 64 + 2 * i), static_cast<int>(100 * (period + 1) + i));
            EXPECT_EQ(sampleAt(period * 64 + 32 + 2 * i), 0);
        }
    }
    EXPECT_EQ(buffer[size], '\x55') << "the period that was read when the recording stopped is dropped";
}

TEST_F(RecorderTest, AnEmptyListingMeansNoCapture) {
    VkAudioRecorder recorder(&testClock);
    alsa.read = [&](std::int16_t*, unsigned long frames) {
        g_nowMs += 7;
        if (recorder.getTimeMs() >= 14)
            recorder.stop();
        return static_cast<long>(frames);
    };
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    ASSERT_EQ(recorder.getTimeMs(), 14u);
    alsa.reset();

    const Printed printed;
    for (const std::string& text : {std::string(), std::string("\0 00-00: card", 12), std::string("\xef\xbb\xbf")}) {
        list(text);
        EXPECT_FALSE(record(recorder));
    }
    setenv("PHONOMARK_PCM_LIST", path("no such file").c_str(), 1);
    EXPECT_FALSE(record(recorder));
    setenv("PHONOMARK_PCM_LIST", "/tmp", 1);
    EXPECT_FALSE(record(recorder));
    EXPECT_EQ(recorder.getTimeMs(), 14u) << "the elapsed time keeps its old value";
    EXPECT_EQ(alsa.calls(), std::vector<std::string>());
}

TEST_F(RecorderTest, AListingThatIsAPipeWithoutAWriterDoesNotBlock) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    setenv("PHONOMARK_PCM_LIST", path("pipe").c_str(), 1);
    VkAudioRecorder recorder(&testClock);
    EXPECT_FALSE(record(recorder));
}

TEST_F(RecorderTest, WithoutANamedListingTheKernelsOwnIsRead) {
    unsetenv("PHONOMARK_PCM_LIST");
    VkAudioRecorder recorder(&testClock);
    stopInRead(1, recorder);
    EXPECT_EQ(record(recorder), !contents("/proc/asound/pcm").empty());
}

TEST_F(RecorderTest, RecordingStartsAtZeroMilliseconds) {
    VkAudioRecorder recorder(&testClock);
    EXPECT_EQ(recorder.getTimeMs(), 0u);
    alsa.read = [&](std::int16_t*, unsigned long frames) {
        g_nowMs += 12'333;
        if (recorder.getTimeMs() > 0)
            recorder.stop();
        return static_cast<long>(frames);
    };
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    EXPECT_EQ(recorder.getTimeMs(), 12'333u);
    alsa.setStatus("snd_pcm_open", -ENODEV);
    const Printed printed;
    EXPECT_FALSE(record(recorder));
    EXPECT_EQ(recorder.getTimeMs(), 0u) << "a device is listed, so a recording begins, even if it fails then";
}

TEST_F(RecorderTest, TimeIsSecondsWithOneDecimal) {
    const std::vector<std::pair<std::int64_t, const char*>> cases = {
        {0, "0.0"}, {49, "0.0"}, {50, "0.1"}, {51, "0.1"}, {2400, "2.4"}, {12'333, "12.3"}, {29'999, "30.0"}};
    for (const auto& [ms, text] : cases) {
        VkAudioRecorder recorder(&testClock);
        alsa.reset();
        alsa.read = [&, step = ms, reads = 0](std::int16_t*, unsigned long frames) mutable {
            g_nowMs += std::exchange(step, 0);
            if (++reads == 2)
                recorder.stop();
            return static_cast<long>(frames);
        };
        ASSERT_TRUE(record(recorder));
        workerCensus().wait();
        EXPECT_EQ(recorder.getTime().toStdString(), text) << ms;
    }
}

TEST_F(RecorderTest, StoppedBeforeTheFirstReadNothingIsReadOrCounted) {
    static std::atomic<bool> stopped;
    stopped = false;
    // The worker takes its start mark before it looks at the flag for the first time.
    VkAudioRecorder recorder([]() -> std::int64_t {
        stopped.wait(false);
        return 0;
    });
    ASSERT_TRUE(record(recorder));
    EXPECT_TRUE(recorder.stop());
    stopped = true;
    stopped.notify_all();
    workerCensus().wait();
    EXPECT_EQ(alsa.count("snd_pcm_readi"), 0);
    EXPECT_EQ(alsa.count("snd_pcm_drop"), 1);
    EXPECT_EQ(alsa.openDevices(), 0);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(buffer[0], '\x55');
}

TEST_F(RecorderTest, StoppedDuringTheFirstReadNothingIsCounted) {
    VkAudioRecorder recorder(&testClock);
    stopInRead(1, recorder);
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    EXPECT_EQ(alsa.count("snd_pcm_readi"), 1);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(buffer[0], '\x55');
    EXPECT_EQ(recorder.getTimeMs(), 0u);
}

TEST_F(RecorderTest, AStopRightAfterTheStartAlwaysEndsTheWorker) {
    for (int i = 0; i < 500; ++i) {
        VkAudioRecorder recorder(&testClock);
        ASSERT_TRUE(record(recorder));
        recorder.stop();
        workerCensus().wait(); // for ever, if the worker undid the stop
    }
    EXPECT_EQ(alsa.openDevices(), 0);
}

TEST_F(RecorderTest, AfterThirtySecondsTheLastChunkLiesInTheBufferButIsNotCounted) {
    VkAudioRecorder recorder(&testClock);
    alsa.read = [steps = std::vector<int>{29'999, 1, 1}, next = 0u](std::int16_t* samples,
                                                                    unsigned long frames) mutable {
        g_nowMs += steps.at(next++);
        samples[0] = static_cast<std::int16_t>(next);
        return static_cast<long>(frames);
    };
    Printed printed;
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    printed.take();
    EXPECT_EQ(recorder.getTimeMs(), 30'001u);
    EXPECT_EQ(size, 2u * 64) << "30,000 ms exactly is not over the bound";
    EXPECT_EQ(sampleAt(2 * 64), 3);
    EXPECT_EQ(printed.out + printed.err, "") << "the time bound ends silently";
    EXPECT_EQ(alsa.openDevices(), 0);
}

TEST_F(RecorderTest, AtFortyKilohertzTimeRunsOutBeforeTheBuffer) {
    VkAudioRecorder recorder(&testClock);
    alsa.grantedPeriod = 400; // ten milliseconds
    alsa.read = [](std::int16_t*, unsigned long frames) {
        g_nowMs += 10;
        return static_cast<long>(frames);
    };
    Printed printed;
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    printed.take();
    EXPECT_EQ(size, 4'800'000u);
    EXPECT_EQ(printed.out, "");
}

TEST_F(RecorderTest, AtAHigherRateTheBufferIsFullFirst) {
    VkAudioRecorder recorder(&testClock);
    alsa.grantedRate = 48'000;
    alsa.grantedPeriod = 480; // ten milliseconds
    alsa.read = [](std::int16_t* samples, unsigned long frames) {
        g_nowMs += 10;
        std::fill_n(samples, frames, std::int16_t{0x0101});
        return static_cast<long>(frames);
    };
    Printed printed;
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    printed.take();
    EXPECT_EQ(printed.out, "buff is not enough!");
    EXPECT_EQ(size, 5'000'000u / 1920 * 1920);
    EXPECT_EQ(buffer[size], '\x55') << "the chunk that does not fit is not copied";
    EXPECT_EQ(recorder.getTimeMs(), size / 1920 * 10) << "nor is its time";
    EXPECT_EQ(alsa.openDevices(), 0);
}

TEST_F(RecorderTest, TheBufferIsFilledToItsLastByteAndNotFurther) {
    VkAudioRecorder recorder(&testClock);
    alsa.grantedPeriod = 12'500; // chunks of 50,000 bytes
    Printed printed;
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    printed.take();
    EXPECT_EQ(size, 5'000'000u);
    EXPECT_EQ(printed.out, "buff is not enough!");
    EXPECT_EQ(alsa.count("snd_pcm_readi"), 101);
    EXPECT_EQ(std::string(&buffer[size], 4096), std::string(4096, '\x55'));
}

TEST_F(RecorderTest, AShortReadIsReportedAndYieldsAFullChunk) {
    VkAudioRecorder recorder(&testClock);
    alsa.read = [&, reads = 0](std::int16_t* samples, unsigned long frames) mutable {
        if (++reads == 2)
            recorder.stop();
        std::fill_n(samples, 5, std::int16_t{9});
        return reads == 1 ? 5L : static_cast<long>(frames);
    };
    Printed printed;
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    printed.take();
    EXPECT_EQ(printed.err, "short read, read 5 frames\n");
    ASSERT_EQ(size, 64u);
    EXPECT_EQ(sampleAt(8), 9);
    for (std::size_t byte = 10; byte < 64; ++byte)
        EXPECT_EQ(buffer[byte], 0);
}

TEST_F(RecorderTest, WhatOneReadLeftDoesNotShowInTheNext) {
    VkAudioRecorder recorder(&testClock);
    alsa.read = [&, reads = 0](std::int16_t* samples, unsigned long frames) mutable {
        ++reads;
        if (reads == 1)
            std::fill_n(samples, frames, std::int16_t{9});
        if (reads == 3)
            recorder.stop();
        return reads == 2 ? 0L : static_cast<long>(frames);
    };
    Printed printed;
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    printed.take();
    EXPECT_EQ(printed.err, "short read, read 0 frames\n");
    ASSERT_EQ(size, 128u);
    EXPECT_EQ(std::string(&buffer[64], 64), std::string(64, '\0'));
}

TEST_F(RecorderTest, AnOverrunIsRecoveredAndLeavesAChunkOfSilence) {
    VkAudioRecorder recorder(&testClock);
    alsa.read = [&, reads = 0](std::int16_t* samples, unsigned long frames) mutable {
        if (++reads == 3)
            recorder.stop();
        if (reads == 1)
            return -32L;
        samples[0] = 4;
        return static_cast<long>(frames);
    };
    Printed printed;
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    printed.take();
    EXPECT_EQ(printed.err, "overrun occurred\n") << "and no short read";
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(alsa.count("snd_pcm_prepare"), 1);
    ASSERT_EQ(size, 128u);
    EXPECT_EQ(std::string(buffer.data(), 64), std::string(64, '\0'));
    EXPECT_EQ(sampleAt(64), 4);
}

TEST_F(RecorderDeathTest, AnOverrunThatCannotBeRecoveredEndsTheProcess) {
    EXPECT_EXIT(
        {
            std::fflush(stdout);
            dup2(STDERR_FILENO, STDOUT_FILENO);
            VkAudioRecorder recorder(&testClock);
            alsa.setStatus("snd_pcm_prepare", -EIO);
            alsa.read = [](std::int16_t*, unsigned long) { return -32L; };
            record(recorder);
            workerCensus().wait();
            std::this_thread::sleep_for(std::chrono::seconds(20));
        },
        testing::ExitedWithCode(1), "overrun occurred\n.*Failed to recover form overrunthe host ends the process");
}

TEST_F(RecorderDeathTest, AnyOtherReadErrorEndsTheProcess) {
    EXPECT_EXIT(
        {
            VkAudioRecorder recorder(&testClock);
            alsa.read = [](std::int16_t*, unsigned long) { return -19L; };
            record(recorder);
            workerCensus().wait();
            std::this_thread::sleep_for(std::chrono::seconds(20));
        },
        testing::ExitedWithCode(1), "error from read: status -19\nthe host ends the process");
}

TEST_F(RecorderDeathTest, AWorkerThatEndsTheProcessIsNotWaitedForMeanwhile) {
    EXPECT_EXIT(
        {
            static std::atomic<bool> waited = false;
            g_atShutdown = [] { waited.wait(false); }; // saving the drawings may need the thread that waits
            VkAudioRecorder recorder(&testClock);
            alsa.read = [](std::int16_t*, unsigned long) { return -19L; };
            record(recorder);
            workerCensus().wait();
            waited = true;
            waited.notify_all();
            std::this_thread::sleep_for(std::chrono::seconds(20));
        },
        testing::ExitedWithCode(1), "the host ends the process");
}

TEST_F(RecorderTest, AStepThatFailsIsNamedAndNothingStaysOpen) {
    expectRefusal("snd_pcm_open", -EBUSY, "snd_pcm_open: Device or resource busy\n");
    expectRefusal("snd_pcm_hw_params_malloc", -ENOMEM, "snd_pcm_hw_params_malloc: Cannot allocate memory\n");
    for (const std::string call :
         {"snd_pcm_hw_params_any", "snd_pcm_hw_params_set_access", "snd_pcm_hw_params_set_format",
          "snd_pcm_hw_params_set_rate_near", "snd_pcm_hw_params_set_channels", "snd_pcm_hw_params"})
        expectRefusal(call, -EINVAL, call + ": Invalid argument\n");
}

TEST_F(RecorderTest, ADeviceWithoutAPeriodIsRefused) {
    expectRefusal("snd_pcm_hw_params_get_period_size", -EINVAL,
                  "snd_pcm_hw_params_get_period_size: Invalid argument\n");
    alsa.reset();
    Printed printed;
    VkAudioRecorder recorder(&testClock);
    alsa.grantedPeriod = 1ul << 31;
    EXPECT_FALSE(record(recorder)) << "a chunk's size has to fit an int";
    alsa.grantedBuffer = 1; // half of which is a period of no frames
    alsa.grantedPeriod = 0;
    EXPECT_FALSE(record(recorder));
    printed.take();
    EXPECT_EQ(printed.err, "snd_pcm_hw_params_get_period_size: 2147483648 frames\n"
                           "snd_pcm_hw_params_get_period_size: 0 frames\n");
    EXPECT_EQ(alsa.openDevices(), 0);
}

TEST_F(RecorderTest, RefusedSizesAreReportedAndIgnored) {
    VkAudioRecorder recorder(&testClock);
    stopInRead(2, recorder);
    alsa.setStatus("snd_pcm_hw_params_set_buffer_size_near", -EINVAL);
    alsa.setStatus("snd_pcm_hw_params_set_period_size_near", -EPERM);
    Printed printed;
    EXPECT_TRUE(record(recorder));
    workerCensus().wait();
    printed.take();
    EXPECT_EQ(printed.out, "Unable to set buffer size 64 : status -22\nUnable to set period size 16 : status -1\n");
    EXPECT_EQ(size, 64u);
}

TEST_F(RecorderTest, StoppingOneRecorderStopsThemAll) {
    alsa.read = [](std::int16_t*, unsigned long frames) {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
        return static_cast<long>(frames);
    };
    VkAudioRecorder first(&testClock);
    VkAudioRecorder second(&testClock);
    std::vector<char> otherBuffer(VkAudioRecorder::kBufferBytes);
    std::uint32_t otherSize = 0;
    ASSERT_TRUE(record(first));
    ASSERT_TRUE(second.record(otherBuffer.data(), &otherSize));
    first.stop();
    workerCensus().wait();
    EXPECT_EQ(alsa.count("snd_pcm_close"), 2);
    EXPECT_LT(size, 4'000'000u) << "neither ran into its bound";
    EXPECT_LT(otherSize, 4'000'000u);
}

TEST_F(RecorderTest, MakingARecorderStopsWhatIsBeingRecorded) {
    VkAudioRecorder recorder(&testClock);
    alsa.read = [reads = 0](std::int16_t*, unsigned long frames) mutable {
        if (++reads == 2)
            VkAudioRecorder another(&testClock);
        return static_cast<long>(frames);
    };
    ASSERT_TRUE(record(recorder));
    workerCensus().wait();
    EXPECT_EQ(alsa.count("snd_pcm_readi"), 2);
    EXPECT_EQ(size, 64u);
}

TEST_F(RecorderTest, ARecordingOutlivesItsRecorderAndKeepsItsMemory) {
    struct Memory {
        std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes);
        std::uint32_t size = 0;
    };
    auto memory = std::make_shared<Memory>();
    const std::weak_ptr<Memory> watched = memory;
    std::latch released(1);
    bool keptWhileReading = false;
    alsa.read = [&, reads = 0](std::int16_t*, unsigned long frames) mutable {
        released.wait();
        keptWhileReading = !watched.expired();
        g_nowMs += 10'000;
        ++reads;
        return static_cast<long>(frames);
    };
    auto recorder = std::make_unique<VkAudioRecorder>(&testClock);
    ASSERT_TRUE(recorder->record(memory->buffer.data(), &memory->size, memory));
    recorder.reset();
    memory.reset();
    released.count_down();
    workerCensus().wait();
    EXPECT_EQ(alsa.count("snd_pcm_readi"), 4) << "it ran to the time bound";
    EXPECT_TRUE(keptWhileReading);
    EXPECT_TRUE(watched.expired());
}

TEST_F(RecorderTest, TheBytesBelowTheCountAreSafeToReadWhileTheWorkerRuns) {
    VkAudioRecorder recorder(&testClock);
    alsa.grantedPeriod = 100;
    alsa.read = [](std::int16_t* samples, unsigned long frames) {
        std::fill_n(samples, frames, std::int16_t{0x0303});
        return static_cast<long>(frames);
    };
    size = 0;
    const Printed printed;
    ASSERT_TRUE(record(recorder));
    const std::atomic_ref<std::uint32_t> count(size);
    std::uint32_t checked = 0;
    int wrong = 0;
    while (checked < 1'000'000) {
        const std::uint32_t now = count.load();
        for (; checked < now; ++checked)
            wrong += buffer[checked] != (checked % 400 < 200 ? 3 : 0) ? 1 : 0;
    }
    recorder.stop();
    workerCensus().wait();
    EXPECT_EQ(wrong, 0);
}
