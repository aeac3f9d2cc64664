// SPDX-License-Identifier: MIT
#include "tools/soundcheck/wav.h"

#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <unistd.h>

using namespace soundcheck;

namespace {

class WavTest : public testing::Test {
protected:
    WavTest() {
        char name[] = "/tmp/soundcheck-XXXXXX";
        folder = mkdtemp(name);
    }
    ~WavTest() override {
        unlink((folder + "/a.wav").c_str());
        unlink((folder + "/a.raw").c_str());
        rmdir(folder.c_str());
    }
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder + name, std::ios::binary) << bytes;
        return folder + name;
    }
    std::string folder;
};

} // namespace

TEST_F(WavTest, WhatIsWrittenIsReadAgain) {
    const Sound sound{40000, {0, 1, -1, 32767, -32768}};
    writeWav(folder + "/a.wav", sound);
    const Sound read = readSound(folder + "/a.wav");
    EXPECT_EQ(read.rate, 40000u);
    EXPECT_EQ(read.samples, sound.samples);
}

TEST_F(WavTest, BareSamplesHaveTheRateThatIsSaid) {
    const Sound sound = readSound(write("/a.raw", std::string("\x01\x00\xff\xff\x07", 5)), 8000);
    EXPECT_EQ(sound.rate, 8000u);
    EXPECT_EQ(sound.samples, (std::vector<std::int16_t>{1, -1}));
}

TEST_F(WavTest, DamagedFilesAreReadAsFarAsTheyGoOrRefused) {
    writeWav(folder + "/a.wav", {40000, {1, 2, 3}});
    const auto bytes = readBytes(folder + "/a.wav");
    const std::string whole(bytes.begin(), bytes.end());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        write("/a.wav", whole.substr(0, length));
        if (length < 44)
            EXPECT_THROW(readSound(folder + "/a.wav"), std::runtime_error) << length;
        else
            EXPECT_EQ(readSound(folder + "/a.wav").samples.size(), (length - 44) / 2) << length;
    }
    std::string stereo = whole;
    stereo[22] = 2;
    EXPECT_THROW(readSound(write("/a.wav", stereo)), std::runtime_error);
    EXPECT_THROW(readSound(folder + "/none.wav"), std::runtime_error);
    EXPECT_THROW(writeWav(folder + "/none/a.wav", {40000, {}}), std::runtime_error);
}
