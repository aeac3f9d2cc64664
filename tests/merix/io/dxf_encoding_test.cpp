// SPDX-License-Identifier: MIT
#include "merix/io/dxf_encoding.h"

#include <gtest/gtest.h>

namespace merix::io {
namespace {

TEST(DxfEncoding, IsUtf8FromAc1021On) {
    const DxfEncoding encoding("AC1021", "ANSI_1251");
    EXPECT_EQ(encoding.decode("\xC3\xA9\xF0\x9F\x8E\xA4"), L"\u00e9\U0001f3a4");
    EXPECT_EQ(encoding.encode(L"\u00e9\U0001f3a4"), "\xC3\xA9\xF0\x9F\x8E\xA4");
}

TEST(DxfEncoding, FollowsTheCodePageBefore) {
    EXPECT_EQ(DxfEncoding("AC1015", "ansi_1251").decode("\xCF"), L"\u041f");
    EXPECT_EQ(DxfEncoding("AC1015", "ANSI_1252").decode("\xE9"), L"\u00e9");
    EXPECT_EQ(DxfEncoding("AC1009", "nonsense").decode("\xE9"), L"\u00e9");
    EXPECT_EQ(DxfEncoding("AC1015", "ANSI_932").decode("\x93\xFA"), L"\u65e5");
    EXPECT_EQ(DxfEncoding("AC1015", "ANSI_1251").encode(L"\u041f"), "\xCF");
}

TEST(DxfEncoding, EscapesWhatTheCodePageLacks) {
    const DxfEncoding encoding("AC1015", "ANSI_1252");
    EXPECT_EQ(encoding.encode(L"a\u041f\U0001f3a4"), "a\\U+041F\\U+D83C\\U+DFA4");
    EXPECT_EQ(encoding.decode("a\\U+041F\\U+D83C\\U+DFA4"), L"a\u041f\U0001f3a4");
    EXPECT_EQ(encoding.decode("\\U+04 \\U"), L"\\U+04 \\U");
}

TEST(DxfEncoding, AnyTextIsOneLine) {
    const DxfEncoding encoding("AC1021", "");
    EXPECT_EQ(encoding.encode(L"a\nb\r\tc^d"), "a^Jb^M^Ic^ d");
    EXPECT_EQ(encoding.decode("a^Jb^M^Ic^ d"), L"a\nb\r\tc^d");
    std::wstring all;
    for (wchar_t c = 1; c < 0x300; ++c)
        all += c;
    EXPECT_EQ(encoding.encode(all).find('\n'), std::string::npos);
    EXPECT_EQ(encoding.decode(encoding.encode(all)), all);
    EXPECT_EQ(DxfEncoding("AC1015", "ANSI_1252").decode(DxfEncoding("AC1015", "ANSI_1252").encode(all)), all);
}

TEST(DxfEncoding, LettersThatSpellAnEscapeStayLetters) {
    for (const char* version : {"AC1015", "AC1021"}) {
        const DxfEncoding encoding(version, "ANSI_1252");
        EXPECT_EQ(encoding.encode(L"\\U+0041"), "\\U+005CU+0041");
        for (const wchar_t* text : {L"\\U+0041", L"\\\\U+00e4\\U+", L"\\u+005CU+0041", L"\\U+0000", L"\\P \\"})
            EXPECT_EQ(encoding.decode(encoding.encode(text)), text);
    }
}

TEST(DxfEncoding, SurvivesWhatIsNoText) {
    const DxfEncoding encoding("AC1021", "");
    EXPECT_EQ(encoding.decode("\xFF\xFE").find(L'\uFFFD'), 0U);
    EXPECT_EQ(encoding.encode(std::wstring(1, static_cast<wchar_t>(0xD800))), "\\U+D800");
    EXPECT_EQ(encoding.encode(std::wstring(1, static_cast<wchar_t>(0x7FFFFFFF))), "\\U+FFFD");
}

} // namespace
} // namespace merix::io
