// SPDX-License-Identifier: MIT
#include "merix/ui/command_line.h"

#include "tests/merix/ui/window_test.h"

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

using namespace merix;

namespace {

class CommandLineTest : public WindowTest {
protected:
    QLineEdit* entry() { return window.commandLine()->entry(); }
    QString prompt() { return window.commandLine()->findChild<QLabel*>()->text(); }
    QString history() { return window.commandLine()->findChild<QPlainTextEdit*>()->toPlainText(); }
};

TEST_F(CommandLineTest, WithNothingAskedItWaitsForACommand) {
    EXPECT_EQ(prompt(), QStringLiteral("Command:"));
}

TEST_F(CommandLineTest, WhatIsPrintedIsInTheHistory) {
    ed::Console::instance().print(QStringLiteral("\nfirst"));
    ed::Console::instance().print(QStringLiteral(" and more\nsecond"));
    EXPECT_TRUE(history().endsWith(QStringLiteral("first and more\nsecond")));
}

TEST_F(CommandLineTest, KeywordsOfThePromptAreLinksThatAnswerIt) {
    auto& prompter = ed::Prompter::instance();
    prompter.init(0, QStringLiteral("Point Region _ Point Region"));
    QString shown, keyword;
    QTimer::singleShot(0, &window, [&] {
        shown = prompt();
        Q_EMIT window.commandLine()->findChild<QLabel*>()->linkActivated(QStringLiteral("Region"));
    });
    EXPECT_EQ(prompter.getKeyword(QStringLiteral("Type [Point/Region] <Point>: "), keyword), kInputNormal);
    EXPECT_EQ(keyword, QStringLiteral("Region"));
    EXPECT_EQ(shown.toStdString(),
              QStringLiteral("Type [<a href=\"Point\">Point</a>/<a href=\"Region\">Region</a>] &lt;Point&gt;:")
                  .toStdString());
}

TEST_F(CommandLineTest, TypedKeysAndEnterAnswerThePrompt) {
    QString text;
    QTimer::singleShot(0, &window, [&] { type(entry(), QStringLiteral("hello\n")); });
    EXPECT_EQ(ed::Prompter::instance().getString(true, QStringLiteral("Text: "), text), kInputNormal);
    EXPECT_EQ(text, QStringLiteral("hello"));
    EXPECT_TRUE(history().endsWith(QStringLiteral("Text: hello")));
}

TEST_F(CommandLineTest, ABlankEndsAnAnswerButNotAText) {
    MxGePoint3d point;
    QTimer::singleShot(0, &window, [&] { type(entry(), QStringLiteral("3,4 ")); });
    EXPECT_EQ(ed::Prompter::instance().getPoint(nullptr, QStringLiteral("Point: "), point), kInputNormal);
    EXPECT_EQ(point, MxGePoint3d(3, 4, 0));
    QString text;
    QTimer::singleShot(0, &window, [&] { type(entry(), QStringLiteral("two words\n")); });
    EXPECT_EQ(ed::Prompter::instance().getString(true, QStringLiteral("Text: "), text), kInputNormal);
    EXPECT_EQ(text, QStringLiteral("two words"));
}

TEST_F(CommandLineTest, EscapeCancelsThePrompt) {
    MxGePoint3d point;
    QTimer::singleShot(0, &window, [&] { key(&view(), Qt::Key_Escape); });
    EXPECT_EQ(ed::Prompter::instance().getPoint(nullptr, QStringLiteral("Point: "), point), kInputCancel);
}

TEST_F(CommandLineTest, UndoDoesNotTypeWhatWasEnteredBefore) {
    for (const Qt::Key end : {Qt::Key_Return, Qt::Key_Escape}) {
        type(entry(), QStringLiteral("nonesuch"));
        key(entry(), end);
        QCoreApplication::processEvents();
        QKeyEvent undo(QEvent::KeyPress, Qt::Key_Z, Qt::ControlModifier);
        QApplication::sendEvent(entry(), &undo);
        EXPECT_EQ(entry()->text().toStdString(), "") << end;
    }
}

TEST_F(CommandLineTest, UpAndDownRecallWhatWasTyped) {
    type(entry(), QStringLiteral("regen\n"));
    settle();
    type(entry(), QStringLiteral("zoom e\n")); // the blank submits ZOOM, its prompt takes the rest
    settle();
    key(entry(), Qt::Key_Up);
    EXPECT_EQ(entry()->text(), QStringLiteral("e"));
    key(entry(), Qt::Key_Up);
    key(entry(), Qt::Key_Up);
    EXPECT_EQ(entry()->text(), QStringLiteral("regen"));
    key(entry(), Qt::Key_Down);
    EXPECT_EQ(entry()->text(), QStringLiteral("zoom"));
    key(entry(), Qt::Key_Down);
    key(entry(), Qt::Key_Down);
    EXPECT_TRUE(entry()->text().isEmpty());
}

TEST_F(CommandLineTest, TheTabulatorCompletesACommandsName) {
    type(entry(), QStringLiteral("rege"));
    key(entry(), Qt::Key_Tab);
    EXPECT_EQ(entry()->text(), QStringLiteral("REGEN"));
}

TEST_F(CommandLineTest, KeywordsAreReachedByTheKeyboard) {
    auto& prompter = ed::Prompter::instance();
    prompter.init(0, QStringLiteral("Point Region _ Point Region"));
    QString keyword;
    QTimer::singleShot(0, &window, [&] {
        auto* label = window.commandLine()->findChild<QLabel*>();
        key(entry(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), label);
        key(label, Qt::Key_Tab);
        key(label, Qt::Key_Return, QStringLiteral("\r"));
        if (prompter.isWaiting())
            QTimer::singleShot(0, &window, [&] { prompter.cancel(); });
    });
    EXPECT_EQ(prompter.getKeyword(QStringLiteral("Type [Point/Region]: "), keyword), kInputNormal);
    EXPECT_EQ(keyword, QStringLiteral("Region")) << "the second of them";
}

TEST_F(CommandLineTest, EditingKeysAreTheDrawingsWhileNothingIsTyped) {
    const auto takenByEntry = [&](int code, Qt::KeyboardModifiers modifiers) {
        QKeyEvent event(QEvent::ShortcutOverride, code, modifiers);
        event.ignore();
        QApplication::sendEvent(entry(), &event);
        return event.isAccepted();
    };
    EXPECT_FALSE(takenByEntry(Qt::Key_A, Qt::ControlModifier));
    EXPECT_FALSE(takenByEntry(Qt::Key_C, Qt::ControlModifier));
    EXPECT_FALSE(takenByEntry(Qt::Key_V, Qt::ControlModifier));
    EXPECT_FALSE(takenByEntry(Qt::Key_Delete, Qt::NoModifier));
    entry()->setText(QStringLiteral("zoom"));
    EXPECT_TRUE(takenByEntry(Qt::Key_A, Qt::ControlModifier));
    EXPECT_TRUE(takenByEntry(Qt::Key_V, Qt::ControlModifier));
    EXPECT_TRUE(takenByEntry(Qt::Key_Delete, Qt::NoModifier));
}

TEST_F(CommandLineTest, ACommandTypedRuns) {
    addLine({-900, 0, 0}, {900, 0, 0});
    type(entry(), QStringLiteral("zoom\n"));
    QString asked;
    // The command waits for its answer inside settle().
    QTimer::singleShot(0, &window, [&] {
        asked = prompt();
        type(entry(), QStringLiteral("\n"));
    });
    settle();
    EXPECT_TRUE(asked.contains(QStringLiteral("Window"))) << asked.toStdString();
    EXPECT_EQ(prompt(), QStringLiteral("Command:"));
    EXPECT_NEAR(view().transform().center.x, 0.0, 1e-9);
    EXPECT_LT(view().toWidget({900, 0, 0}).x(), view().width());
}

} // namespace
