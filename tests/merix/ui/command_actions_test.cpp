// SPDX-License-Identifier: MIT
#include "merix/ui/command_actions.h"

#include "merix/ed/command_stack.h"
#include "tests/merix/ui/window_test.h"

#include <QMenuBar>
#include <QToolBar>

using namespace merix;

namespace {

int g_runs = 0;

class CommandActionsTest : public WindowTest {
protected:
    QAction* entry(const QString& text) {
        for (QAction* menu : window.menuBar()->actions())
            for (QAction* action : menu->menu()->actions())
                if (action->text().remove(QLatin1Char('&')) == text)
                    return action;
        return nullptr;
    }
};

TEST_F(CommandActionsTest, AnEntryRunsItsCommandOnceThatIsThere) {
    QAction* action = entry(QStringLiteral("Voice Note"));
    ASSERT_NE(action, nullptr);
    EXPECT_FALSE(action->isEnabled());
    g_runs = 0;
    ed::CommandStack::instance().addCommand(L"TEST", L"PHONOMARK", L"PHONOMARK", 0, [] { ++g_runs; });
    ap::DocManager::instance().create();
    EXPECT_TRUE(action->isEnabled());
    action->trigger();
    settle();
    EXPECT_EQ(g_runs, 1);
}

TEST_F(CommandActionsTest, VoiceNotesHaveAMenuOfTheirOwn) {
    QStringList titles;
    for (const QAction* menu : window.menuBar()->actions())
        titles << menu->text();
    EXPECT_TRUE(titles.contains(QStringLiteral("&Notes"))) << titles.join(QLatin1Char(' ')).toStdString();
    static QStringList run;
    auto& stack = ed::CommandStack::instance();
    stack.addCommand(L"TEST", L"VOICEMAN", L"VOICEMAN", 0, [] { run << QStringLiteral("VOICEMAN"); });
    stack.addCommand(L"TEST", L"VOICESHOW", L"VOICESHOW", 0, [] { run << QStringLiteral("VOICESHOW"); });
    ap::DocManager::instance().create();
    run.clear();
    for (const auto& text : {QStringLiteral("All Voice Notes…"), QStringLiteral("Show or Hide Voice Notes")}) {
        QAction* action = entry(text);
        ASSERT_NE(action, nullptr) << qPrintable(text);
        action->trigger();
        settle();
    }
    EXPECT_EQ(run, QStringList({QStringLiteral("VOICEMAN"), QStringLiteral("VOICESHOW")}));
}

TEST_F(CommandActionsTest, WithoutADrawingNothingCanBeChosen) {
    QAction* action = entry(QStringLiteral("Regenerate"));
    ASSERT_NE(action, nullptr);
    EXPECT_TRUE(action->isEnabled());
    ap::DocManager::instance().close(*document);
    EXPECT_FALSE(action->isEnabled());
}

TEST_F(CommandActionsTest, EveryButtonHasAnIconAndSaysWhatItDoes) {
    const auto actions = window.findChild<QToolBar*>()->actions();
    int buttons = 0;
    for (const QAction* action : actions) {
        if (action->isSeparator() || action->text().isEmpty())
            continue;
        ++buttons;
        EXPECT_FALSE(action->icon().isNull()) << qPrintable(action->text());
        EXPECT_FALSE(action->toolTip().isEmpty()) << qPrintable(action->text());
    }
    EXPECT_GE(buttons, 20);
}

} // namespace
