// SPDX-License-Identifier: MIT
// Several windows: where drawings are shown, which is active, what is told in which order, and how they end.
#include "merix/ap/autosave.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/editor.h"
#include "merix/ui/main_window.h"
#include "tests/merix/ui/window_test.h"

#include "host/ui/dialog.h"
#include "host/ui/windows.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTabBar>
#include <QTemporaryDir>

using namespace merix;
using ui::MainWindow;

namespace {

/// Writes down what the manager tells, each with the number of the drawing.
class Log : public MxApDocManagerReactor {
public:
    Log() { ap::DocManager::instance().addReactor(this); }
    ~Log() override { ap::DocManager::instance().removeReactor(this); }
    std::vector<std::string> told;
    std::vector<const MxApDocument*> numbered;

private:
    void note(const char* what, const MxApDocument* document) {
        const auto place = std::find(numbered.begin(), numbered.end(), document);
        told.push_back(what + (" " + std::to_string(place - numbered.begin())));
    }
    void documentCreated(MxApDocument* document) override { note("created", document); }
    void documentToBeActivated(MxApDocument* document) override { note("to be activated", document); }
    void documentActivated(MxApDocument* document) override { note("activated", document); }
    void documentToBeDeactivated(MxApDocument* document) override { note("to be deactivated", document); }
    void documentToBeDestroyed(MxApDocument* document) override { note("to be destroyed", document); }
};

class SeveralWindowsTest : public WindowTest {
protected:
    SeveralWindowsTest() {
        other = manager.create();
        settle();
        log.numbered = {document, other};
        log.told.clear();
    }
    ~SeveralWindowsTest() override {
        for (MainWindow* each : MainWindow::all())
            each->setUnattended(true);
        while (manager.current())
            manager.close(*manager.current());
        settle();
        while (MainWindow::all().size() > 1)
            delete MainWindow::all().back();
    }
    MainWindow& takeOut(ap::Document& which) {
        MainWindow* own = MainWindow::takeOut(which);
        EXPECT_NE(own, nullptr);
        settle();
        return own ? *own : window;
    }
    static QAction* action(MainWindow& of, const QString& text) {
        QStringList texts;
        for (QAction* each : of.findChildren<QAction*>()) {
            if (each->text() == text)
                return each;
            texts << each->text();
        }
        ADD_FAILURE() << "no action " << qPrintable(text) << " among " << qPrintable(texts.join(QLatin1String(", ")));
        static QAction none(nullptr);
        return &none;
    }
    /// The hand goes to the window.
    static void activate(MainWindow& which) {
        which.activateWindow();
        settle();
    }
    void addLineIn(ap::Document& which) {
        ap::Document* before = std::exchange(document, &which);
        addLine({0, 0, 0}, {9, 9, 0});
        document = before;
        settle();
    }
    static void answer(QMessageBox::StandardButton which) {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->button(which)->click();
    }
    ap::DocManager& manager = ap::DocManager::instance();
    ap::Document* other = nullptr;
    Log log;
};

TEST_F(SeveralWindowsTest, ADrawingTakenOutIsShownInAWindowOfItsOwnBesideTheOthers) {
    MainWindow& own = takeOut(*other);
    EXPECT_NE(&own, &window);
    EXPECT_TRUE(own.isVisible());
    EXPECT_EQ(MainWindow::of(*other), &own);
    EXPECT_EQ(own.view()->document(), other);
    EXPECT_EQ(window.view()->document(), document);
    EXPECT_EQ(own.tabs()->documents(), std::vector<ap::Document*>{other});
    EXPECT_EQ(window.tabs()->documents(), std::vector<ap::Document*>{document});
    EXPECT_TRUE(own.windowTitle().startsWith(other->title()));
    EXPECT_TRUE(window.windowTitle().startsWith(document->title()));
    EXPECT_EQ(manager.current(), other);
    EXPECT_TRUE(log.told.empty()) << "it was active before: nothing is told";
}

TEST_F(SeveralWindowsTest, TakingOutADrawingThatIsNotActiveActivatesIt) {
    takeOut(*document);
    EXPECT_EQ(log.told, (std::vector<std::string>{"to be deactivated 1", "to be activated 0", "activated 0"}));
}

TEST_F(SeveralWindowsTest, TheOnlyDrawingOfAWindowIsNotTakenOut) {
    MainWindow& own = takeOut(*other);
    EXPECT_EQ(MainWindow::takeOut(*other), nullptr);
    EXPECT_EQ(MainWindow::of(*other), &own);
    EXPECT_EQ(MainWindow::all().size(), 2u);
}

TEST_F(SeveralWindowsTest, AWindowThatBecomesActiveActivatesItsDrawing) {
    MainWindow& own = takeOut(*other);
    activate(window);
    EXPECT_EQ(manager.current(), document);
    EXPECT_EQ(MainWindow::instance(), &window);
    EXPECT_EQ(ed::activeView(), window.view());
    EXPECT_EQ(log.told, (std::vector<std::string>{"to be deactivated 1", "to be activated 0", "activated 0"}));
    log.told.clear();
    activate(own);
    EXPECT_EQ(log.told, (std::vector<std::string>{"to be deactivated 0", "to be activated 1", "activated 1"}));
    EXPECT_EQ(ed::activeView(), own.view());
}

TEST_F(SeveralWindowsTest, ADrawingActivatedBringsItsWindowToTheFront) {
    MainWindow& own = takeOut(*other);
    manager.activate(document);
    settle();
    EXPECT_EQ(QApplication::activeWindow(), &window);
    manager.activate(other);
    settle();
    EXPECT_EQ(QApplication::activeWindow(), &own);
    EXPECT_EQ(window.view()->document(), document) << "the other window goes on showing its own";
}

TEST_F(SeveralWindowsTest, ACommandUnderWayIsCancelledBeforeAnotherWindowsDrawingIsActivated) {
    takeOut(*other);
    ap::Document* inCommand = other;
    QTimer::singleShot(0, &window, [&] {
        window.activateWindow();
        settle();
        inCommand = manager.current();
    });
    ed::CommandStack::instance().runLine(QStringLiteral("LINE 0,0"));
    EXPECT_EQ(inCommand, other);
    settle();
    EXPECT_EQ(manager.current(), document);
}

TEST_F(SeveralWindowsTest, APressInAViewThatIsNotActiveActivatesItAndSelectsNothing) {
    addLine({-1000, 0, 0}, {1000, 0, 0});
    window.view()->zoomExtents();
    MainWindow& own = takeOut(*other);
    ASSERT_EQ(ed::activeView(), own.view());
    // The desktop has not made its window the active one.
    click(window.view()->toWidget({0, 0, 0}));
    settle();
    EXPECT_EQ(manager.current(), document);
    EXPECT_TRUE(ed::Selection::instance().ids().empty());
    click(window.view()->toWidget({0, 0, 0}));
    EXPECT_EQ(ed::Selection::instance().ids().size(), 1u);
}

TEST_F(SeveralWindowsTest, WhatADrawingShowsGoesWithItToTheOtherWindow) {
    addLineIn(*other);
    ge::ViewTransform zoomed = window.view()->transform();
    zoomed.unitsPerPixel = 0.125;
    zoomed.center = {3, 4};
    window.view()->setTransform(zoomed);
    const QString sheet = other->layouts().at(1);
    ASSERT_TRUE(other->setCurrentLayout(sheet));
    MainWindow& own = takeOut(*other);
    ASSERT_TRUE(other->setCurrentLayout(QStringLiteral("Model")));
    EXPECT_EQ(own.view()->transform().unitsPerPixel, 0.125);
    EXPECT_EQ(own.view()->transform().center.x, 3.0);
    window.takeIn(*other);
    EXPECT_EQ(window.view()->document(), other);
    EXPECT_EQ(window.view()->transform().unitsPerPixel, 0.125);
    EXPECT_EQ(window.view()->transform().width, window.view()->width());
}

TEST_F(SeveralWindowsTest, PutBackTheEmptyWindowGoes) {
    const QPointer<MainWindow> own = &takeOut(*other);
    window.takeIn(*other);
    settle();
    EXPECT_TRUE(own.isNull());
    EXPECT_EQ(MainWindow::all().size(), 1u);
    EXPECT_EQ(window.tabs()->documents(), (std::vector<ap::Document*>{document, other}));
    EXPECT_EQ(window.view()->document(), other);
    EXPECT_EQ(ed::activeView(), window.view());
}

TEST_F(SeveralWindowsTest, TypingAndUndoAreForTheDrawingOfTheWindow) {
    for (ap::Document* each : {document, other}) {
        each->database()->imp().undo.clear();
        each->database()->imp().undo.begin(L"LINE");
        addLineIn(*each);
        each->database()->imp().undo.end();
    }
    MainWindow& own = takeOut(*other);
    EXPECT_TRUE(action(own, QStringLiteral("&Undo Line"))->isEnabled());
    type(own.view(), QStringLiteral("u\n"));
    settle();
    EXPECT_TRUE(action(own, QStringLiteral("&Redo Line"))->isEnabled());
    EXPECT_TRUE(action(window, QStringLiteral("&Undo Line"))->isEnabled());
    EXPECT_FALSE(action(window, QStringLiteral("&Redo"))->isEnabled());
    action(own, QStringLiteral("&Redo Line"))->trigger();
    settle();
    EXPECT_FALSE(action(own, QStringLiteral("&Redo"))->isEnabled());
}

TEST_F(SeveralWindowsTest, AnActionOfAWindowLeftBehindIsForTheDrawingThatItShows) {
    addLine({0, 0, 0}, {1, 1, 0});
    document->database()->imp().undo.begin(L"MOVE");
    addLine({0, 0, 0}, {1, 1, 0});
    document->database()->imp().undo.end();
    settle();
    takeOut(*other);
    ASSERT_EQ(manager.current(), other);
    const auto steps = document->database()->imp().undo.undoUnits().size();
    action(window, QStringLiteral("&Undo Move"))->trigger();
    settle();
    EXPECT_EQ(document->database()->imp().undo.undoUnits().size(), steps - 1);
    EXPECT_EQ(manager.current(), document);
}

TEST_F(SeveralWindowsTest, AidsAreTheSameInAllWindows) {
    action(window, QStringLiteral("&Ortho"))->setChecked(true);
    MainWindow& own = takeOut(*other);
    EXPECT_TRUE(action(own, QStringLiteral("&Ortho"))->isChecked());
    action(own, QStringLiteral("Object &Snap"))->setChecked(false);
    action(own, QStringLiteral("&Ortho"))->setChecked(false);
    EXPECT_FALSE(action(window, QStringLiteral("Object &Snap"))->isChecked());
    EXPECT_FALSE(action(window, QStringLiteral("&Ortho"))->isChecked());
}

TEST_F(SeveralWindowsTest, ModulesSeeTheWindowOfTheActiveDrawing) {
    MainWindow& own = takeOut(*other);
    own.move(300, 200);
    settle();
    EXPECT_EQ(mxuiMainWindow(), &own);
    EXPECT_EQ(mxuiMainWindowRect().topLeft(), own.mapToGlobal(QPoint(0, 0)));
    EXPECT_EQ(mxuiViewToScreen({7, 8}), own.view()->mapToGlobal(QPoint(7, 8)));
    activate(window);
    EXPECT_EQ(mxuiMainWindow(), &window);
    EXPECT_EQ(mxuiViewToScreen({7, 8}), window.view()->mapToGlobal(QPoint(7, 8)));
}

TEST_F(SeveralWindowsTest, AModulesWindowGoesWithTheActiveDrawing) {
    const QPointer<CWnd> tag = new CWnd(mxuiMainWindow());
    tag->setWindowFlags(Qt::FramelessWindowHint);
    tag->ShowWindow(1);
    const QPointer<MainWindow> own = &takeOut(*other);
    ASSERT_TRUE(tag);
    EXPECT_EQ(tag->parentWidget(), own);
    EXPECT_TRUE(tag->isVisible());
    tag->ShowWindow(0);
    window.takeIn(*other);
    settle();
    ASSERT_TRUE(own.isNull());
    ASSERT_TRUE(tag) << "deleted with the window";
    EXPECT_EQ(tag->parentWidget(), &window);
    EXPECT_FALSE(tag->isVisible());
}

/// Looks at what lies under the cursor.
class Monitor : public MxEdInputPointMonitor {
public:
    explicit Monitor(ap::Document& document)
        : m_document(document) {
        m_document.inputPointManager()->addPointMonitor(this);
    }
    ~Monitor() override { m_document.inputPointManager()->removePointMonitor(this); }
    Mx::ErrorStatus monitorInputPoint(const MxEdInputPoint&) override {
        ++looks;
        return Mx::eOk;
    }
    int looks = 0;

private:
    ap::Document& m_document;
};

TEST_F(SeveralWindowsTest, NothingIsToldOfACursorOverADrawingThatIsNotActive) {
    Monitor monitor(*document);
    takeOut(*other);
    mouse(QEvent::MouseMove, {100, 100});
    settle();
    EXPECT_EQ(monitor.looks, 0);
    activate(window);
    mouse(QEvent::MouseMove, {101, 100});
    settle();
    EXPECT_GT(monitor.looks, 0);
}

class ViewReactor : public MxEditorReactor {
public:
    ViewReactor() { ed::Editor::instance().addReactor(this); }
    ~ViewReactor() override { ed::Editor::instance().removeReactor(this); }
    void viewChanged() override { ++changes; }
    int changes = 0;
};

TEST_F(SeveralWindowsTest, TheWheelZoomsAViewThatIsNotActiveAndTheEditorHearsOfItWithTheActivation) {
    takeOut(*other);
    ViewReactor reactor;
    const double before = document->view().unitsPerPixel;
    wheel({100, 100}, 120);
    EXPECT_LT(document->view().unitsPerPixel, before);
    EXPECT_EQ(reactor.changes, 0);
    EXPECT_EQ(manager.current(), other);
    activate(window);
    EXPECT_GT(reactor.changes, 0);
}

TEST_F(SeveralWindowsTest, ClosingAWindowClosesItsDrawingsOnly) {
    const QPointer<MainWindow> own = &takeOut(*other);
    const QPointer<ap::Document> closed = other;
    EXPECT_TRUE(own->close());
    settle();
    EXPECT_TRUE(closed.isNull());
    EXPECT_TRUE(own.isNull());
    EXPECT_EQ(manager.all(), std::vector<ap::Document*>{document});
    EXPECT_EQ(manager.current(), document);
    ASSERT_GE(log.told.size(), 2U);
    EXPECT_EQ(log.told[0], "to be deactivated 1");
    EXPECT_EQ(log.told[1], "to be destroyed 1");
}

TEST_F(SeveralWindowsTest, TheFirstWindowMayCloseBeforeTheOthers) {
    MainWindow& own = takeOut(*other);
    EXPECT_TRUE(window.close());
    settle();
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(own.isVisible());
    EXPECT_EQ(manager.current(), other);
    ap::Document* fresh = manager.create();
    EXPECT_EQ(MainWindow::of(*fresh), &own);
    manager.close(*fresh);
    manager.close(*other);
    settle();
    EXPECT_TRUE(own.isVisible()) << "the last window stays although it is empty";
    own.close();
    settle();
}

TEST_F(SeveralWindowsTest, AfterAClosedDrawingTheNextOfTheSameWindowIsShown) {
    ap::Document* third = manager.create();
    MainWindow& own = takeOut(*document);
    own.takeIn(*third);
    manager.activate(document);
    settle();
    manager.close(*document); // the next of all is in the other window
    settle();
    EXPECT_EQ(manager.current(), third);
    EXPECT_EQ(own.view()->document(), third);
    EXPECT_EQ(window.view()->document(), other);
}

TEST_F(SeveralWindowsTest, AWindowIsClosedOnlyAfterItsQuestion) {
    addLineIn(*other);
    MainWindow& own = takeOut(*other);
    own.setUnattended(false);
    QTimer::singleShot(0, &window, [] { answer(QMessageBox::Cancel); });
    EXPECT_FALSE(own.close());
    settle();
    EXPECT_TRUE(own.isVisible());
    EXPECT_EQ(MainWindow::of(*other), &own);
    QTimer::singleShot(0, &window, [] { answer(QMessageBox::Discard); });
    EXPECT_TRUE(own.close());
    settle();
    EXPECT_EQ(MainWindow::all().size(), 1u);
}

TEST_F(SeveralWindowsTest, QuittingAsksInEveryWindowAndStopsAtACancel) {
    addLine({0, 0, 0}, {1, 1, 0});
    addLineIn(*other);
    MainWindow& own = takeOut(*other);
    window.setUnattended(false);
    own.setUnattended(false);
    QStringList asked;
    const auto hear = [&asked](QMessageBox::StandardButton reply) {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            asked << box->text();
        answer(reply);
    };
    QTimer::singleShot(0, &window, [&] {
        hear(QMessageBox::Discard);
        QTimer::singleShot(0, &window, [&] { hear(QMessageBox::Cancel); });
    });
    const QString first = document->title(), second = other->title();
    action(own, QStringLiteral("&Quit"))->trigger();
    settle();
    ASSERT_EQ(asked.size(), 2);
    EXPECT_TRUE(asked[0].contains(first));
    EXPECT_TRUE(asked[1].contains(second));
    EXPECT_TRUE(own.isVisible());
    EXPECT_EQ(manager.all(), std::vector<ap::Document*>{other});
}

TEST_F(SeveralWindowsTest, TheMenusMovesAreAllowedWhenThereIsSomewhereToGo) {
    QAction* out = action(window, QStringLiteral("Move to &New Window"));
    QAction* back = action(window, QStringLiteral("Move to &Other Window"));
    QMenu* view = nullptr;
    for (QMenu* menu : window.findChildren<QMenu*>())
        if (menu->actions().contains(out))
            view = menu;
    ASSERT_TRUE(view);
    Q_EMIT view->aboutToShow();
    EXPECT_TRUE(out->isEnabled());
    EXPECT_FALSE(back->isEnabled());
    out->trigger();
    settle();
    ASSERT_EQ(MainWindow::all().size(), 2u);
    Q_EMIT view->aboutToShow();
    EXPECT_FALSE(out->isEnabled());
    EXPECT_TRUE(back->isEnabled());
    action(*MainWindow::all().back(), QStringLiteral("Move to &Other Window"))->trigger();
    settle();
    EXPECT_EQ(MainWindow::all().size(), 1u);
}

TEST_F(SeveralWindowsTest, ATabDraggedOffGetsAWindowAndOneDroppedOnAnotherWindowGoesThere) {
    Q_EMIT window.tabs()->draggedOff(other, QPoint(2000, 300)); // nothing lies there
    settle();
    MainWindow* own = MainWindow::of(*other);
    ASSERT_NE(own, &window);
    Q_EMIT own->tabs()->draggedOff(other, QPoint(2000, 400));
    settle();
    EXPECT_EQ(MainWindow::of(*other), own) << "the only tab of its window";
    own->move(1500, 0);
    settle();
    Q_EMIT own->tabs()->draggedOff(other, window.mapToGlobal(QPoint(50, 300)));
    settle();
    EXPECT_EQ(MainWindow::of(*other), &window);
}

TEST_F(SeveralWindowsTest, TheMenuOfATabIsForItsDrawing) {
    Q_EMIT window.tabs()->menuWanted(document, window.mapToGlobal(QPoint(20, 60)));
    settle();
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    EXPECT_EQ(manager.current(), document);
    ASSERT_EQ(menu->actions().size(), 4);
    EXPECT_TRUE(menu->actions()[0]->isEnabled());
    EXPECT_FALSE(menu->actions()[1]->isEnabled());
    menu->actions()[0]->trigger();
    menu->close();
    settle();
    EXPECT_NE(MainWindow::of(*document), &window);
    EXPECT_EQ(MainWindow::of(*other), &window);
}

TEST_F(SeveralWindowsTest, AnAutomaticSaveThatFailsIsShownUntilTheDrawingIsSaved) {
    QTemporaryDir folder;
    auto* notice = window.findChild<QLabel*>(QStringLiteral("notice"));
    ASSERT_TRUE(notice);
    Q_EMIT ap::Autosave::instance().failed(QStringLiteral("Automatic save: no room"));
    EXPECT_EQ(notice->text(), QStringLiteral("Automatic save: no room"));
    EXPECT_EQ(notice->toolTip(), notice->text());
    ASSERT_TRUE(manager.saveAs(*other, folder.filePath(QStringLiteral("a.dxf"))).ok);
    EXPECT_TRUE(notice->text().isEmpty());
}

} // namespace
