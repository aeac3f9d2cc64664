// SPDX-License-Identifier: MIT
#include "merix/app/end_signals.h"

#include "merix/ap/autosave.h"
#include "merix/ui/window_watch.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace merix::app {

namespace {

constexpr std::array kSignals{SIGTERM, SIGHUP, SIGINT};
std::atomic<int> g_received{0};
std::atomic<int> g_wake{-1}; ///< the end of the pipe that the handler writes to

static_assert(std::atomic<int>::is_always_lock_free, "a handler takes no lock");

/// Any thread. All it does is allowed in a handler.
void onSignal(int number) {
    const int before = errno;
    int none = 0;
    if (!g_received.compare_exchange_strong(none, number))
        _exit(128 + number); // the second: whoever sends it waits no longer
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(g_wake, &byte, 1);
    errno = before;
}

void handle(int number, void (*handler)(int)) {
    struct sigaction action {};
    if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
        return; // started by nohup, or in the background of a shell that keeps Ctrl+C to itself
    action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(number, &action, nullptr);
}

} // namespace

EndSignals::EndSignals(QObject* parent)
    : QObject(parent) {
    if (::pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signals end the program as they ever did
    g_wake = m_pipe[1];
    m_notifier = new QSocketNotifier(m_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &EndSignals::end);
    for (const int number : kSignals)
        handle(number, &onSignal);
}

EndSignals::~EndSignals() {
    if (!m_notifier)
        return;
    for (const int number : kSignals)
        handle(number, SIG_DFL);
    for (const int end : m_pipe)
        ::close(end);
}

/// In whatever event loop is at work: a prompt's, a dialog's, a script's. Leaving them all cancels what waits there.
void EndSignals::end() {
    m_notifier->setEnabled(false);
    std::signal(SIGPIPE, SIG_IGN);          // who read what the program says may have gone with its terminal
    ui::WindowWatch::instance().endPress(); // what is being said belongs to it
    ap::Autosave::instance().keepUnsaved();
    ap::DocManager::instance().requestQuit();
}

int EndSignals::received() {
    return g_received;
}

void EndSignals::leave() {
    const int number = g_received;
    if (!number)
        return;
    std::fflush(stdout);
    std::signal(number, SIG_DFL);
    std::raise(number);
}

} // namespace merix::app
