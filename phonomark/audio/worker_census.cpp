// SPDX-License-Identifier: MIT
// A worker is done when its body has returned, yet its thread still runs code of the module then: it destroys what the
// body captured. Only a join proves that the thread has left. Joins therefore come after `done`, when they take no
// time: for the workers of earlier sounds when the next one starts, for the rest when the module goes.
//
// A device that hangs (its sound server has stopped) holds its worker inside the sound library, where nothing can reach
// it: closing the device from another thread is not allowed. The only sound way out is to let code and memory of that
// worker stay.
#include "phonomark/audio/worker_census.h"

#include "host/rx/shutdown.h"

#include <algorithm>
#include <cstdio>
#include <dlfcn.h>
#include <exception>
#include <utility>

namespace phonomark {
namespace {

/// From now on unloading this library leaves it in memory. It has to be called before the unloading has begun. A
/// program is no library, and the call of no effect on it.
void keepMapped() {
    Dl_info self{};
    if (dladdr(reinterpret_cast<void*>(&keepMapped), &self) != 0 && self.dli_fname)
        dlopen(self.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace

WorkerCensus& workerCensus() {
    // Made at its first use: what is thrown while a module is mapped cannot be caught. Destroyed when it is unmapped.
    static WorkerCensus census;
    return census;
}

WorkerCensus::WorkerCensus()
    : m_state(new State) {}

WorkerCensus::~WorkerCensus() {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->clearFlags();
    }
    wait();
}

bool WorkerCensus::start(const std::shared_ptr<Flag>& running, std::function<void()> body) {
    const std::lock_guard lock(m_state->mutex);
    m_state->forgetFinished();
    try {
        std::list<Worker> fresh(1);
        Worker& worker = fresh.front();
        worker.running = running;
        worker.thread = std::thread([state = m_state, &worker, run = std::move(body)] {
            run();
            const std::lock_guard done(state->mutex);
            worker.done = true;
            state->changed.notify_all();
        });
        m_state->workers.splice(m_state->workers.end(), fresh);
        return true;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "no thread for sound: %s\n", error.what());
        return false;
    }
}

bool WorkerCensus::stopAll(std::chrono::milliseconds patience) {
    std::unique_lock lock(m_state->mutex);
    m_state->clearFlags();
    const bool allLeft = m_state->changed.wait_for(lock, patience, [this] { return m_state->allDone(); });
    m_state->forgetFinished();
    if (allLeft)
        return true;
    std::fputs("the sound device does not answer; its worker is left behind\n", stderr);
    keepMapped();
    for (Worker& worker : m_state->workers)
        worker.thread.detach();
    m_state->leftBehind.splice(m_state->leftBehind.end(), m_state->workers);
    return false;
}

void WorkerCensus::wait() {
    std::unique_lock lock(m_state->mutex);
    m_state->changed.wait(lock, [this] { return m_state->allDone(); });
    m_state->forgetFinished();
}

void WorkerCensus::leave() {
    const std::lock_guard lock(m_state->mutex);
    auto& workers = m_state->workers;
    const auto self = std::find_if(workers.begin(), workers.end(), [](const Worker& worker) {
        return worker.thread.get_id() == std::this_thread::get_id();
    });
    if (self == workers.end())
        return;
    self->thread.detach();
    workers.erase(self);
    m_state->changed.notify_all();
}

bool WorkerCensus::State::allDone() const {
    return std::all_of(workers.begin(), workers.end(), [](const Worker& worker) { return worker.done; });
}

/// With the mutex held: a worker that is done takes it no more.
void WorkerCensus::State::forgetFinished() {
    for (auto worker = workers.begin(); worker != workers.end();) {
        if (!worker->done) {
            ++worker;
            continue;
        }
        worker->thread.join();
        worker = workers.erase(worker);
    }
}

void WorkerCensus::State::clearFlags() {
    for (const Worker& worker : workers)
        worker.running->store(false, std::memory_order_relaxed); // see recorder.cpp, player.h
}

void endProcess() {
    std::fflush(stdout);
    workerCensus().leave();
    mxrxShutdown(1);
}

} // namespace phonomark
