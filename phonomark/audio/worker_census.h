// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace phonomark {

/// The audio workers that are alive. Nobody waits for a worker while the program runs; but the module is unmapped after
/// its unload, and a worker whose code has gone would bring the host down. So the last thing the module does, in the
/// destructor of the one census, is to tell every worker to stop and to wait until its thread has left.
class WorkerCensus {
public:
    using Flag = std::atomic<bool>;

    WorkerCensus() = default;
    WorkerCensus(const WorkerCensus&) = delete;
    WorkerCensus& operator=(const WorkerCensus&) = delete;
    /// Clears the running flag of every worker and waits for all. A recorder ends within about a period of sound, a
    /// player after the device has played what it holds.
    ~WorkerCensus();

    /// Runs `body` on a thread of its own. `running` is the flag whose clearing ends it. It is set here, before the
    /// thread exists, so that a worker that comes up late cannot undo a stop.
    /// False, with a line on standard error and the flag as it was, if the system gives no thread. `body` must not
    /// throw. Any thread.
    bool start(const std::shared_ptr<Flag>& running, std::function<void()> body);

    /// Waits until every worker has left by itself. Any thread that is no worker.
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

    bool allDone() const;
    void forgetFinished();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::list<Worker> m_workers;
};

WorkerCensus& workerCensus();

/// Ends the process with status 1 through the host, which saves what it can; what was printed comes out first. Any
/// thread: a worker leaves the census.
[[noreturn]] void endProcess();

} // namespace phonomark
