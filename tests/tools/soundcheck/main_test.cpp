// SPDX-License-Identifier: MIT
// The program as a script calls it.
#include "tools/soundcheck/wav.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class SoundcheckTest : public testing::Test {
protected:
    SoundcheckTest() {
        char name[] = "/tmp/soundcheck-XXXXXX";
        folder = mkdtemp(name);
    }
    ~SoundcheckTest() override {
        const std::string command = "rm -r " + folder;
        EXPECT_EQ(std::system(command.c_str()), 0);
    }
    /// The exit status; what is printed goes to the file "out".
    int run(const std::string& arguments) const {
        const std::string command =
            "cd " + folder + " && " MERIX_BINARY_DIR "/bin/soundcheck " + arguments + " >out 2>&1";
        return WEXITSTATUS(std::system(command.c_str()));
    }
    std::string out() const {
        const std::vector<unsigned char> bytes = soundcheck::readBytes(folder + "/out");
        return {bytes.begin(), bytes.end()};
    }
    std::string folder;
};

} // namespace

TEST_F(SoundcheckTest, CorrelatePrintsTheLikenessAsJson) {
    soundcheck::writeWav(folder + "/a.wav", {40000, {1000, -2000, 500, 3000, -100, 2500}});
    soundcheck::writeWav(folder + "/b.wav", {40000, {0, 0, 1000, -2000, 500, 3000, -100, 2500}});
    EXPECT_EQ(run("correlate a.wav b.wav"), 0);
    EXPECT_TRUE(out().starts_with("{\"peak\": 1.0000, \"lag_ms\": 0.050,")) << out();
}

TEST_F(SoundcheckTest, ExtractNoteTakesThePaddingOut) {
    std::ofstream(folder + "/note", std::ios::binary) << std::string("\1\0\2\0\0\0\0\0\3\0\4\0\0\0\0\0", 16);
    EXPECT_EQ(run("extract-note note note.wav 2 48000"), 0);
    const soundcheck::Sound sound = soundcheck::readSound(folder + "/note.wav");
    EXPECT_EQ(sound.rate, 48000u);
    EXPECT_EQ(sound.samples, (std::vector<std::int16_t>{1, 2, 3, 4}));
    EXPECT_EQ(run("extract-note note note.wav 1"), 1);
    EXPECT_EQ(out(), "soundcheck: byte 2 should be padding but is not zero\n");
}

TEST_F(SoundcheckTest, WrapMakesAWavOfBareSamples) {
    std::ofstream(folder + "/a.raw", std::ios::binary) << std::string("\1\0\2\0", 4);
    EXPECT_EQ(run("wrap a.raw a.wav"), 0);
    EXPECT_EQ(soundcheck::readSound(folder + "/a.wav").rate, 40000u);
}

TEST_F(SoundcheckTest, AWrongCallIsRefusedWithOneClearMessage) {
    EXPECT_EQ(run(""), 1);
    EXPECT_TRUE(out().starts_with("usage: soundcheck"));
    EXPECT_EQ(run("correlate a.wav"), 1);
    EXPECT_EQ(run("correlate none.wav none.wav"), 1);
    EXPECT_EQ(out(), "soundcheck: none.wav: cannot be opened\n");
    EXPECT_EQ(run("extract-note none none.wav 16x"), 1);
    EXPECT_EQ(run("microphone none none.wav"), 1);
}
