// SPDX-License-Identifier: MIT
#include "merix/ui/main_window.h"

#include "tests/merix/ui/window_test.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>
#include <QTabBar>

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

} // namespace
