// SPDX-License-Identifier: MIT
#include "merix/gi/colors.h"

#include <gtest/gtest.h>

using namespace merix::gi;

namespace {

TEST(Colors, NamedIndicesAreThePrimaries) {
    EXPECT_EQ(colorOfIndex(1), qRgb(255, 0, 0));
    EXPECT_EQ(colorOfIndex(2), qRgb(255, 255, 0));
    EXPECT_EQ(colorOfIndex(3), qRgb(0, 255, 0));
    EXPECT_EQ(colorOfIndex(4), qRgb(0, 255, 255));
    EXPECT_EQ(colorOfIndex(5), qRgb(0, 0, 255));
    EXPECT_EQ(colorOfIndex(6), qRgb(255, 0, 255));
    EXPECT_EQ(colorOfIndex(8), qRgb(128, 128, 128));
    EXPECT_EQ(colorOfIndex(9), qRgb(192, 192, 192));
}

TEST(Colors, HuesTurnByFifteenDegrees) {
    EXPECT_EQ(colorOfIndex(10), qRgb(255, 0, 0));
    EXPECT_EQ(colorOfIndex(20), qRgb(255, 63, 0));
    EXPECT_EQ(colorOfIndex(30), qRgb(255, 127, 0));
    EXPECT_EQ(colorOfIndex(40), qRgb(255, 191, 0));
    EXPECT_EQ(colorOfIndex(50), qRgb(255, 255, 0));
    EXPECT_EQ(colorOfIndex(90), qRgb(0, 255, 0));
    EXPECT_EQ(colorOfIndex(170), qRgb(0, 0, 255));
    EXPECT_EQ(colorOfIndex(240), qRgb(255, 0, 63));
}

TEST(Colors, ShadesDarkenAndEverySecondIsPale) {
    EXPECT_EQ(colorOfIndex(11), qRgb(255, 127, 127));
    EXPECT_EQ(colorOfIndex(12), qRgb(204, 0, 0));
    EXPECT_EQ(colorOfIndex(13), qRgb(204, 102, 102));
    EXPECT_EQ(colorOfIndex(14), qRgb(153, 0, 0));
    EXPECT_EQ(colorOfIndex(18), qRgb(76, 0, 0));
}

TEST(Colors, GreysRunFromDarkToWhite) {
    EXPECT_EQ(colorOfIndex(250), qRgb(51, 51, 51));
    EXPECT_EQ(colorOfIndex(255), qRgb(255, 255, 255));
    for (int i = 250; i < 255; ++i)
        EXPECT_LT(qGray(colorOfIndex(i)), qGray(colorOfIndex(i + 1)));
}

TEST(Colors, AnIndexOutsideTheTableIsWhite) {
    EXPECT_EQ(colorOfIndex(-1), qRgb(255, 255, 255));
    EXPECT_EQ(colorOfIndex(256), qRgb(255, 255, 255));
}

TEST(Colors, ContrastIsWhiteOnDarkAndBlackOnLight) {
    EXPECT_EQ(contrasting(QColor(33, 40, 48)), qRgb(255, 255, 255));
    EXPECT_EQ(contrasting(QColor(250, 250, 250)), qRgb(0, 0, 0));
}

} // namespace
