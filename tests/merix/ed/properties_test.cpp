// SPDX-License-Identifier: MIT
#include "merix/ed/properties.h"

#include <gtest/gtest.h>

using namespace merix::ed;

namespace {

std::string colorOf(const char* text) {
    const auto color = parseColor(QString::fromUtf8(text));
    return color ? formatColor(*color).toStdString() : "none";
}

int weightOf(const char* text) {
    return parseLineWeight(QString::fromUtf8(text)).value_or(-99);
}

} // namespace

TEST(Properties, ColoursAreNumbersNamesOrLevels) {
    EXPECT_EQ(colorOf("bylayer"), "ByLayer");
    EXPECT_EQ(colorOf("BYBLOCK"), "ByBlock");
    EXPECT_EQ(colorOf("1"), "red");
    EXPECT_EQ(colorOf("White"), "white");
    EXPECT_EQ(colorOf("8"), "8");
    EXPECT_EQ(colorOf("255"), "255");
    EXPECT_EQ(colorOf("157,184,244"), "157,184,244");
    EXPECT_EQ(parseColor(QStringLiteral("1,2,3"))->rgb, 0x010203U);
    for (const char* text : {"", "0", "256", "-1", "reddish", "1,2", "1,2,256", "1,2,x", "1,2,3,4"})
        EXPECT_EQ(colorOf(text), "none") << text;
}

TEST(Properties, LineWeightsAreMillimetresThatFilesKnow) {
    EXPECT_EQ(weightOf("ByLayer"), -1);
    EXPECT_EQ(weightOf("byblock"), -2);
    EXPECT_EQ(weightOf("DEFAULT"), -3);
    EXPECT_EQ(weightOf("0.25"), 25);
    EXPECT_EQ(weightOf("0.26"), 25);
    EXPECT_EQ(weightOf("0"), 0);
    EXPECT_EQ(weightOf("2.11"), 211);
    for (const char* text : {"", "-0.1", "2.12", "thick", "nan"})
        EXPECT_EQ(weightOf(text), -99) << text;
    for (int weight = -10; weight < 250; ++weight)
        if (isLineWeight(weight)) {
            EXPECT_EQ(parseLineWeight(formatLineWeight(weight)), weight);
        }
    EXPECT_FALSE(isLineWeight(24));
    EXPECT_FALSE(isLineWeight(-4));
}

TEST(Properties, WhatIsNoRecordHasNoName) {
    EXPECT_EQ(recordName({}), QString());
    EXPECT_EQ(layerRecord({}), nullptr);
    EXPECT_EQ(layerOf({}), nullptr);
}
