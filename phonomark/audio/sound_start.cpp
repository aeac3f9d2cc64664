// SPDX-License-Identifier: MIT
#include "phonomark/audio/sound_start.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace phonomark {
namespace {

/// Whether an opening that was given up still hangs, for each direction. Set by the user-interface thread, cleared by
/// the worker. Release and acquire: who sees it cleared may count on the device having been closed.
std::array<std::atomic<bool>, SND_PCM_STREAM_LAST + 1> g_hangs = {};

/// Where the worker that opens a device and the thread that waits for it meet.
class Opening {
public:
    Opening(std::atomic<bool>& hangs, std::shared_ptr<WorkerCensus::Flag> running)
        : m_hangs(hangs)
        , m_running(std::move(running)) {}

    /// The worker: open, tell, go on if somebody waited for it.
    void work(Sound& sound) {
        const Opened outcome = sound.open(m_report);
        if (outcome != Opened::Yes)
            sound.pcm.reset();
        if (!tell(outcome)) {
            sound.pcm.reset();
            m_hangs.store(false, std::memory_order_release);
        } else if (outcome == Opened::Yes) {
            sound.run();
        } else if (outcome == Opened::EndProcess) {
            for (;;)
                pause(); // it has left the census
        }
    }

    /// False if it was given up.
    bool wait(Opened& outcome) {
        std::unique_lock lock(m_mutex);
        if (!m_changed.wait_for(lock, kOpeningPatience, [this] { return m_isOver; })) {
            m_isGivenUp = true;
            m_hangs.store(true, std::memory_order_relaxed); // the mutex orders it before the worker's clearing
            return false;
        }
        outcome = m_outcome;
        m_isKnown = true;
        m_changed.notify_all();
        return true;
    }

private:
    /// Comes back when who waits knows the outcome: a stop right after the start finds nothing recorded.
    bool tell(Opened outcome) {
        std::unique_lock lock(m_mutex);
        if (m_isGivenUp)
            return false;
        m_report.print();
        if (outcome == Opened::EndProcess)
            workerCensus().leave();
        if (outcome == Opened::Yes)
            m_running->store(true, std::memory_order_relaxed); // the mutex orders it before any stop by who waits
        m_outcome = outcome;
        m_isOver = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isKnown; });
        return true;
    }

    std::atomic<bool>& m_hangs;
    const std::shared_ptr<WorkerCensus::Flag> m_running;
    PcmReport m_report; ///< the worker's
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOver = false;
    bool m_isKnown = false;
    bool m_isGivenUp = false;
    Opened m_outcome = Opened::No;
};

bool noAnswer() {
    std::fputs("the sound device does not answer\n", stderr);
    return false;
}

} // namespace

bool startSound(snd_pcm_stream_t stream, const std::shared_ptr<WorkerCensus::Flag>& running,
                std::shared_ptr<Sound> sound) {
    std::atomic<bool>& hangs = g_hangs.at(static_cast<std::size_t>(stream));
    if (hangs.load(std::memory_order_acquire))
        return noAnswer();
    const std::shared_ptr<Opening> opening(new Opening(hangs, running));
    if (!workerCensus().start(running, [opening, sound = std::move(sound)] { opening->work(*sound); }))
        return false;
    Opened outcome = Opened::No;
    if (!opening->wait(outcome))
        return noAnswer();
    if (outcome == Opened::EndProcess)
        endProcess();
    return outcome == Opened::Yes;
}

} // namespace phonomark
