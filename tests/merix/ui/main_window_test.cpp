// SPDX-License-Identifier: MIT
#include "merix/ui/main_window.h"

#include "merix/ed/command_stack.h"
#include "tests/merix/ui/window_test.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTabBar>
#include <QTemporaryDir>

using namespace merix;

namespace {

class MainWindowTest : public WindowTest {
protected:
    QTabBar* drawingTabs() { return window.centralWidget()->findChildren<QTabBar*>().first(); }
    QTabBar* layoutTabs() { return window.centralWidget()->findChildren<QTabBar*>().last(); }
    bool statusShows(const QString& text) {
        const auto labels = window.statusBar()->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) { return label->text() == text; });
    }
};

TEST_F(MainWindowTest, EveryDrawingHasATab) {
    ASSERT_EQ(drawingTabs()->count(), 1);
    EXPECT_EQ(drawingTabs()->tabText(0), document->title());
    ap::Document* other = ap::DocManager::instance().create();
    EXPECT_EQ(drawingTabs()->count(), 2);
    EXPECT_EQ(drawingTabs()->currentIndex(), 1);
    ap::DocManager::instance().close(*other);
    EXPECT_EQ(drawingTabs()->count(), 1);
    EXPECT_EQ(window.view()->document(), document);
}

TEST_F(MainWindowTest, ATabActivatesItsDrawing) {
    ap::DocManager::instance().create();
    drawingTabs()->setCurrentIndex(0);
    settle();
    EXPECT_EQ(ap::DocManager::instance().current(), document);
    EXPECT_EQ(window.view()->document(), document);
}

TEST_F(MainWindowTest, AChangedDrawingIsMarked) {
    EXPECT_FALSE(window.isWindowModified());
    addLine({0, 0, 0}, {1, 1, 0});
    settle();
    EXPECT_TRUE(window.isWindowModified());
    EXPECT_EQ(drawingTabs()->tabText(0), document->title() + QLatin1Char('*'));
}

TEST_F(MainWindowTest, TheStatusBarShowsCoordinatesWithFourDecimals) {
    mouse(QEvent::MouseMove, {321, 123});
    const MxGePoint3d world = view().toWorld({321, 123});
    EXPECT_TRUE(statusShows(QStringLiteral("%1, %2").arg(world.x, 0, 'f', 4).arg(world.y, 0, 'f', 4)));
    EXPECT_TRUE(statusShows(document->title()));
}

TEST_F(MainWindowTest, LayoutTabsSwitchTheLayout) {
    ASSERT_GE(layoutTabs()->count(), 2);
    EXPECT_EQ(layoutTabs()->tabText(0), QStringLiteral("Model"));
    const QString name = layoutTabs()->tabText(1);
    layoutTabs()->setCurrentIndex(1);
    EXPECT_EQ(document->currentLayout(), name);
    EXPECT_TRUE(document->setCurrentLayout(QStringLiteral("Model")));
    EXPECT_EQ(layoutTabs()->currentIndex(), 0);
}

TEST_F(MainWindowTest, LayoutTabsFollowTheLayoutsOfTheDrawing) {
    const int before = layoutTabs()->count();
    ed::CommandStack::instance().runLine(QStringLiteral("LAYOUT New Roof"));
    ASSERT_EQ(layoutTabs()->count(), before + 1);
    EXPECT_EQ(layoutTabs()->tabText(before), QStringLiteral("Roof"));
    EXPECT_EQ(layoutTabs()->tabText(layoutTabs()->currentIndex()), document->currentLayout());
}

TEST_F(MainWindowTest, ANameIsShownAsItIsWhateverItHolds) {
    QTemporaryDir folder;
    const QString name = QStringLiteral("Nuts & bolts [*].dxf"), layout = QStringLiteral("A&B");
    ASSERT_TRUE(ap::DocManager::instance().saveAs(*document, folder.filePath(name)).ok);
    ed::CommandStack::instance().runLine(QStringLiteral("LAYOUT New A&B"));
    settle();
    EXPECT_EQ(drawingTabs()->tabText(0), QStringLiteral("Nuts && bolts [*].dxf*"));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Nuts & bolts [*][*].dxf[*] – Merix"));
    const int index = layoutTabs()->count() - 1;
    EXPECT_EQ(layoutTabs()->tabText(index), QStringLiteral("A&&B"));
    layoutTabs()->setCurrentIndex(0);
    EXPECT_EQ(document->currentLayout(), QStringLiteral("Model"));
    layoutTabs()->setCurrentIndex(index);
    EXPECT_EQ(document->currentLayout(), layout);
}

TEST_F(MainWindowTest, UnattendedAChangedDrawingClosesWithoutAQuestion) {
    addLine({0, 0, 0}, {1, 1, 0});
    EXPECT_TRUE(window.closeDocument(*document));
    EXPECT_EQ(ap::DocManager::instance().current(), nullptr);
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Merix"));
}

