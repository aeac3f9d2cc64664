// SPDX-License-Identifier: MIT
#include "merix/io/dxf_tag.h"

#include <gtest/gtest.h>

namespace merix::io {
namespace {

TEST(DxfScanner, KeepsBlanksInFrontOfValuesAndNotLineEnds) {
    DxfScanner scanner("  1\r\n  two words \r\n 70\n     5\n");
    DxfTag tag;
    ASSERT_EQ(scanner.next(tag), DxfScanner::Result::kTag);
    EXPECT_EQ(tag.code, 1);
    EXPECT_EQ(tag.value, "  two words ");
    EXPECT_EQ(tag.text, "  1\r\n  two words \r\n");
    ASSERT_EQ(scanner.next(tag), DxfScanner::Result::kTag);
    EXPECT_EQ(tag.code, 70);
    EXPECT_EQ(tag.value, "     5");
    EXPECT_EQ(scanner.line(), 5U);
    EXPECT_EQ(scanner.next(tag), DxfScanner::Result::kEnd);
}

TEST(DxfScanner, ReadsALastLineWithoutLineEnd) {
    DxfScanner scanner("0\nEOF");
    DxfTag tag;
    ASSERT_EQ(scanner.next(tag), DxfScanner::Result::kTag);
    EXPECT_EQ(tag.value, "EOF");
    EXPECT_EQ(scanner.next(tag), DxfScanner::Result::kEnd);
}

TEST(DxfScanner, StaysInFrontOfWhatIsNoGroupCode) {
    for (const char* text : {"12x\n1\n", "x\n1\n", "123456\n1\n", "-\n1\n", "1.5\n1\n"}) {
        DxfScanner scanner(text);
        DxfTag tag;
        EXPECT_EQ(scanner.next(tag), DxfScanner::Result::kBadCode) << text;
        EXPECT_EQ(scanner.position(), 0U);
    }
}

TEST(DxfScanner, TellsACodeWithoutValueFromTheEnd) {
    DxfTag tag;
    EXPECT_EQ(DxfScanner("10\n").next(tag), DxfScanner::Result::kMissingValue);
    EXPECT_EQ(DxfScanner("10").next(tag), DxfScanner::Result::kMissingValue);
    EXPECT_EQ(DxfScanner("").next(tag), DxfScanner::Result::kEnd);
    EXPECT_EQ(DxfScanner("\r\n \n").next(tag), DxfScanner::Result::kEnd);
}

} // namespace
} // namespace merix::io
