// SPDX-License-Identifier: MIT
// Sound on a private sound server whose microphone counts, so that every sample tells when it was taken.
//
// ends         takes of random length: how many milliseconds the server had taken when the button was released and the
//              note does not hold, and how long the release is held up
// half-minute  the longest take and its playback: gaps, and the processor time of each thread that takes part
// cycles       many short takes, then as many playbacks: what the process has more of afterwards
#include "bench/process_figures.h"
#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"
#include "phonomark/audio/worker_census.h"
#include "tests/phonomark/audio/counted_sound.h"
#include "tools/soundcheck/note_stream.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

void mxrxShutdown(int status) {
    std::fputs("the sound code ends the process\n", stderr);
    _exit(status);
}

namespace {

namespace fs = std::filesystem;
using Samples = std::vector<std::int16_t>;
using SteadyClock = std::chrono::steady_clock;

constexpr const char* kUsage = "usage: sound_bench ends KIND TAKES [--no-catch-up]\n"
                               "       sound_bench half-minute KIND\n"
                               "       sound_bench cycles KIND COUNT\n"
                               "KIND: pulseaudio or pipewire\n";

double msSince(SteadyClock::time_point start) {
    return std::chrono::duration<double, std::milli>(SteadyClock::now() - start).count();
}

void sleepMs(unsigned ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

class Bench {
public:
    explicit Bench(const std::string& kind, std::chrono::milliseconds piece = std::chrono::milliseconds(1))
        : microphone(kind, piece) {
        setenv("PHONOMARK_AUDIO_LOG", microphone.server.path("granted").c_str(), 1);
    }

    bool record(VkAudioRecorder& recorder) {
        size = 0;
        return recorder.record(buffer.data(), &size);
    }
    std::uint32_t recorded() { return std::atomic_ref<std::uint32_t>(size).load(); }

    /// The first `count` bytes without their padding.
    Samples samples(std::uint32_t count) const {
        return soundcheck::samplesOfNote({buffer.begin(), buffer.begin() + count},
                                         lastGranted(microphone.server.path("granted"), "capture").period);
    }

    CountingMicrophone microphone;
    std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes);
    std::uint32_t size = 0;
    std::mt19937 random{1};
};

struct Spread {
    std::vector<double> values;

    void print(const char* what) {
        std::sort(values.begin(), values.end());
        if (!values.empty())
            std::printf("%s: min %.1f median %.1f max %.1f\n", what, values.front(), values[values.size() / 2],
                        values.back());
    }
};

int ends(const std::string& kind, int takes, bool catchUp) {
    Bench bench(kind);
    Spread opening, missing, held;
    int refused = 0, whole = 0, gaps = 0;
    for (int take = 0; take < takes; ++take) {
        VkAudioRecorder recorder;
        const auto pressed = SteadyClock::now();
        const bool opened = bench.record(recorder);
        opening.values.push_back(msSince(pressed));
        if (!opened) {
            ++refused;
            phonomark::workerCensus().wait();
            continue;
        }
        sleepMs(500 + bench.random() % 500);
        const std::int64_t end = bench.microphone.taken();
        const auto released = SteadyClock::now();
        if (catchUp)
            recorder.catchUp();
        held.values.push_back(msSince(released));
        recorder.stop();
        const std::uint32_t count = bench.recorded();
        phonomark::workerCensus().wait();
        const Samples samples = bench.samples(count);
        if (samples.empty())
            continue; // counts as not whole
        gaps += gapsIn(samples);
        missing.values.push_back(CountingMicrophone::missing(end, samples.back()) * 1000.0 / CountingMicrophone::kRate);
        whole += missing.values.back() <= 0 ? 1 : 0;
    }
    std::printf("%s, %d takes: %d refused; %d hold all that was taken before the release; %d gaps\n", kind.c_str(),
                takes, refused, whole, gaps);
    opening.print("opening ms");
    missing.print("missing ms");
    held.print("release held up ms");
    return 0;
}

int halfMinute(const std::string& kind) {
    Bench bench(kind, std::chrono::milliseconds(5)); // as often as a microphone for speech
    VkAudioRecorder recorder;
    VkAudioPlayer player;
    const bench::ProcessFigures self("self");
    auto before = self.threadTimes();
    if (!bench.record(recorder))
        return 1;
    sleepMs(29'000);
    self.printNewThreads("recording", before, 29);
    while (!recorder.hasEnded())
        sleepMs(10);
    phonomark::workerCensus().wait();
    const Samples samples = bench.samples(bench.recorded());
    std::printf("%s: recorded %.2f s, %d gaps\n", kind.c_str(),
                static_cast<double>(samples.size()) / CountingMicrophone::kRate, gapsIn(samples));

    before = self.threadTimes();
    if (!player.play(bench.buffer.data(), bench.recorded()))
        return 1;
    sleepMs(29'000);
    self.printNewThreads("playback", before, 29);
    phonomark::workerCensus().wait();
    sleepMs(1000); // the loudspeaker's end of the pipe
    const Samples heard = heardBy(bench.microphone.server);
    std::printf("%s: heard %.2f s, %d gaps; failed: %s\n", kind.c_str(),
                static_cast<double>(heard.size()) / CountingMicrophone::kRate, gapsIn(heard),
                player.hasFailed() ? "yes" : "no");
    return 0;
}

int cycles(const std::string& kind, int count) {
    Bench bench(kind);
    int refused = 0;
    const auto takes = [&](int number) {
        for (int i = 0; i < number; ++i) {
            VkAudioRecorder recorder;
            refused += bench.record(recorder) ? 0 : 1;
            sleepMs(bench.random() % 200);
            recorder.catchUp();
            recorder.stop();
        }
        phonomark::workerCensus().wait();
    };
    const auto plays = [&](int number) {
        for (int i = 0; i < number; ++i) {
            VkAudioPlayer player;
            refused += player.play(bench.buffer.data(), bench.random() % 20'000) ? 0 : 1;
            phonomark::workerCensus().wait();
        }
    };
    takes(20);
    plays(20);
    const bench::ProcessFigures self("self");
    self.printHoldings("at first");
    takes(count);
    self.printHoldings("after the takes");
    plays(count);
    self.printHoldings("after the playbacks");
    std::printf("%s: %d takes and %d playbacks, %d refused\n", kind.c_str(), count, count, refused);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() == 3 && args[0] == "ends")
        return ends(args[1], std::stoi(args[2]), true);
    if (args.size() == 4 && args[0] == "ends" && args[3] == "--no-catch-up")
        return ends(args[1], std::stoi(args[2]), false);
    if (args.size() == 2 && args[0] == "half-minute")
        return halfMinute(args[1]);
    if (args.size() == 3 && args[0] == "cycles")
        return cycles(args[1], std::stoi(args[2]));
    std::fputs(kUsage, stderr);
    return 1;
}
