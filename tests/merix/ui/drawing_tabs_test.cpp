// SPDX-License-Identifier: MIT
#include "merix/ui/drawing_tabs.h"

#include "tests/merix/ui/window_test.h"

#include <QContextMenuEvent>

using namespace merix;

namespace {

class DrawingTabsTest : public WindowTest {
protected:
    DrawingTabsTest() {
        other = ap::DocManager::instance().create();
        tabs.add(*document);
        tabs.add(*other);
        tabs.resize(400, 30);
        tabs.show();
        QObject::connect(&tabs, &ui::DrawingTabs::chosen, [this](ap::Document* chosen) { heard << chosen; });
        QObject::connect(&tabs, &ui::DrawingTabs::draggedOff, [this](ap::Document* dragged, const QPoint& where) {
            off << dragged;
            letGoAt = where;
        });
    }
    void hand(QEvent::Type type, const QPoint& at, Qt::MouseButton button, Qt::MouseButtons held) {
        QMouseEvent event(type, at, tabs.mapToGlobal(at), button, held, Qt::NoModifier);
        QApplication::sendEvent(&tabs, &event);
    }
    void dragTab(int index, const QPoint& to) {
        hand(QEvent::MouseButtonPress, tabs.tabRect(index).center(), Qt::LeftButton, Qt::LeftButton);
        hand(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
        cursor = tabs.cursor().shape();
        hand(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    }
    ui::DrawingTabs tabs;
    ap::Document* other = nullptr;
    QList<ap::Document*> heard, off;
    QPoint letGoAt;
    Qt::CursorShape cursor = Qt::ArrowCursor;
};

TEST_F(DrawingTabsTest, ATabKnowsItsDrawing) {
    EXPECT_EQ(tabs.indexOf(document), 0);
    EXPECT_EQ(tabs.indexOf(other), 1);
    EXPECT_EQ(tabs.documentAt(1), other);
    EXPECT_EQ(tabs.documentAt(2), nullptr);
    tabs.remove(*document);
    EXPECT_EQ(tabs.indexOf(document), -1);
    EXPECT_EQ(tabs.documents(), std::vector<ap::Document*>{other});
}

TEST_F(DrawingTabsTest, OnlyTheHandMakesSignals) {
    tabs.choose(other);
    EXPECT_EQ(tabs.currentIndex(), 1);
    EXPECT_TRUE(heard.isEmpty());
    dragTab(0, tabs.tabRect(0).center());
    EXPECT_EQ(heard, QList<ap::Document*>{document});
}

TEST_F(DrawingTabsTest, TheLastTabTakesTheBarAlong) {
    tabs.remove(*document);
    EXPECT_FALSE(tabs.isHidden());
    tabs.remove(*other);
    EXPECT_TRUE(tabs.isHidden());
}

TEST_F(DrawingTabsTest, ATabLetGoAwayFromTheBarIsDraggedOff) {
    dragTab(1, {120, 200});
    EXPECT_EQ(off, QList<ap::Document*>{other});
    EXPECT_EQ(letGoAt, tabs.mapToGlobal(QPoint(120, 200)));
    EXPECT_EQ(cursor, Qt::DragMoveCursor);
    EXPECT_EQ(tabs.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(DrawingTabsTest, AHandThatStraysALittleDragsNothing) {
    dragTab(1, {120, tabs.height() + 20});
    dragTab(1, tabs.tabRect(0).center());
    EXPECT_TRUE(off.isEmpty());
    EXPECT_EQ(cursor, Qt::ArrowCursor);
}

TEST_F(DrawingTabsTest, ADrawingClosedInTheHandIsNotDraggedOff) {
    hand(QEvent::MouseButtonPress, tabs.tabRect(1).center(), Qt::LeftButton, Qt::LeftButton);
    tabs.remove(*other);
    ap::DocManager::instance().close(*other);
    hand(QEvent::MouseButtonRelease, {120, 200}, Qt::LeftButton, Qt::NoButton);
    EXPECT_TRUE(off.isEmpty());
}

TEST_F(DrawingTabsTest, ARightClickOnATabAsksForItsMenu) {
    QList<ap::Document*> asked;
    QObject::connect(&tabs, &ui::DrawingTabs::menuWanted, [&](ap::Document* which, const QPoint&) { asked << which; });
    for (const QPoint& at : {tabs.tabRect(1).center(), QPoint(390, 10)}) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, at, tabs.mapToGlobal(at));
        QApplication::sendEvent(&tabs, &event);
    }
    EXPECT_EQ(asked, QList<ap::Document*>{other});
}

} // namespace
