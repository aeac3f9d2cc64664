// SPDX-License-Identifier: MIT
#include "tools/soundcheck/microphone.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using soundcheck::Pace;
using soundcheck::Sound;

namespace {

/// A microphone in a process of its own and the listening end of its pipe.
class MicrophoneTest : public testing::TestWithParam<Pace> {
protected:
    MicrophoneTest() {
        char name[] = "/tmp/soundcheck-XXXXXX";
        folder = mkdtemp(name);
        const std::string fifo = folder + "/fifo";
        EXPECT_EQ(mkfifo(fifo.c_str(), 0600), 0);
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        for (int i = 1; i <= 20'000; ++i) // 0.5 s
            speech.samples.push_back(static_cast<std::int16_t>(i));
        child = fork();
        if (child == 0) {
            dup2(ready[1], STDOUT_FILENO);
            soundcheck::speakInto(fifo, speech, GetParam());
            _exit(0);
        }
        ear = open(fifo.c_str(), O_RDONLY);
        char text[6] = {};
        EXPECT_EQ(::read(ready[0], text, sizeof text), 6);
        EXPECT_EQ(std::string(text, 6), "ready\n");
        close(ready[0]);
        close(ready[1]);
    }
    ~MicrophoneTest() override {
        close(ear);
        EXPECT_EQ(waitpid(child, &status, 0), child) << "it ends when nobody listens";
        EXPECT_EQ(status, 0);
        unlink((folder + "/fifo").c_str());
        rmdir(folder.c_str());
    }

    std::int16_t next() {
        std::int16_t sample = 0;
        EXPECT_EQ(::read(ear, &sample, 2), 2);
        return sample;
    }

    Sound speech{40000, {}};
    std::string folder;
    pid_t child = -1;
    int ear = -1;
    int status = -1;
};

} // namespace

TEST_P(MicrophoneTest, SilenceUntilAskedThenTheSpeechFromItsFirstSampleThenSilence) {
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(next(), 0);
    for (int round = 0; round < 2; ++round) {
        kill(child, SIGUSR1);
        int silent = 0;
        while (next() == 0)
            ASSERT_LT(++silent, 10'000) << "it begins within what the pipe holds and two pieces";
        for (int i = 2; i <= 20'000; ++i)
            ASSERT_EQ(next(), i);
        for (int i = 0; i < 1000; ++i)
            ASSERT_EQ(next(), 0);
    }
}

TEST_P(MicrophoneTest, SpeechThatIsAskedForAgainBeginsAnew) {
    kill(child, SIGUSR1);
    while (next() != 1000) {
    }
    kill(child, SIGUSR1);
    std::int16_t sample = 1000;
    for (std::int16_t last = 1000; (sample = next()) == last + 1; last = sample) {
    }
    EXPECT_EQ(sample, 1);
}

INSTANTIATE_TEST_SUITE_P(Paces, MicrophoneTest, testing::Values(Pace::Writer, Pace::Reader),
                         [](const auto& parameter) { return parameter.param == Pace::Writer ? "Writer" : "Reader"; });
