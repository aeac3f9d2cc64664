// SPDX-License-Identifier: MIT
// Sound on a private sound server whose microphone counts, so that every sample tells when it was taken.
//
// ends         takes of random length: how many milliseconds the server had taken when the button was released and the
//              note does not hold, and how long the release is held up
// half-minute  the longest take and its playback: gaps, and the processor time of each thread that takes part
// cycles       many short takes, then as many playbacks: what the process has more of afterwards
#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"
#include "phonomark/audio/worker_census.h"
#include "tests/phonomark/audio/counting_microphone.h"

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
    explicit Bench(const std::string& kind)
        : microphone(kind) {
        setenv("PHONOMARK_AUDIO_LOG", microphone.server.path("granted").c_str(), 1);
    }

    bool record(VkAudioRecorder& recorder) {
        size = 0;
        return recorder.record(buffer.data(), &size);
    }
    std::uint32_t recorded() { return std::atomic_ref<std::uint32_t>(size).load(); }

    std::size_t period() const {
        std::ifstream log(microphone.server.path("granted"));
        std::size_t frames = 0;
        for (std::string line; std::getline(log, line);)
            std::sscanf(line.c_str(), "capture rate=%*u period=%zu", &frames);
        return frames;
    }

    /// The first `count` bytes without their padding.
    Samples samples(std::uint32_t count) const {
        Samples result;
        const std::size_t frames = period();
        for (std::size_t at = 0; at + frames * 4 <= count; at += frames * 4) {
            result.resize(result.size() + frames);
            std::memcpy(&result[result.size() - frames], &buffer[at], frames * 2);
        }
        return result;
    }

    CountingMicrophone microphone;
    std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes);
    std::uint32_t size = 0;
    std::mt19937 random{1};
};

/// Places where a millisecond and more is missing, is silence or was heard twice. A server that adapts the rate does so
/// by steps that are not exactly one, and its filter rings where the count begins anew: neither is a gap.
int gapsIn(const Samples& samples) {
    constexpr int kLeast = CountingMicrophone::kRate / 1000;
    constexpr int kRinging = CountingMicrophone::kCount / 2 - 2000;
    int gaps = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const int from = samples[i - 1], to = samples[i];
        gaps += std::abs(from) < kRinging && std::abs(to) < kRinging && std::abs(to - from) > kLeast ? 1 : 0;
    }
    return gaps;
}

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

/// Processor time in seconds of each thread of this process, by its id and name.
std::map<std::string, double> threadTimes() {
    std::map<std::string, double> times;
    for (const auto& task : fs::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "stat");
        std::string text;
        std::getline(file, text);
        const std::size_t nameEnd = text.rfind(')');
        long user = 0, system = 0;
        if (nameEnd == std::string::npos ||
            std::sscanf(text.c_str() + nameEnd + 2, "%*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld", &user,
                        &system) != 2)
            continue;
        times[text.substr(0, nameEnd + 1)] =
            static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
    }
    return times;
}

/// What the threads that came up since `before` have used of a processor's time in `seconds`.
void printShares(const char* what, const std::map<std::string, double>& before, double seconds) {
    for (const auto& [thread, time] : threadTimes()) {
        if (!before.contains(thread))
            std::printf("%s: thread %s: %.2f %% of a core\n", what, thread.c_str(), time * 100 / seconds);
    }
}

int halfMinute(const std::string& kind) {
    Bench bench(kind);
    VkAudioRecorder recorder;
    VkAudioPlayer player;
    auto before = threadTimes();
    if (!bench.record(recorder))
        return 1;
    sleepMs(29'000);
    printShares("recording", before, 29);
    while (!recorder.hasEnded())
        sleepMs(10);
    phonomark::workerCensus().wait();
    const Samples samples = bench.samples(bench.recorded());
    std::printf("%s: recorded %.2f s, %d gaps\n", kind.c_str(),
                static_cast<double>(samples.size()) / CountingMicrophone::kRate, gapsIn(samples));

    before = threadTimes();
    if (!player.play(bench.buffer.data(), bench.recorded()))
        return 1;
    sleepMs(29'000);
    printShares("playback", before, 29);
    phonomark::workerCensus().wait();
    sleepMs(1000); // the loudspeaker's end of the pipe
    std::ifstream file(bench.microphone.server.path("heard.raw"), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    Samples heard(bytes.size() / 2);
    std::memcpy(heard.data(), bytes.data(), heard.size() * 2);
    const auto loud = [](std::int16_t sample) { return sample != 0; };
    heard.erase(heard.begin(), std::find_if(heard.begin(), heard.end(), loud));
    heard.erase(std::find_if(heard.rbegin(), heard.rend(), loud).base(), heard.end());
    std::printf("%s: heard %.2f s, %d gaps; failed: %s\n", kind.c_str(),
                static_cast<double>(heard.size()) / CountingMicrophone::kRate, gapsIn(heard),
                player.hasFailed() ? "yes" : "no");
    return 0;
}

void printHoldings(const char* when) {
    long pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    const auto entries = [](const char* folder) {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    };
    std::printf("%-22s resident %ld KiB, threads %td, open files %td\n", when, resident * sysconf(_SC_PAGESIZE) / 1024,
                entries("/proc/self/task"), entries("/proc/self/fd"));
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
    printHoldings("at first");
    takes(count);
    printHoldings("after the takes");
    plays(count);
    printHoldings("after the playbacks");
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
