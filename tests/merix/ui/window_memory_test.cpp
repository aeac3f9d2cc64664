// SPDX-License-Identifier: MIT
#include "merix/ui/window_memory.h"

#include "merix/ed/user_settings.h"
#include "tests/merix/ui/window_test.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMainWindow>
#include <QMenu>
#include <QScreen>

using namespace merix;

namespace {

class WindowMemoryTest : public WindowTest {
protected:
    WindowMemoryTest() {
        ed::userSettings().clear();
        window.setUnattended(false);
    }
    ~WindowMemoryTest() override { window.setUnattended(true); }

    QString file(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    QMenu& menu() {
        for (auto* menu : window.findChildren<QMenu*>())
            if (menu->title() == QStringLiteral("Open &Recent")) {
                Q_EMIT menu->aboutToShow();
                return *menu;
            }
        throw std::runtime_error("no menu of recent drawings");
    }
    QStringList entries() {
        QStringList texts;
        for (const QAction* action : menu().actions())
            texts << action->text();
        return texts;
    }
    void saveAs(const char* name) { ASSERT_TRUE(ap::DocManager::instance().saveAs(*document, file(name)).ok); }

private:
    QTemporaryDir m_folder;
};

TEST_F(WindowMemoryTest, ADrawingUsedAgainComesFirstAndStandsOnce) {
    for (const char* path : {"/a/one.dxf", "/a/two.dxf", "/b/../a/one.dxf"})
        ui::keepRecent(QDir::cleanPath(QString::fromLatin1(path)));
    EXPECT_EQ(ui::recentDrawings(), QStringList({QStringLiteral("/a/one.dxf"), QStringLiteral("/a/two.dxf")}));
    EXPECT_EQ(ui::lastFolder(), QStringLiteral("/a"));
    ui::keepRecent({});
    EXPECT_EQ(ui::recentDrawings().size(), 2) << "a drawing that was never saved";
}

TEST_F(WindowMemoryTest, TheOldestOfTenIsForgotten) {
    for (int i = 0; i < 10; ++i)
        ui::keepRecent(QStringLiteral("/a/%1.dxf").arg(i));
    EXPECT_EQ(ui::recentDrawings().size(), ui::kRecentDrawings);
    EXPECT_EQ(ui::recentDrawings().first(), QStringLiteral("/a/9.dxf"));
    EXPECT_EQ(ui::recentDrawings().last(), QStringLiteral("/a/1.dxf"));
}

TEST_F(WindowMemoryTest, AListThatSomebodyElseMadeIsBounded) {
    QStringList many;
    for (int i = 0; i < 1000; ++i)
        many << QString() << QStringLiteral("/a/%1.dxf").arg(i);
    ed::userSettings().setValue(QStringLiteral("Recent/Drawings"), many);
    EXPECT_EQ(ui::recentDrawings().size(), ui::kRecentDrawings);
    EXPECT_EQ(ui::recentDrawings().first(), QStringLiteral("/a/0.dxf"));
}

TEST_F(WindowMemoryTest, WhatWasSavedOrOpenedIsInTheMenuAndOpensFromIt) {
    EXPECT_EQ(entries(), QStringList(QStringLiteral("No drawing was opened yet")));
    EXPECT_FALSE(menu().actions().first()->isEnabled());
    saveAs("plan & section.dxf");
    EXPECT_EQ(entries(), QStringList(QStringLiteral("&1 plan && section.dxf")));
    ap::DocManager::instance().close(*document);
    EXPECT_TRUE(ap::DocManager::instance().all().empty());
    menu().actions().first()->trigger();
    settle();
    ASSERT_EQ(ap::DocManager::instance().all().size(), 1U);
    EXPECT_EQ(ap::DocManager::instance().current()->path(), file("plan & section.dxf"));
    EXPECT_EQ(menu().actions().first()->toolTip(), file("plan & section.dxf"));
}

TEST_F(WindowMemoryTest, ADrawingThatHasGoneIsToldOfAndForgotten) {
    saveAs("gone.dxf");
    ap::DocManager::instance().close(*document);
    QFile::remove(file("gone.dxf"));
    QAction* open = menu().actions().first();
    window.setUnattended(true); // no box
    ed::Console::instance().markRead();
    open->trigger();
    settle();
    EXPECT_TRUE(ed::Console::instance().unread().contains(file("gone.dxf")));
    EXPECT_EQ(ui::recentDrawings(), QStringList());
}

TEST_F(WindowMemoryTest, AScriptLeavesTheUsersListAlone) {
    window.setUnattended(true);
    saveAs("plan.dxf");
    EXPECT_EQ(ui::recentDrawings(), QStringList());
}

TEST_F(WindowMemoryTest, TheLastWindowThatClosesLeavesItsPlaceToTheNext) {
    ap::DocManager::instance().close(*document);
    window.setGeometry(30, 40, 620, 480);
    settle();
    window.close();
    QMainWindow next;
    ui::placeAsBefore(next);
    EXPECT_EQ(next.geometry(), QRect(30, 40, 620, 480));
}

TEST_F(WindowMemoryTest, WithoutAPlaceAWindowIsNoLargerThanTheScreen) {
    const QSize screen = window.screen()->availableSize();
    QMainWindow first;
    first.resize(screen.width() + 500, 300);
    ui::placeAsBefore(first);
    EXPECT_EQ(first.size(), QSize(screen.width(), 300));
    ed::userSettings().setValue(QStringLiteral("Window/Place"), QByteArray("nonsense"));
    first.resize(300, screen.height() + 500);
    ui::placeAsBefore(first);
    EXPECT_EQ(first.size(), QSize(300, screen.height()));
}

} // namespace
