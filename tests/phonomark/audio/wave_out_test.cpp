// SPDX-License-Identifier: MIT
#include "phonomark/audio/wave_out.h"

#include <gtest/gtest.h>

TEST(WaveOutTest, BuildsAHeaderForTheBytesAndPlaysNothing) {
    const char bytes[] = "sound";
    EXPECT_TRUE(playSnd(bytes, 5));
    const tWAVEHDR* header = pWaveHdr;
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->lpData, bytes);
    EXPECT_EQ(header->dwBufferLength, 5u);
    EXPECT_EQ(header->dwBytesRecorded, 0u);
    EXPECT_EQ(header->dwUser, 0u);
    EXPECT_EQ(header->dwFlags, 12u);
    EXPECT_EQ(header->dwLoops, 1u);
    EXPECT_EQ(header->lpNext, nullptr);
    EXPECT_EQ(header->reserved, 0u);
    EXPECT_EQ(hWaveOut.load(), nullptr);
}

TEST(WaveOutTest, EachCallHasAHeaderOfItsOwnAndEarlierOnesStayValid) {
    EXPECT_TRUE(playSnd("first", 5));
    const tWAVEHDR* first = pWaveHdr;
    EXPECT_TRUE(playSnd(nullptr, 0));
    EXPECT_NE(pWaveHdr.load(), first);
    EXPECT_STREQ(first->lpData, "first");
    EXPECT_EQ(pWaveHdr.load()->lpData, nullptr);
}

TEST(WaveOutTest, AnOpenOutputIsForgotten) {
    int device = 0;
    hWaveOut = &device;
    EXPECT_TRUE(playSnd("x", 1));
    EXPECT_EQ(hWaveOut.load(), nullptr);
    EXPECT_EQ(pWaveHdr.load()->dwBufferLength, 1u);
}
