// SPDX-License-Identifier: MIT
#include "phonomark/audio/recorder.h"

#include "phonomark/audio/pcm_device.h"
#include "phonomark/audio/worker_census.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <unistd.h>
#include <utility>
#include <vector>

using phonomark::WorkerCensus;
using phonomark::workerCensus;

namespace {

/// One flag for all recorders: stopping any of them stops every recording.
///
/// Its loads and stores are relaxed. It carries no data: the worker only has to see a clear at some later test, and
/// what a reader wants to see of a recording is published by the byte count.
WorkerCensus::Flag g_bRecordRunning = false;

std::int64_t steadyMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

/// Whether the system lists any sound device. The list is /proc/asound/pcm or the file that the environment variable
/// PHONOMARK_PCM_LIST names, as text up to its first zero byte; that there is any tells enough, so a page of it will
/// do.
bool soundDeviceListed() {
    const char* path = std::getenv("PHONOMARK_PCM_LIST");
    const int file = open(path != nullptr ? path : "/proc/asound/pcm", O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return false;
    char text[4096];
    ssize_t count = 0;
    do {
        count = read(file, text, sizeof text);
    } while (count < 0 && errno == EINTR);
    close(file);
    if (count <= 0)
        return false;
    return !QString::fromUtf8(text, static_cast<int>(strnlen(text, static_cast<std::size_t>(count)))).isEmpty();
}

} // namespace

/// What outlives the recorder while a worker still reports to it. The time is one number on its own, read for display:
/// nothing is ordered by it, so relaxed is enough.
struct VkAudioRecorder::Progress {
    Clock clock;
    std::atomic<std::uint32_t> elapsedMs = 0;
};

/// All that one recording needs, owned by its worker.
struct VkAudioRecorder::Take {
    phonomark::PcmHandle pcm;
    char* buffer = nullptr;
    std::uint32_t* size = nullptr;
    std::shared_ptr<void> keepAlive;
    std::shared_ptr<Progress> progress;
    int periodFrames = 0;
    std::vector<char> chunk = {};
    std::int64_t startMs = 0;
    std::uint32_t stored = 0; ///< what *size says; the worker alone writes that

    void publishSize() const {
        // Release: whoever loads this count (acquire) sees the bytes it counts.
        std::atomic_ref<std::uint32_t>(*size).store(stored, std::memory_order_release);
    }
};

VkAudioRecorder::VkAudioRecorder()
    : VkAudioRecorder(&steadyMs) {}

VkAudioRecorder::VkAudioRecorder(Clock clock)
    : m_progress(new Progress{clock}) {
    g_bRecordRunning.store(false, std::memory_order_relaxed);
}

bool VkAudioRecorder::record(char* buffer, std::uint32_t* size, std::shared_ptr<void> keepAlive) {
    using namespace phonomark;
    if (!soundDeviceListed())
        return false;
    m_progress->elapsedMs.store(0, std::memory_order_relaxed);

    PcmHandle pcm = openDefaultPcm(SND_PCM_STREAM_CAPTURE);
    if (!pcm)
        return false;
    const HwParams params = allocateHwParams();
    if (!params || !requestSampleFormat(pcm.get(), params.get()))
        return false;
    snd_pcm_uframes_t bufferFrames = 0;
    requestBufferSize(pcm.get(), params.get(), bufferFrames); // a refusal does not matter here
    requestPeriodSize(pcm.get(), params.get(), bufferFrames);
    if (!applyHwParams(pcm.get(), params.get()))
        return false;
    const int periodFrames = grantedPeriodFrames(params.get());
    if (periodFrames == 0)
        return false;
    logGranted("capture", params.get());

    try {
        const std::shared_ptr<Take> take(
            new Take{std::move(pcm), buffer, size, std::move(keepAlive), m_progress, periodFrames});
        take->chunk.resize(static_cast<std::size_t>(periodFrames) * kChunkBytesPerFrame);
        const std::shared_ptr<WorkerCensus::Flag> running(std::shared_ptr<void>(), &g_bRecordRunning); // owns nothing
        return workerCensus().start(running, [take] { recordInThread(*take); });
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "no memory for a recording with a period of %d frames\n", periodFrames);
        return false;
    }
}

void VkAudioRecorder::recordInThread(Take& take) {
    take.publishSize();
    take.startMs = take.progress->clock();
    while (g_bRecordRunning.load(std::memory_order_relaxed)) {
        readPeriod(take);
        if (!g_bRecordRunning.load(std::memory_order_relaxed) || !keepPeriod(take))
            break;
    }
    snd_pcm_drop(take.pcm.get());
    take.pcm.reset();
}

/// Reads one period into the first half of the chunk; what is not read is zero.
void VkAudioRecorder::readPeriod(Take& take) {
    std::fill(take.chunk.begin(), take.chunk.end(), '\0');
    const snd_pcm_sframes_t result =
        snd_pcm_readi(take.pcm.get(), take.chunk.data(), static_cast<snd_pcm_uframes_t>(take.periodFrames));
    if (result == -EPIPE) {
        std::fputs("overrun occurred\n", stderr);
        if (snd_pcm_prepare(take.pcm.get()) < 0) {
            std::fputs("Failed to recover form overrun", stdout);
            phonomark::endProcess();
        }
    } else if (result < 0) {
        std::fprintf(stderr, "error from read: %s\n", snd_strerror(static_cast<int>(result)));
        phonomark::endProcess();
    } else if (result != take.periodFrames) {
        std::fprintf(stderr, "short read, read %d frames\n", static_cast<int>(result));
    }
}

/// Adds the chunk to the caller's buffer; false when the recording is over.
bool VkAudioRecorder::keepPeriod(Take& take) {
    const auto chunkBytes = static_cast<std::uint32_t>(take.chunk.size());
    if (chunkBytes + take.stored > kBufferBytes) {
        std::fputs("buff is not enough!", stdout);
        return false;
    }
    std::memcpy(take.buffer + take.stored, take.chunk.data(), chunkBytes);
    const std::int64_t elapsedMs = take.progress->clock() - take.startMs;
    take.progress->elapsedMs.store(static_cast<std::uint32_t>(elapsedMs), std::memory_order_relaxed);
    if (elapsedMs > kLongestMs)
        return false; // this chunk lies in the buffer but does not count
    take.stored += chunkBytes;
    take.publishSize();
    return true;
}

bool VkAudioRecorder::stop() {
    g_bRecordRunning.store(false, std::memory_order_relaxed);
    return true;
}

QString VkAudioRecorder::getTime() const {
    // Single precision first, as the durations that drawings hold were made.
    const auto ms = static_cast<float>(getTimeMs());
    return QString::number(static_cast<double>(ms) / 1000.0, 'f', 1);
}

std::uint32_t VkAudioRecorder::getTimeMs() const {
    return m_progress->elapsedMs.load(std::memory_order_relaxed);
}
