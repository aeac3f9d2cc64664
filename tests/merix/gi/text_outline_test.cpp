// SPDX-License-Identifier: MIT
#include "merix/gi/text_outline.h"

#include "tests/merix/gi/gui_test.h"

using namespace merix::gi;

namespace {

class TextOutlineTest : public GuiTest {};

TEST_F(TextOutlineTest, CapitalLettersAreOneHighAndStandOnTheBaseLine) {
    const QRectF box = outlineOf(QStringLiteral("H")).path.boundingRect();
    EXPECT_NEAR(box.top(), 0.0, 0.02);
    EXPECT_NEAR(box.bottom(), 1.0, 0.02);
}

TEST_F(TextOutlineTest, TheAdvanceGrowsWithTheText) {
    EXPECT_NEAR(outlineOf(QStringLiteral("HH")).advance, 2 * outlineOf(QStringLiteral("H")).advance, 1e-6);
    EXPECT_EQ(outlineOf(QString()).advance, 0.0);
}

TEST_F(TextOutlineTest, CodesStandForCharacters) {
    const auto same = [](const char16_t* coded, const char16_t* plain) {
        return outlineOf(QString::fromUtf16(coded)).path == outlineOf(QString::fromUtf16(plain)).path;
    };
    EXPECT_TRUE(same(u"90%%d", u"90\u00b0"));
    EXPECT_TRUE(same(u"%%P1", u"\u00b11"));
    EXPECT_TRUE(same(u"%%c8", u"\u23008"));
    EXPECT_TRUE(same(u"5%%%", u"5%"));
    EXPECT_TRUE(same(u"%%065", u"A"));
    EXPECT_TRUE(same(u"\\U+00B0C", u"\u00b0C"));
    EXPECT_TRUE(same(u"a%%ub%%u", u"ab") == false);
}

TEST_F(TextOutlineTest, WhatIsNoCodeStays) {
    const auto advance = [](const char* text) { return outlineOf(QString::fromLatin1(text)).advance; };
    EXPECT_GT(advance("100%%"), advance("100%"));
    EXPECT_GT(advance("%%x"), advance("%x"));
    EXPECT_GT(advance("\\U+12"), advance("\\U+1"));
}

TEST_F(TextOutlineTest, AnUnderlineReachesBelowTheBaseLine) {
    EXPECT_LT(outlineOf(QStringLiteral("%%uH%%u")).path.boundingRect().top(), -0.1);
    EXPECT_GT(outlineOf(QStringLiteral("%%oH")).path.boundingRect().bottom(), 1.1);
}

} // namespace
