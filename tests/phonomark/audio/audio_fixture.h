// SPDX-License-Identifier: MIT
#pragma once

#include "phonomark/audio/worker_census.h"
#include "tests/support/alsa_script/alsa_script.h"

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

/// What the host does before it ends the process; nothing unless a test says so.
extern std::function<void()> g_atShutdown;

/// A machine with one sound device, played by the scripted libasound.
class AudioTest : public testing::Test {
protected:
    AudioTest() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        char name[] = "/tmp/phonomark-audio-XXXXXX";
        m_folder = mkdtemp(name);
        list("00-00: virtual : virtual : playback 1 : capture 1\n");
        unsetenv("PHONOMARK_AUDIO_LOG");
        alsa.reset();
    }
    ~AudioTest() override {
        const std::string command = "rm -r " + m_folder;
        EXPECT_EQ(std::system(command.c_str()), 0);
    }

    /// Before any fixture's members go: a worker that was stopped may still write what it has read into one.
    void TearDown() override { phonomark::workerCensus().wait(); }

    std::string path(const std::string& name) const { return m_folder + "/" + name; }

    /// The device listing holds `text`.
    void list(const std::string& text) const {
        std::ofstream(path("pcm"), std::ios::binary) << text;
        setenv("PHONOMARK_PCM_LIST", path("pcm").c_str(), 1);
    }

    static std::string contents(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        std::ostringstream text;
        text << stream.rdbuf();
        return text.str();
    }

    AlsaScript& alsa = AlsaScript::instance();

private:
    std::string m_folder;
};

/// What is printed while it lives, from any thread.
class Printed {
public:
    Printed() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    ~Printed() {
        if (!m_taken)
            take();
    }
    void take() {
        m_taken = true;
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
    }

    std::string out;
    std::string err;

private:
    bool m_taken = false;
};
