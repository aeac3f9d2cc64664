// SPDX-License-Identifier: MIT
#include "tools/soundcheck/microphone.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace soundcheck {
namespace {

/// Samples go out in pieces of this length: short enough that speech begins when it is asked for.
constexpr long kTickNs = 5'000'000;
constexpr long kSecondNs = 1'000'000'000;
/// The pipe holds no more than this (51 ms at 40000 samples a second): what lies in it is heard late.
constexpr int kPipeBytes = 4096;
/// For a reader that takes pieces: the kernel frees room a page of 4096 bytes at a time, so some have to be in reserve.
constexpr int kReservePipeBytes = 4 * kPipeBytes;
/// A reader that was away longer than this is not made to catch up: the clock begins anew.
constexpr long kForgivenNs = 50'000'000;
/// A voice that nobody has listened to for this long falls silent.
constexpr long kPatienceNs = 500'000'000;

volatile std::sig_atomic_t g_speak = 0;
volatile std::sig_atomic_t g_end = 0;

void onSignal(int signal) {
    (signal == SIGUSR1 ? g_speak : g_end) = 1;
}

void listenToSignals() {
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigaction(SIGUSR1, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
}

class Voice {
public:
    explicit Voice(const std::vector<std::int16_t>& speech)
        : m_speech(speech)
        , m_next(speech.size()) {}

    void begin() { m_next = 0; }
    void fallSilent() { m_next = m_speech.size(); }

    void fill(std::vector<std::int16_t>& piece) {
        const std::size_t spoken = std::min(piece.size(), m_speech.size() - m_next);
        std::copy_n(m_speech.begin() + static_cast<std::ptrdiff_t>(m_next), spoken, piece.begin());
        std::fill(piece.begin() + static_cast<std::ptrdiff_t>(spoken), piece.end(), std::int16_t{0});
        m_next += spoken;
    }

private:
    const std::vector<std::int16_t>& m_speech;
    std::size_t m_next;
};

/// False when the reader has gone or the process shall end.
bool writeAll(int file, const std::vector<std::int16_t>& piece) {
    const char* bytes = reinterpret_cast<const char*>(piece.data());
    std::size_t left = piece.size() * sizeof piece[0];
    while (left > 0 && g_end == 0) {
        const ssize_t written = write(file, bytes, left);
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0) {
            bytes += written;
            left -= static_cast<std::size_t>(written);
        }
    }
    return g_end == 0;
}

std::int64_t monotonicNs() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * kSecondNs + now.tv_nsec;
}

void sleepUntil(std::int64_t ns) {
    const timespec until = {ns / kSecondNs, static_cast<long>(ns % kSecondNs)};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR && g_end == 0) {
    }
}

} // namespace

void speakInto(const std::string& fifo, const Sound& speech, Pace pace) {
    listenToSignals();
    const int file = open(fifo.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0)
        throw std::runtime_error(fifo + ": " + std::strerror(errno));
    std::puts("ready"); // from here on SIGUSR1 is heard
    std::fflush(stdout);
    fcntl(file, F_SETPIPE_SZ, pace == Pace::Writer ? kPipeBytes : kReservePipeBytes);
    Voice voice(speech.samples);
    std::vector<std::int16_t> piece(static_cast<std::size_t>(speech.rate) * kTickNs / kSecondNs);
    std::int64_t due = monotonicNs();
    do {
        const std::int64_t late = monotonicNs() - due;
        if (late > kPatienceNs)
            voice.fallSilent();
        if (late > kForgivenNs || pace == Pace::Reader)
            due += late;
        if (pace == Pace::Writer) {
            due += kTickNs;
            sleepUntil(due);
        }
        if (g_speak != 0) {
            g_speak = 0;
            voice.begin();
        }
        voice.fill(piece);
    } while (writeAll(file, piece));
    close(file);
}

} // namespace soundcheck