TEST_F(MainWindowTest, AFileThatCannotBeReadIsToldOfOnTheCommandLine) {
    ed::Console::instance().markRead();
    EXPECT_FALSE(window.openFile(QStringLiteral("/nowhere/plan.dxf")));
    EXPECT_TRUE(ed::Console::instance().unread().contains(QStringLiteral("/nowhere/plan.dxf")));
    EXPECT_EQ(drawingTabs()->count(), 1);
}

TEST_F(MainWindowTest, UndoAndRedoNameWhatTheyWouldDo) {
    const auto entry = [&](const QString& text) {
        const auto all = window.findChildren<QAction*>();
        return std::find_if(all.begin(), all.end(), [&](const QAction* action) {
                   return action->text() == text && action->isEnabled();
               }) != all.end();
    };
    document->database()->imp().undo.clear();
    document->database()->imp().undo.begin(L"GRIP_STRETCH");
    addLine({0, 0, 0}, {1, 1, 0});
    document->database()->imp().undo.end();
    settle();
    EXPECT_TRUE(entry(QStringLiteral("&Undo Grip stretch")));
    EXPECT_FALSE(entry(QStringLiteral("&Redo Grip stretch")));
    EXPECT_TRUE(ap::DocManager::instance().undo(*document));
    settle();
    EXPECT_FALSE(entry(QStringLiteral("&Undo Grip stretch")));
    EXPECT_TRUE(entry(QStringLiteral("&Redo Grip stretch")));
}

TEST_F(MainWindowTest, ClosingTheWindowClosesTheDrawings) {
    ap::DocManager::instance().create();
    EXPECT_TRUE(window.close());
    EXPECT_TRUE(ap::DocManager::instance().all().empty());
}

TEST_F(MainWindowTest, TypingOverTheDrawingGoesToTheCommandLine) {
    type(&view(), QStringLiteral("zoo"));
    EXPECT_EQ(window.commandLine()->entry()->text(), QStringLiteral("zoo"));
    key(&view(), Qt::Key_Escape);
    EXPECT_TRUE(window.commandLine()->entry()->text().isEmpty());
}

/// A window whose questions are answered by `answer` once they stand.
class QuestionTest : public MainWindowTest {
protected:
    QuestionTest() {
        addLine({0, 0, 0}, {1, 1, 0});
        settle();
        window.setUnattended(false);
    }
    ~QuestionTest() override { window.setUnattended(true); }
    QAction* action(const QString& text) {
        for (QAction* each : window.findChildren<QAction*>())
            if (each->text() == text)
                return each;
        return nullptr;
    }
    static void press(QMessageBox::StandardButton which) {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->button(which)->click();
    }
    static int questions() {
        int open = 0;
        for (const QWidget* widget : QApplication::topLevelWidgets())
            open += widget->isVisible() && qobject_cast<const QMessageBox*>(widget);
        return open;
    }
};

TEST_F(QuestionTest, AClosedDrawingIsAskedForOnlyOnce) {
    int asked = 0;
    QTimer::singleShot(0, &window, [&] {
        action(QStringLiteral("&Close"))->trigger();
        action(QStringLiteral("&Close"))->trigger();
        QTimer::singleShot(100, &window, [&] {
            asked = questions();
            press(QMessageBox::Discard);
            if (asked > 1)
                QTimer::singleShot(0, &window, [] { press(QMessageBox::Cancel); });
        });
    });
    ed::CommandStack::instance().runLine(QStringLiteral("LINE"));
    for (int i = 0; i < 100 && ap::DocManager::instance().current(); ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(ap::DocManager::instance().current(), nullptr);
}

TEST_F(QuestionTest, ADrawingThatAModuleClosesMeanwhileIsClosed) {
    QTimer::singleShot(0, &window, [&] {
        ap::DocManager::instance().close(*document);
        press(QMessageBox::Save);
    });
    EXPECT_TRUE(window.closeDocument(*document));
    EXPECT_TRUE(ap::DocManager::instance().all().empty());
}

TEST_F(QuestionTest, TheWindowStaysWhileAQuestionIsOpen) {
    bool closed = true;
    QTimer::singleShot(0, &window, [&] {
        closed = window.close();
        press(QMessageBox::Cancel);
    });
    EXPECT_FALSE(window.closeDocument(*document));
    EXPECT_FALSE(closed);
    EXPECT_EQ(ap::DocManager::instance().current(), document);
}

TEST_F(MainWindowTest, AnActionOnADrawingThatIsGoneDoesNothing) {
    QAction* save = nullptr;
    for (QAction* each : window.findChildren<QAction*>())
        if (each->text() == QStringLiteral("&Save"))
            save = each;
    ASSERT_TRUE(save);
    QTimer::singleShot(0, &window, [&] {
        save->trigger(); // its turn comes after the command's end
        ap::DocManager::instance().close(*document);
    });
    ed::CommandStack::instance().runLine(QStringLiteral("LINE"));
    settle();
    EXPECT_EQ(ap::DocManager::instance().current(), nullptr);
}

} // namespace
