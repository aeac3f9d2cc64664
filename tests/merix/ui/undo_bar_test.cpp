// SPDX-License-Identifier: MIT
#include "merix/ui/undo_bar.h"

#include "host/ui/windows.h"
#include "merix/ed/command_stack.h"
#include "tests/merix/ui/window_test.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>

using namespace merix;

namespace {

class UndoBarTest : public WindowTest {
protected:
    UndoBarTest() {
        window.activateWindow();
        settle();
    }
    ui::UndoBar* bar() { return window.findChild<ui::UndoBar*>(QStringLiteral("undoBar")); }
    QPushButton* button() { return bar()->findChild<QPushButton*>(QStringLiteral("undoBarButton")); }
    QString text() { return bar()->findChild<QLabel*>()->text(); }
    bool isOffered() { return !bar()->isHidden(); }
    std::size_t steps() { return document->database()->imp().undo.undoUnits().size(); }
    /// A step with its offer, made before its unit is closed as a module does.
    void stepWithOffer(const wchar_t* said = L"Voice note deleted") {
        auto& manager = ap::DocManager::instance();
        ASSERT_EQ(manager.lockDocument(document, MxApLockMode::kWrite, L"Erase", L"Erase"), Mx::eOk);
        addLine({0, 0, 0}, {1, 1, 0});
        mxuiOfferUndo(said);
        addLine({0, 0, 0}, {2, 2, 0});
        manager.unlockDocument(document);
        settle();
    }
    void step() {
        addLine({0, 0, 0}, {3, 3, 0});
        settle();
    }
    void undoByKey() {
        for (QAction* action : window.findChildren<QAction*>())
            if (action->shortcut() == QKeySequence(QKeySequence::Undo))
                action->trigger();
        settle();
    }
};

TEST_F(UndoBarTest, TheButtonTakesBackTheStepThatWasOffered) {
    step();
    const std::size_t before = steps();
    stepWithOffer();
    ASSERT_TRUE(isOffered());
    EXPECT_TRUE(window.statusBar()->isAncestorOf(bar()));
    EXPECT_EQ(text(), QStringLiteral("Voice note deleted"));
    EXPECT_EQ(bar()->accessibleName(), QStringLiteral("Voice note deleted"));
    EXPECT_EQ(button()->accessibleName(), QStringLiteral("Undo: Voice note deleted"));
    ASSERT_EQ(steps(), before + 1);
    button()->click();
    settle();
    EXPECT_EQ(steps(), before);
    EXPECT_FALSE(isOffered());
}

TEST_F(UndoBarTest, TheOfferEndsWithTheNextChangeUndoOrRedo) {
    stepWithOffer();
    step();
    EXPECT_FALSE(isOffered());
    stepWithOffer();
    undoByKey();
    EXPECT_FALSE(isOffered());
    stepWithOffer();
    undoByKey();
    ap::DocManager::instance().redo(*document);
    settle();
    EXPECT_FALSE(isOffered());
}

TEST_F(UndoBarTest, TheOfferOutlastsWhatChangesNothing) {
    stepWithOffer();
    wheel({100, 100}, 120);
    click({50, 50});
    Q_EMIT document->graphicsChanged();
    ed::CommandStack::instance().runLine(QStringLiteral("ZOOM E"));
    settle();
    EXPECT_TRUE(isOffered());
}

TEST_F(UndoBarTest, AStepMadeInTheSameTurnIsNotTakenBackInItsPlace) {
    auto& manager = ap::DocManager::instance();
    ASSERT_EQ(manager.lockDocument(document, MxApLockMode::kWrite, L"Erase", L"Erase"), Mx::eOk);
    addLine({0, 0, 0}, {1, 1, 0});
    mxuiOfferUndo(L"Voice note deleted");
    manager.unlockDocument(document);
    addLine({0, 0, 0}, {2, 2, 0}); // a step of its own
    settle();
    EXPECT_FALSE(isOffered());
}

TEST_F(UndoBarTest, TheOfferEndsAfterItsTime) {
    stepWithOffer();
    auto* end = bar()->findChild<QTimer*>(QStringLiteral("undoBarEnd"));
    EXPECT_TRUE(end->isActive());
    EXPECT_TRUE(end->isSingleShot());
    EXPECT_EQ(end->interval(), 10'000);
    end->start(0);
    settle();
    EXPECT_FALSE(isOffered());
}

TEST_F(UndoBarTest, AnotherDrawingEndsTheOffer) {
    ap::Document* other = ap::DocManager::instance().create();
    ap::DocManager::instance().activate(document);
    stepWithOffer();
    ASSERT_TRUE(isOffered());
    ap::DocManager::instance().activate(other);
    settle();
    EXPECT_FALSE(isOffered());
    ap::DocManager::instance().activate(document);
    settle();
    stepWithOffer();
    ASSERT_TRUE(isOffered());
    ap::DocManager::instance().close(*document);
    settle();
    EXPECT_FALSE(isOffered());
}

TEST_F(UndoBarTest, ADrawingThatGoesToAnotherWindowLeavesNoOfferBehind) {
    ap::DocManager::instance().create();
    ap::DocManager::instance().activate(document);
    stepWithOffer();
    ASSERT_TRUE(isOffered());
    ui::MainWindow* const second = ui::MainWindow::takeOut(*document);
    ASSERT_NE(second, nullptr);
    settle();
    EXPECT_FALSE(isOffered());
    ap::DocManager::instance().close(*document);
    settle();
}

TEST_F(UndoBarTest, AnOfferTakesThePlaceOfTheOneBefore) {
    stepWithOffer(L"One");
    stepWithOffer(L"Two");
    EXPECT_TRUE(isOffered());
    EXPECT_EQ(text(), QStringLiteral("Two"));
    const std::size_t before = steps();
    button()->click();
    settle();
    EXPECT_EQ(steps(), before - 1);
    EXPECT_FALSE(isOffered());
}

TEST_F(UndoBarTest, NothingIsOfferedWhereNothingCanBeTakenBack) {
    document->database()->imp().undo.clear();
    mxuiOfferUndo(L"Voice note deleted");
    settle();
    EXPECT_FALSE(isOffered());
    step();
    mxuiOfferUndo(nullptr);
    EXPECT_FALSE(isOffered());
    mxuiOfferUndo(L"Line drawn");
    EXPECT_TRUE(isOffered());
    ap::DocManager::instance().close(*document);
    mxuiOfferUndo(L"Line drawn");
    EXPECT_FALSE(isOffered());
}

TEST_F(UndoBarTest, TheButtonCancelsThePromptUnderWayAsUndoDoes) {
    stepWithOffer();
    const std::size_t before = steps();
    QTimer::singleShot(0, &window, [this] { button()->click(); });
    ed::CommandStack::instance().runLine(QStringLiteral("LINE"));
    settle();
    EXPECT_FALSE(ed::Prompter::instance().isWaiting());
    EXPECT_EQ(steps(), before - 1);
    EXPECT_FALSE(isOffered());
}

TEST_F(UndoBarTest, TheOfferNeitherTakesTheKeyboardNorMovesAnything) {
    QLineEdit* entry = window.commandLine()->entry();
    entry->setFocus();
    window.resize(window.minimumSizeHint());
    settle();
    const QSize size = window.size(), least = window.minimumSizeHint();
    const QRect shown = view().geometry(), status = window.statusBar()->geometry();
    stepWithOffer(L"A long text that says at great length what has been done to the drawing, more than there is room "
                  L"for in any window that a hand would make");
    ASSERT_TRUE(isOffered());
    EXPECT_EQ(window.size(), size);
    EXPECT_EQ(window.minimumSizeHint(), least);
    EXPECT_EQ(view().geometry(), shown);
    EXPECT_EQ(window.statusBar()->geometry(), status);
    const QRect place(bar()->mapTo(&window, QPoint()), bar()->size());
    EXPECT_EQ(status.united(place), status);
    EXPECT_GE(button()->width(), button()->minimumSizeHint().width()); // whole
    EXPECT_EQ(QApplication::focusWidget(), entry);
    bar()->withdraw();
    EXPECT_EQ(QApplication::focusWidget(), entry);
}

TEST_F(UndoBarTest, TheButtonHasTheKeyboardByTabAndGivesItToTheCommandLine) {
    stepWithOffer();
    window.commandLine()->entry()->setFocus();
    EXPECT_EQ(button()->focusPolicy(), Qt::TabFocus);
    for (int i = 0; i < 30 && !button()->hasFocus(); ++i)
        key(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_TRUE(button()->hasFocus());
    key(button(), Qt::Key_Space, QStringLiteral(" "));
    QKeyEvent up(QEvent::KeyRelease, Qt::Key_Space, Qt::NoModifier);
    QApplication::sendEvent(button(), &up);
    settle();
    EXPECT_FALSE(isOffered());
    EXPECT_TRUE(window.commandLine()->entry()->hasFocus());
}

TEST_F(UndoBarTest, ATextIsShownAsItIsOnOneLine) {
    stepWithOffer(L"<b>Note</b>\nof & by all");
    EXPECT_EQ(text(), QStringLiteral("<b>Note</b> of & by all"));
    EXPECT_EQ(bar()->findChild<QLabel*>()->textFormat(), Qt::PlainText);
}

} // namespace
