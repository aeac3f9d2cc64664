// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace phonomark {

/// The audio workers that are alive. Nobody waits for a worker while the program runs; but the module is unmapped after
/// its unload, and a worker whose code has gone would bring the host down. So at its unload the module tells every
/// worker to stop and waits until its thread has left. A device that never answers keeps its worker for ever: such a
/// worker is left behind, and the module stays in memory.
class WorkerCensus {
public:
    using Flag = std::atomic<bool>;

    WorkerCensus();
    WorkerCensus(const WorkerCensus&) = delete;
    WorkerCensus& operator=(const WorkerCensus&) = delete;
    /// Stops every worker and waits for all, however long it takes: what is not done before this cannot be left behind.
    ~WorkerCensus();

    /// Runs `body` on a thread of its own. `running` is the flag whose clearing ends it.
    /// False, with a line on standard error, if the system gives no thread. `body` must not throw. Any thread.
    bool start(const std::shared_ptr<Flag>& running, std::function<void()> body);

    /// Clears the running flag of every worker and waits for all. A recorder ends within about a period of sound, a
    /// player after the device has played what it holds. Workers that have not left after `patience` are left behind
    /// until the end of the process; false then. The code of this library stays mapped for them. Any thread that is no
    /// worker.
    bool stopAll(std::chrono::milliseconds patience);

    /// Waits until every worker has left by itself, but for those left behind. Any thread that is no worker.
    void wait();

    /// Called on a worker's own thread before it hands the process to the host for good: it will not come back into the
    /// module, so it is not waited for any more.
    void leave();

private:
    struct Worker {
        std::shared_ptr<Flag> running;
        std::thread thread;
        bool done = false;
    };

    /// Every worker holds it: one that was left behind may come back after the census has gone.
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::list<Worker> workers;
        std::list<Worker> leftBehind;

        bool allDone() const;
        void forgetFinished();
        void clearFlags();
    };

    std::shared_ptr<State> m_state;
};

WorkerCensus& workerCensus();

/// Ends the process with status 1 through the host, which saves what it can; what was printed comes out first. Any
/// thread: a worker leaves the census.
[[noreturn]] void endProcess();

} // namespace phonomark
