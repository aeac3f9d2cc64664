// SPDX-License-Identifier: MIT
#include "merix/rx/text.h"

#include <gtest/gtest.h>

namespace {

using merix::rx::foldCase;
using merix::rx::fromUtf8;
using merix::rx::toUtf8;

TEST(Text, EveryPlaneOfUnicodeGoesThroughUtf8AndBack) {
    const std::wstring text = L"aß€\U0001F399\x10FFFF";
    EXPECT_EQ(toUtf8(text), "a\xC3\x9F\xE2\x82\xAC\xF0\x9F\x8E\x99\xF4\x8F\xBF\xBF");
    EXPECT_EQ(fromUtf8(toUtf8(text)), text);
}

TEST(Text, LoneSurrogatesSurvive) {
    const std::wstring text = {static_cast<wchar_t>(0xD834), L'x'};
    EXPECT_EQ(fromUtf8(toUtf8(text)), text);
}

TEST(Text, WhatIsNoCodePointBecomesTheReplacementCharacter) {
    EXPECT_EQ(toUtf8(std::wstring(1, static_cast<wchar_t>(0x110000))), "\xEF\xBF\xBD");
}

TEST(Text, MalformedSequencesBecomeTheReplacementCharacterAndCostNoMore) {
    EXPECT_EQ(fromUtf8("\xE2\x82"), L"\xFFFD\xFFFD"); // cut short
    EXPECT_EQ(fromUtf8("\xC0\xAF"), L"\xFFFD\xFFFD"); // overlong
    EXPECT_EQ(fromUtf8("\xFF"
                       "a"),
              L"\xFFFD"
              L"a");
    EXPECT_EQ(fromUtf8("\xC3"
                       "a"),
              L"\xFFFD"
              L"a");
    EXPECT_EQ(fromUtf8("\xF5\x80\x80\x80").size(), 4U); // beyond the last plane
}

TEST(Text, NamesAreComparedWithoutCaseInAnyScript) {
    EXPECT_EQ(foldCase(L"WALL_Ä"), foldCase(L"wall_ä"));
    EXPECT_EQ(foldCase(L"СТЕНА"), foldCase(L"стена"));
    EXPECT_NE(foldCase(L"Wall1"), foldCase(L"Wall2"));
}

} // namespace
