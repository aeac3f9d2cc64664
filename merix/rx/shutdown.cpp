// SPDX-License-Identifier: MIT
#include "merix/rx/shutdown.h"

#include <atomic>
#include <cstdio>

#include <pthread.h>
#include <unistd.h>

namespace merix::rx {

namespace {

std::atomic<ShutdownHook> g_hook{nullptr}, g_meanwhile{nullptr};
std::atomic<pthread_t> g_thread{};

/// A stream that another thread holds (it may be blocked in a read) is left alone: waiting for it could last for ever.
void flush(std::FILE* stream) {
    if (ftrylockfile(stream) != 0)
        return;
    std::fflush(stream);
    funlockfile(stream);
}

void run(const std::atomic<ShutdownHook>& hook) {
    try {
        if (const ShutdownHook call = hook.load())
            call();
    } catch (...) {
        std::fputs("merix: writing the recovery files failed\n", stderr);
    }
}

[[noreturn]] void leave(int status) {
    flush(stdout);
    flush(stderr);
    _exit(status);
}

} // namespace

void setShutdownHook(ShutdownHook hook, ShutdownHook meanwhile) {
    g_hook.store(hook);
    g_meanwhile.store(meanwhile);
}

} // namespace merix::rx

void mxrxShutdown(int status) {
    using namespace merix::rx;
    // Thread ids are never 0 on this platform, so 0 stands for "nobody yet".
    pthread_t first{};
    if (!g_thread.compare_exchange_strong(first, pthread_self())) {
        if (pthread_equal(first, pthread_self()))
            leave(status); // the hook itself asked: nothing more can be saved
        run(g_meanwhile);
        for (;;)
            pause(); // the other thread ends the process
    }
    run(g_hook);
    leave(status);
}
