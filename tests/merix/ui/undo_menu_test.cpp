// SPDX-License-Identifier: MIT
#include "merix/ui/undo_menu.h"

#include "tests/merix/ui/window_test.h"

#include <QToolButton>

using namespace merix;

namespace {

class UndoMenuTest : public WindowTest {
protected:
    UndoMenuTest() {
        document->database()->imp().undo.clear();
        for (const wchar_t* name : {L"LINE", L"GRIP_STRETCH", L"Knives & forks", L"MOVE"})
            step(name);
        settle();
    }
    void step(const wchar_t* name) {
        document->database()->imp().undo.begin(name);
        addLine({0, 0, 0}, {1, 1, 0});
        document->database()->imp().undo.end();
    }
    /// The menu at the button whose action's text begins so, filled as it opens.
    QMenu* menu(const QString& text) {
        for (QToolButton* button : window.findChildren<QToolButton*>())
            if (button->menu() && button->defaultAction() && button->defaultAction()->text().startsWith(text)) {
                Q_EMIT button->menu()->aboutToShow();
                return button->menu();
            }
        ADD_FAILURE() << "no button " << qPrintable(text);
        return nullptr;
    }
    static QStringList texts(const QMenu* menu) {
        QStringList all;
        for (const QAction* action : menu->actions())
            all << action->text();
        return all;
    }
    std::size_t lines() { return document->database()->imp().undo.undoUnits().size(); }
};

TEST_F(UndoMenuTest, StepsAreListedNewestFirstWithTheirNames) {
    EXPECT_EQ(texts(menu(QStringLiteral("&Undo"))),
              (QStringList{QStringLiteral("Move"), QStringLiteral("Knives && forks"), QStringLiteral("Grip stretch"),
                           QStringLiteral("Line")}));
    EXPECT_TRUE(texts(menu(QStringLiteral("&Redo"))).isEmpty());
    EXPECT_EQ(ui::stepNames(*document, ui::Steps::kUndo, 1), QStringList(QStringLiteral("Move")));
}

TEST_F(UndoMenuTest, ChoosingTheThirdUndoesThreeAndTheSecondRedoesTwo) {
    menu(QStringLiteral("&Undo"))->actions().at(2)->trigger();
    settle();
    ASSERT_EQ(lines(), 1u);
    EXPECT_EQ(texts(menu(QStringLiteral("&Redo"))),
              (QStringList{QStringLiteral("Grip stretch"), QStringLiteral("Knives && forks"), QStringLiteral("Move")}));
    menu(QStringLiteral("&Redo"))->actions().at(1)->trigger();
    settle();
    EXPECT_EQ(lines(), 3u);
    EXPECT_EQ(ui::stepNames(*document, ui::Steps::kUndo, 1), QStringList(QStringLiteral("Knives && forks")));
    QStringList texts;
    for (const QToolButton* button : window.findChildren<QToolButton*>())
        if (button->menu() && button->defaultAction())
            texts << button->defaultAction()->text();
    EXPECT_TRUE(texts.contains(QStringLiteral("&Undo Knives && forks"))) << texts.join(QLatin1Char('|')).toStdString();
}

TEST_F(UndoMenuTest, StepsAreTakenBackInTheDrawingThatTheyAreListedOf) {
    ui::UndoMenu list(
        ui::Steps::kUndo, [listed = document] { return listed; }, &window);
    Q_EMIT list.aboutToShow();
    ap::DocManager::instance().create();
    settle();
    list.actions().at(1)->trigger();
    settle();
    EXPECT_EQ(lines(), 2u);
}

TEST_F(UndoMenuTest, AStepWithoutANameAndMoreStepsThanAScreenHoldsAreListed) {
    for (int i = 0; i < 100; ++i)
        step(L"");
    const QStringList listed = texts(menu(QStringLiteral("&Undo")));
    EXPECT_EQ(listed.first(), QStringLiteral("A change"));
    EXPECT_EQ(listed.size(), 30);
}

TEST_F(UndoMenuTest, WithoutADrawingTheListIsEmpty) {
    ap::DocManager::instance().close(*document);
    EXPECT_TRUE(texts(menu(QStringLiteral("&Undo"))).isEmpty());
}

} // namespace
