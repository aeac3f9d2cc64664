// SPDX-License-Identifier: MIT
#include "phonomark/audio/recorder.h"

#include "phonomark/audio/pcm_device.h"
#include "phonomark/audio/sound_start.h"
#include "phonomark/audio/worker_census.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
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

/// How long the end of speech is waited for.
constexpr std::chrono::milliseconds kCatchUpPatience{250};

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

/// Where a recorder and the worker of its last take meet.
class VkAudioRecorder::Link {
public:
    /// The recorder: waits until the worker has caught up with this moment or has ended, or `patience` is over.
    void wait(std::int64_t nowMs, std::chrono::milliseconds patience) {
        std::unique_lock lock(m_mutex);
        m_askedMs = nowMs;
        const unsigned question = m_asked.load(std::memory_order_relaxed) + 1;
        m_asked.store(question, std::memory_order_relaxed);
        m_changed.wait_for(lock, patience, [&] { return m_answered == question || m_hasEnded; });
    }
    bool hasEnded() {
        const std::lock_guard lock(m_mutex);
        return m_hasEnded;
    }

    /// The worker: the number of the last question. Relaxed: it is looked at after each period without the mutex, and
    /// only has to be seen at some of them; what belongs to it is read under the mutex.
    unsigned asked() const { return m_asked.load(std::memory_order_relaxed); }
    std::int64_t askedMs() {
        const std::lock_guard lock(m_mutex);
        return m_askedMs;
    }
    void answer(unsigned question) {
        const std::lock_guard lock(m_mutex);
        m_answered = question;
        m_changed.notify_all();
    }
    void end() {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::int64_t m_askedMs = 0;
    std::atomic<unsigned> m_asked = 0; ///< written under the mutex
    unsigned m_answered = 0;
    bool m_hasEnded = false;
};

/// All that one recording needs, owned by its worker.
struct VkAudioRecorder::Take : phonomark::Sound {
    Take(char* to, std::uint32_t* count, std::shared_ptr<void> alive, std::shared_ptr<Progress> shown,
         std::shared_ptr<Link> recorder)
        : buffer(to)
        , size(count)
        , keepAlive(std::move(alive))
        , progress(std::move(shown))
        , link(std::move(recorder)) {}

    phonomark::Opened open(phonomark::PcmReport& report) override;
    void run() override { recordInThread(*this); }

    char* const buffer;
    std::uint32_t* const size;
    const std::shared_ptr<void> keepAlive;
    const std::shared_ptr<Progress> progress;
    const std::shared_ptr<Link> link;
    int periodFrames = 0;
    std::vector<char> chunk = {};
    std::int64_t startMs = 0;
    std::uint32_t stored = 0;     ///< what *size says; the worker alone writes that
    unsigned asked = 0;           ///< the last question that was seen
    std::int64_t outstanding = 0; ///< frames that its answer waits for

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

    const std::shared_ptr<WorkerCensus::Flag> running(std::shared_ptr<void>(), &g_bRecordRunning); // owns nothing
    const std::shared_ptr<Link> link(new Link);
    if (!startSound(SND_PCM_STREAM_CAPTURE, running,
                    std::shared_ptr<Sound>(new Take(buffer, size, std::move(keepAlive), m_progress, link))))
        return false;
    m_link = link;
    return true;
}

phonomark::Opened VkAudioRecorder::Take::open(phonomark::PcmReport& report) {
    using namespace phonomark;
    pcm = openDefaultPcm(SND_PCM_STREAM_CAPTURE, report);
    if (!pcm)
        return Opened::No;
    const HwParams params = allocateHwParams(report);
    if (!params || !requestSampleFormat(pcm.get(), params.get(), report))
        return Opened::No;
    snd_pcm_uframes_t bufferFrames = 0;
    requestBufferSize(pcm.get(), params.get(), bufferFrames, report); // a refusal does not matter here
    requestPeriodSize(pcm.get(), params.get(), bufferFrames, report);
    if (!applyHwParams(pcm.get(), params.get(), report))
        return Opened::No;
    periodFrames = grantedPeriodFrames(params.get(), report);
    if (periodFrames == 0)
        return Opened::No;
    logGranted("capture", params.get());
    try {
        chunk.resize(static_cast<std::size_t>(periodFrames) * kChunkBytesPerFrame);
    } catch (const std::bad_alloc&) {
        report.error("no memory for a recording with a period of %d frames\n", periodFrames);
        return Opened::No;
    }
    return Opened::Yes;
}

void VkAudioRecorder::recordInThread(Take& take) {
    take.publishSize();
    take.startMs = take.progress->clock();
    while (g_bRecordRunning.load(std::memory_order_relaxed)) {
        readPeriod(take);
        if (!g_bRecordRunning.load(std::memory_order_relaxed) || !keepPeriod(take))
            break;
        answer(take);
    }
    take.link->end();
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
            giveUp(take);
        }
    } else if (result < 0) {
        std::fprintf(stderr, "error from read: %s\n", snd_strerror(static_cast<int>(result)));
        giveUp(take);
    } else if (result != take.periodFrames) {
        std::fprintf(stderr, "short read, read %d frames\n", static_cast<int>(result));
    }
}

/// Nobody waits for more of this take while the host saves what it can.
void VkAudioRecorder::giveUp(Take& take) {
    take.link->end();
    phonomark::endProcess();
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

/// Counts, once somebody asks for it, what the device had taken until then and has not handed over yet.
void VkAudioRecorder::answer(Take& take) {
    const unsigned asked = take.link->asked();
    if (asked == take.asked && take.outstanding <= 0)
        return;
    take.outstanding = asked == take.asked ? take.outstanding - take.periodFrames : outstandingFrames(take);
    take.asked = asked;
    if (take.outstanding <= 0)
        take.link->answer(asked);
}

/// The device is asked some time after the question was put: this read may have waited for a whole fragment of the
/// server's. What was taken in that time is not waited for. It is reckoned at the pace of the take so far, which is no
/// faster than the device's (what was read lags behind what was taken), and in whole milliseconds: never too much.
std::int64_t VkAudioRecorder::outstandingFrames(Take& take) {
    snd_pcm_sframes_t delay = 0;
    if (snd_pcm_delay(take.pcm.get(), &delay) < 0)
        return 0;
    const std::int64_t nowMs = take.progress->clock();
    const std::int64_t sinceMs = std::max<std::int64_t>(nowMs - take.link->askedMs() - 1, 0);
    const std::int64_t takeMs = std::max<std::int64_t>(nowMs - take.startMs, 1);
    return delay - take.stored / phonomark::kChunkBytesPerFrame * sinceMs / takeMs;
}

void VkAudioRecorder::catchUp() {
    if (m_link && g_bRecordRunning.load(std::memory_order_relaxed))
        m_link->wait(m_progress->clock(), kCatchUpPatience);
}

bool VkAudioRecorder::hasEnded() const {
    return m_link && m_link->hasEnded();
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
