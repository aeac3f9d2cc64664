// SPDX-License-Identifier: MIT
#include "merix/ap/ask_path.h"

#include "tests/merix/ed/answers.h"

#include <QDir>

#include <gtest/gtest.h>

using merix::ap::askPath;

namespace {

QString typed(const char* text) {
    const merix::test::Answers answers({QString::fromUtf8(text)});
    return askPath(QStringLiteral("File: "));
}

} // namespace

TEST(AskPath, BlanksQuotesAndTheHomeFolderAreUnderstood) {
    EXPECT_EQ(typed("/a/my plan.dxf"), QStringLiteral("/a/my plan.dxf"));
    EXPECT_EQ(typed("\"my plan.dxf\""), QStringLiteral("my plan.dxf"));
    EXPECT_EQ(typed("~/a.dxf"), QDir::homePath() + QStringLiteral("/a.dxf"));
    EXPECT_EQ(typed("\""), QStringLiteral("\""));
    EXPECT_EQ(typed(""), QString());
}

TEST(AskPath, EscGivesNone) {
    const merix::test::Answers answers({});
    EXPECT_EQ(askPath(QStringLiteral("File: ")), QString());
}
