// SPDX-License-Identifier: MIT
#include "merix/ed/console.h"

#include <gtest/gtest.h>

using merix::ed::Console;

TEST(Console, ALeadingNewlineBeginsALineAndOtherTextGoesOnTheLastOne) {
    Console& console = Console::instance();
    console.print(QStringLiteral("\nfirst"));
    console.print(QStringLiteral(" more"));
    console.print(QStringLiteral("\nsecond\nthird"));
    const QStringList tail = console.history().mid(console.history().size() - 3);
    EXPECT_EQ(tail, (QStringList{QStringLiteral("first more"), QStringLiteral("second"), QStringLiteral("third")}));
}

TEST(Console, EachLineIsToldOfOnceAndAdditionsByThemselves) {
    Console& console = Console::instance();
    console.print(QStringLiteral("\nx"));
    QStringList told;
    QObject context;
    QObject::connect(&console, &Console::printed, &context, [&](const QString& line) { told << line; });
    QObject::connect(&console, &Console::continued, &context,
                     [&](const QString& text) { told << QStringLiteral("+") + text; });
    console.print(QStringLiteral("y\nz"));
    EXPECT_EQ(told, (QStringList{QStringLiteral("+y"), QStringLiteral("z")}));
}

TEST(Console, UnreadTextBeginsAtTheMarkEvenWithinALine) {
    Console& console = Console::instance();
    console.print(QStringLiteral("\nold"));
    console.markRead();
    EXPECT_EQ(console.unread(), QString());
    console.print(QStringLiteral("new\nnext"));
    EXPECT_EQ(console.unread(), QStringLiteral("new\nnext"));
    console.markRead();
    EXPECT_EQ(console.unread(), QString());
}

TEST(Console, TheMarkStaysRightWhenOldLinesGo) {
    Console& console = Console::instance();
    console.print(QStringLiteral("\nbefore"));
    console.markRead();
    for (int i = 0; i < 25000; ++i)
        console.print(QStringLiteral("\nline"));
    EXPECT_LE(console.history().size(), 20000);
    EXPECT_FALSE(console.unread().contains(QStringLiteral("before")));
    console.markRead();
    console.print(QStringLiteral("\nafter"));
    EXPECT_EQ(console.unread(), QStringLiteral("\nafter"));
}

TEST(Console, APromptLosesItsLeadingNewline) {
    Console& console = Console::instance();
    console.setPrompt(QStringLiteral("\nPoint: "), {});
    EXPECT_EQ(console.prompt(), QStringLiteral("Point: "));
    console.setPrompt(QString(), {});
}
