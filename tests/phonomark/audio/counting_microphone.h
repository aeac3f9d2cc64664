// SPDX-License-Identifier: MIT
#pragma once

#include "tests/phonomark/audio/sound_server.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <sys/ioctl.h>
#include <thread>
#include <vector>

/// A sound server whose virtual microphone counts: its samples go up by one from each to the next and begin anew after
/// kCount of them. So a sample says when it was taken, and a lost one shows.
class CountingMicrophone {
public:
    static constexpr int kCount = 60'000; ///< a second and a half
    static constexpr int kRate = 40'000;

    /// `piece`: how often the microphone hands on what it has taken. A server is woken by every one, and so is whoever
    /// listens to it.
    explicit CountingMicrophone(const std::string& kind, std::chrono::milliseconds piece = std::chrono::milliseconds(1))
        : m_piece(piece)
        , m_program(makeProgram())
        , server(kind, m_program + "/idle", m_program + "/idle") { // any file that can be read will do for the speech
        const bool pulled = kind == "pipewire"; // it takes sound when it needs it, so the pipe is kept filled
        m_pipe = open(server.path("microphone.fifo").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (m_pipe < 0)
            throw std::runtime_error("no pipe to the microphone");
        fcntl(m_pipe, F_SETPIPE_SZ, pulled ? 16'384 : 4'096);
        m_feeder = std::thread([this, pulled] { feed(pulled); });
    }
    CountingMicrophone(const CountingMicrophone&) = delete;
    CountingMicrophone& operator=(const CountingMicrophone&) = delete;
    ~CountingMicrophone() {
        m_end = true;
        m_feeder.join();
        close(m_pipe);
        std::filesystem::remove_all(m_program);
    }

    /// How many samples the server has taken from the microphone up to now.
    std::int64_t taken() const {
        const std::lock_guard lock(m_mutex);
        int waiting = 0;
        ioctl(m_pipe, FIONREAD, &waiting);
        return m_written - waiting / 2;
    }

    static std::int16_t sample(std::int64_t position) {
        return static_cast<std::int16_t>(position % kCount - kCount / 2);
    }

    /// How many samples of those below `end` follow the one of value `last`: less than half of kCount, or as many too
    /// many where negative.
    static int missing(std::int64_t end, std::int16_t last) {
        const auto count = static_cast<int>((end - 1 - (last + kCount / 2)) % kCount);
        return count >= kCount / 2 ? count - kCount : count;
    }

private:
    /// A folder with the program that the script starts in place of the one that feeds the microphone.
    static std::string makeProgram() {
        char name[] = "/tmp/phonomark-idle-XXXXXX";
        const std::string folder = mkdtemp(name);
        std::ofstream(folder + "/idle") << "#!/bin/sh\necho ready\nexec sleep infinity\n";
        std::filesystem::permissions(folder + "/idle", std::filesystem::perms::owner_all);
        return folder;
    }

    void feed(bool pulled) {
        using namespace std::chrono;
        sigset_t brokenPipe; // the server may have died; that is nothing to this thread alone
        sigemptyset(&brokenPipe);
        sigaddset(&brokenPipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
        std::vector<std::int16_t> piece;
        auto due = steady_clock::now();
        while (!m_end) {
            // As fast as it would be spoken; after a pause of the machine's not faster.
            const auto now = steady_clock::now();
            due = std::max(due, now - milliseconds(50));
            const auto late = duration_cast<microseconds>(now - due).count() * kRate / 1'000'000;
            piece.resize(pulled ? 2'048 : static_cast<std::size_t>(std::clamp<std::int64_t>(late, 0, 2'000)));
            due += microseconds(static_cast<std::int64_t>(piece.size()) * 1'000'000 / kRate);
            {
                const std::lock_guard lock(m_mutex);
                for (std::size_t i = 0; i < piece.size(); ++i)
                    piece[i] = sample(m_written + static_cast<std::int64_t>(i));
                const ssize_t written = write(m_pipe, piece.data(), piece.size() * 2);
                m_written += written > 0 ? written / 2 : 0;
            }
            std::this_thread::sleep_for(m_piece);
        }
    }

    const std::chrono::milliseconds m_piece;
    std::string m_program;

public:
    SoundServer server;

private:
    int m_pipe = -1;
    mutable std::mutex m_mutex;
    std::int64_t m_written = 0;
    std::atomic<bool> m_end = false;
    std::thread m_feeder;
};
