// SPDX-License-Identifier: MIT
#include "merix/ed/keywords.h"

#include <gtest/gtest.h>

using namespace merix::ed;

namespace {

QString meant(const std::vector<Keyword>& keywords, const char* answer) {
    const KeywordMatch match = matchKeyword(keywords, QString::fromUtf8(answer));
    return match.keyword ? match.keyword->global : QString();
}

} // namespace

TEST(Keywords, LocalFormsComeBeforeTheUnderscoreAndGlobalFormsAfterIt) {
    const auto keywords = parseKeywords(QStringLiteral("Punkt  Bereich _ Point Region"));
    ASSERT_EQ(keywords.size(), 2U);
    EXPECT_EQ(keywords[0].local, QStringLiteral("Punkt"));
    EXPECT_EQ(keywords[0].global, QStringLiteral("Point"));
    EXPECT_EQ(keywords[1].global, QStringLiteral("Region"));
}

TEST(Keywords, WithoutGlobalFormsBothAreTheSame) {
    const auto keywords = parseKeywords(QStringLiteral("Yes No"));
    ASSERT_EQ(keywords.size(), 2U);
    EXPECT_EQ(keywords[1].global, QStringLiteral("No"));
    EXPECT_TRUE(parseKeywords(QString()).empty());
    EXPECT_TRUE(parseKeywords(QStringLiteral(" _ ")).empty());
}

TEST(Keywords, AnAbbreviationMeansTheOneLocalFormThatBeginsSo) {
    const auto keywords = parseKeywords(QStringLiteral("Point Region Object Reply Spokesman"));
    EXPECT_EQ(meant(keywords, "sp"), QStringLiteral("Spokesman"));
    EXPECT_EQ(meant(keywords, "REG"), QStringLiteral("Region"));
    EXPECT_EQ(meant(keywords, "regions"), QString());
    EXPECT_EQ(meant(keywords, ""), QString());
}

TEST(Keywords, AnAbbreviationOfSeveralFormsNamesThem) {
    const auto keywords = parseKeywords(QStringLiteral("Point Region Reply"));
    const KeywordMatch match = matchKeyword(keywords, QStringLiteral("re"));
    EXPECT_EQ(match.keyword, nullptr);
    EXPECT_EQ(match.candidates, (QStringList{QStringLiteral("Region"), QStringLiteral("Reply")}));
}

TEST(Keywords, AWholeFormWinsOverLongerOnesThatBeginWithIt) {
    const auto keywords = parseKeywords(QStringLiteral("AllLayers All"));
    EXPECT_EQ(meant(keywords, "all"), QStringLiteral("All"));
}

TEST(Keywords, TheUnderscoreAsksForTheGlobalForm) {
    const auto keywords = parseKeywords(QStringLiteral("Punkt Bereich _ Point Region"));
    EXPECT_EQ(meant(keywords, "_point"), QStringLiteral("Point"));
    EXPECT_EQ(meant(keywords, "_punkt"), QString());
    EXPECT_EQ(meant(keywords, "point"), QString());
    EXPECT_EQ(meant(keywords, "_"), QString());
}
