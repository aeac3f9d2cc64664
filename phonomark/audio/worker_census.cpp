// SPDX-License-Identifier: MIT
// A worker is done when its body has returned, yet its thread still runs code of the module then: it destroys what the
// body captured. Only a join proves that the thread has left. Joins therefore come after `done`, when they take no
// time: for the workers of earlier sounds when the next one starts, for the rest when the module goes.
#include "phonomark/audio/worker_census.h"

#include "host/rx/shutdown.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

namespace phonomark {
namespace {

// Made when the module is loaded, destroyed when it is unmapped.
WorkerCensus g_census;

} // namespace

WorkerCensus& workerCensus() {
    return g_census;
}

WorkerCensus::~WorkerCensus() {
    {
        const std::lock_guard lock(m_mutex);
        for (const Worker& worker : m_workers)
            worker.running->store(false, std::memory_order_relaxed); // see recorder.cpp, player.cpp
    }
    wait();
}

bool WorkerCensus::start(const std::shared_ptr<Flag>& running, std::function<void()> body) {
    const std::lock_guard lock(m_mutex);
    forgetFinished();
    // Starting a thread orders this store before all that the thread does.
    const bool before = running->exchange(true, std::memory_order_relaxed);
    try {
        std::list<Worker> fresh(1);
        Worker& worker = fresh.front();
        worker.running = running;
        worker.thread = std::thread([this, &worker, run = std::move(body)] {
            run();
            const std::lock_guard done(m_mutex);
            worker.done = true;
            m_changed.notify_all();
        });
        m_workers.splice(m_workers.end(), fresh);
        return true;
    } catch (const std::exception& error) {
        running->store(before, std::memory_order_relaxed);
        std::fprintf(stderr, "no thread for sound: %s\n", error.what());
        return false;
    }
}

void WorkerCensus::wait() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return allDone(); });
    forgetFinished();
}

void WorkerCensus::leave() {
    const std::lock_guard lock(m_mutex);
    const auto self = std::find_if(m_workers.begin(), m_workers.end(), [](const Worker& worker) {
        return worker.thread.get_id() == std::this_thread::get_id();
    });
    if (self == m_workers.end())
        return;
    self->thread.detach();
    m_workers.erase(self);
    m_changed.notify_all();
}

bool WorkerCensus::allDone() const {
    return std::all_of(m_workers.begin(), m_workers.end(), [](const Worker& worker) { return worker.done; });
}

/// With the mutex held: a worker that is done takes it no more.
void WorkerCensus::forgetFinished() {
    for (auto worker = m_workers.begin(); worker != m_workers.end();) {
        if (!worker->done) {
            ++worker;
            continue;
        }
        worker->thread.join();
        worker = m_workers.erase(worker);
    }
}

void endProcess() {
    std::fflush(stdout);
    workerCensus().leave();
    mxrxShutdown(1);
}

} // namespace phonomark
