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
