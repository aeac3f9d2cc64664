// SPDX-License-Identifier: MIT
#include "merix/ui/grip_drag.h"

#include "merix/ed/command_stack.h"
#include "merix/ed/editor.h"
#include "merix/ui/look.h"
#include "tests/merix/ui/window_test.h"

#include <QAction>

using namespace merix;

namespace {

class CommandWatch final : public MxEditorReactor {
public:
    CommandWatch() { ed::Editor::instance().addReactor(this); }
    ~CommandWatch() override { ed::Editor::instance().removeReactor(this); }
    void commandWillStart(const wchar_t* name) override { told.push_back(std::wstring(L"start ") + name); }
    void commandEnded(const wchar_t* name) override { told.push_back(std::wstring(L"end ") + name); }
    void commandCancelled(const wchar_t* name) override { told.push_back(std::wstring(L"cancel ") + name); }
    std::vector<std::wstring> told;
};
using Told = std::vector<std::wstring>;

class GripDragTest : public WindowTest {
protected:
    GripDragTest() {
        first = addLine({100, 100, 0}, {200, 100, 0});
        second = addLine({200, 100, 0}, {200, 200, 0});
        undo().clear();
        ed::Selection::instance().set({first, second});
    }
    db::UndoRecorder& undo() { return document->database()->imp().undo; }
    QPointF at(double x, double y) { return view().toWidget({x, y, 0}); }
    static const db::Line& line(MxDbObjectId id) {
        return *static_cast<const db::Line*>(db::DatabaseImp::peek(id, true));
    }
    static bool near(const MxGePoint3d& a, double x, double y) { return std::hypot(a.x - x, a.y - y) < 2.0; }
    void lockLayer() {
        MxDbLayerTableRecord* layer = nullptr;
        ASSERT_EQ(mxdbOpenObject(layer, document->database()->imp().layerNamed(L"0"), Mx::kForWrite), Mx::eOk);
        layer->setIsLocked(true);
        layer->close();
        undo().clear();
    }
    static QString prompt() { return ed::Console::instance().prompt(); }
    void typed(const QString& keys) {
        for (const QChar c : keys) { // what Enter begins is over before the next key
            type(&view(), c);
            settle();
        }
    }
    QRgb pixel(const QPointF& p) { return view().grab().toImage().pixel(int(p.x()), int(p.y())); }

    MxDbObjectId first, second;
};

TEST_F(GripDragTest, AGripGoesWithTheHandAndSharedCornersStayTogether) {
    drag(at(200, 100), at(260, 130));
    EXPECT_TRUE(near(line(first).end, 260, 130));
    EXPECT_EQ(line(first).end, line(second).start);
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0));
    EXPECT_EQ(line(second).end, MxGePoint3d(200, 200, 0));
}

TEST_F(GripDragTest, ItIsOneUndoStepOfThatName) {
    drag(at(200, 100), at(260, 130));
    ASSERT_EQ(undo().undoUnits().size(), 1U);
    EXPECT_EQ(undo().undoUnits()[0].name, L"Grip stretch");
    EXPECT_TRUE(ap::DocManager::instance().undo(*document));
    EXPECT_EQ(line(first).end, MxGePoint3d(200, 100, 0));
    EXPECT_EQ(line(second).start, MxGePoint3d(200, 100, 0));
}

TEST_F(GripDragTest, AClickTakesTheGripAndTheNextLetsItGo) {
    click(at(100, 100));
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0));
    mouse(QEvent::MouseMove, at(130, 150));
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0)) << "nothing moves before the hand lets go";
    click(at(50, 60));
    EXPECT_TRUE(near(line(first).start, 50, 60));
}

TEST_F(GripDragTest, WithShiftSeveralGripsMoveTogether) {
    click(at(100, 100), Qt::ShiftModifier);
    click(at(200, 200), Qt::ShiftModifier);
    drag(at(200, 200), at(200, 240));
    EXPECT_TRUE(near(line(first).start, 100, 140));
    EXPECT_TRUE(near(line(second).end, 200, 240));
    EXPECT_EQ(line(first).end, MxGePoint3d(200, 100, 0));
}

TEST_F(GripDragTest, EscapeLeavesEverythingAsItWas) {
    click(at(100, 100));
    mouse(QEvent::MouseMove, at(130, 150));
    key(&view(), Qt::Key_Escape);
    click(at(20, 20)); // begins a box, moves nothing
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0));
    EXPECT_TRUE(undo().undoUnits().empty());
    EXPECT_EQ(ed::Selection::instance().ids().size(), 2U);
}

TEST_F(GripDragTest, TheEditorIsToldOfACommand) {
    CommandWatch watch;
    press(at(100, 100));
    EXPECT_EQ(watch.told, Told{L"start GRIP_STRETCH"});
    release(at(50, 60));
    EXPECT_EQ(watch.told, (Told{L"start GRIP_STRETCH", L"end GRIP_STRETCH"}));
    watch.told.clear();
    press(at(50, 60));
    key(&view(), Qt::Key_Escape);
    EXPECT_EQ(watch.told, (Told{L"start GRIP_STRETCH", L"cancel GRIP_STRETCH"}));
}

TEST_F(GripDragTest, APromptOrAnotherDrawingEndsTheDrag) {
    CommandWatch watch;
    click(at(100, 100));
    MxGePoint3d picked;
    QTimer::singleShot(0, &window, [&] { click(at(20, 20)); });
    EXPECT_EQ(ed::Prompter::instance().getPoint(nullptr, QStringLiteral("Point: "), picked), kInputNormal);
    EXPECT_EQ(watch.told, (Told{L"start GRIP_STRETCH", L"cancel GRIP_STRETCH"}));
    click(at(100, 100));
    ap::DocManager::instance().create();
    EXPECT_EQ(watch.told.back(), L"cancel GRIP_STRETCH");
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0));
}

TEST_F(GripDragTest, ACommandEndsTheDragBeforeItBegins) {
    CommandWatch watch;
    click(at(100, 100));
    ed::CommandStack::instance().runLine(QStringLiteral("REGEN"));
    EXPECT_EQ(watch.told, (Told{L"start GRIP_STRETCH", L"cancel GRIP_STRETCH", L"start REGEN", L"end REGEN"}));
    click(at(20, 20));
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0));
}

TEST_F(GripDragTest, WhatIsErasedOrNotSelectedAnyMoreIsNotDragged) {
    CommandWatch watch;
    click(at(100, 100));
    MxDbEntity* entity = nullptr;
    ASSERT_EQ(mxdbOpenObject(entity, second, Mx::kForWrite), Mx::eOk);
    entity->erase();
    entity->close();
    EXPECT_EQ(watch.told, Told{L"start GRIP_STRETCH"}) << "the other one was not dragged";
    ASSERT_EQ(mxdbOpenObject(entity, first, Mx::kForWrite), Mx::eOk);
    entity->erase();
    entity->close();
    EXPECT_EQ(watch.told.back(), L"cancel GRIP_STRETCH");
}

TEST_F(GripDragTest, UndoEndsTheDrag) {
    CommandWatch watch;
    drag(at(200, 200), at(200, 240));
    settle();
    watch.told.clear();
    click(at(100, 100));
    for (QAction* action : window.findChildren<QAction*>())
        if (action->text() == QStringLiteral("&Undo Grip stretch"))
            action->trigger();
    EXPECT_EQ(watch.told, (Told{L"start GRIP_STRETCH", L"cancel GRIP_STRETCH"}));
    EXPECT_EQ(line(second).end, MxGePoint3d(200, 200, 0));
}

TEST_F(GripDragTest, OnALockedLayerTheGripIsRefusedWithAMessage) {
    lockLayer();
    CommandWatch watch;
    ed::Console::instance().markRead();
    drag(at(100, 100), at(50, 60));
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0));
    EXPECT_TRUE(undo().undoUnits().empty());
    EXPECT_TRUE(watch.told.empty());
    EXPECT_TRUE(ed::Console::instance().unread().contains(QStringLiteral("The layer 0 is locked")));
}

TEST_F(GripDragTest, WhileAnotherHoldsTheDrawingNothingMovesAndThatIsTold) {
    auto& manager = ap::DocManager::instance();
    ASSERT_EQ(manager.lockDocument(document, MxApLockMode::kWrite, L"OTHER", L"Other"), Mx::eOk);
    CommandWatch watch;
    ed::Console::instance().markRead();
    drag(at(200, 100), at(260, 130));
    manager.unlockDocument(document);
    EXPECT_EQ(line(first).end, MxGePoint3d(200, 100, 0));
    EXPECT_EQ(watch.told, (Told{L"start GRIP_STRETCH", L"cancel GRIP_STRETCH"}));
    EXPECT_TRUE(ed::Console::instance().unread().contains(QStringLiteral("The grips were not moved.")));
}

TEST_F(GripDragTest, WhatWouldNotMoveIsToldOfOnce) {
    press(at(200, 100));
    lockLayer();
    ed::Console::instance().markRead();
    release(at(260, 130));
    EXPECT_EQ(line(first).end, MxGePoint3d(200, 100, 0));
    EXPECT_EQ(ed::Console::instance().unread().trimmed(), QStringLiteral("2 entities are on locked layers."));
}

TEST_F(GripDragTest, TheHandSnapsToOtherEntitiesButNotToWhatItDrags) {
    addLine({300, 60, 0}, {400, 60, 0});
    drag(at(100, 100), at(300, 60) + QPointF(4, 3));
    EXPECT_EQ(line(first).start, MxGePoint3d(300, 60, 0));
    const QPointF besideItself = at(250, 80) + QPointF(8, 0); // the middle of what is dragged
    drag(at(300, 60), besideItself);
    EXPECT_EQ(line(first).start, view().toWorld(besideItself));
    view().setSnapping(false);
    const QPointF near = at(300, 60) + QPointF(4, 3);
    drag(besideItself, near);
    EXPECT_EQ(line(first).start, view().toWorld(near));
}

TEST_F(GripDragTest, WithOrthoTheGripGoesStraight) {
    view().setOrtho(true);
    drag(at(100, 100), at(103, 160));
    EXPECT_EQ(line(first).start.x, 100);
    EXPECT_NEAR(line(first).start.y, 160, 2);
}

TEST_F(GripDragTest, EnterLeadsFromStretchingToWaysForTheWholeSelection) {
    CommandWatch watch;
    const auto base = QPointF(at(200, 100));
    view().setSnapping(false);
    click(base);
    EXPECT_EQ(prompt(), QStringLiteral("Stretch to or [Base/Move/Rotate/Scale/Mirror] <Move>: "));
    typed(QStringLiteral(" "));
    EXPECT_EQ(prompt(), QStringLiteral("Move to or [Base/Copy/Rotate/Scale/Mirror/Stretch] <Rotate>: "));
    click(at(260, 130));
    EXPECT_EQ(prompt(), QString());
    const MxGeVector3d by = line(first).end - MxGePoint3d(200, 100, 0);
    EXPECT_TRUE(near(line(first).end, 260, 130));
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0) + by);
    EXPECT_EQ(line(second).end, MxGePoint3d(200, 200, 0) + by);
    EXPECT_EQ(watch.told, (Told{L"start GRIP_STRETCH", L"cancel GRIP_STRETCH", L"start GRIP_MOVE", L"end GRIP_MOVE"}));
    ASSERT_EQ(undo().undoUnits().size(), 1U);
    EXPECT_EQ(undo().undoUnits()[0].name, L"Grip move");
    EXPECT_TRUE(ap::DocManager::instance().undo(*document));
    EXPECT_EQ(line(second).end, MxGePoint3d(200, 200, 0));
}

TEST_F(GripDragTest, AfterTheLastWayItStretchesAgain) {
    click(at(100, 100));
    typed(QStringLiteral("     "));
    view().setSnapping(false);
    click(at(50, 60));
    EXPECT_TRUE(near(line(first).start, 50, 60));
    EXPECT_EQ(line(first).end, MxGePoint3d(200, 100, 0));
    EXPECT_EQ(line(second).end, MxGePoint3d(200, 200, 0));
}

TEST_F(GripDragTest, TheRightButtonIsEnterHereToo) {
    click(at(100, 100));
    mouse(QEvent::MouseButtonPress, at(100, 100), Qt::RightButton, Qt::RightButton);
    EXPECT_EQ(prompt(), QStringLiteral("Move to or [Base/Copy/Rotate/Scale/Mirror/Stretch] <Rotate>: "));
}

TEST_F(GripDragTest, TheSelectionIsMirroredInTheLineFromTheGripToTheHand) {
    click(at(100, 100));
    typed(QStringLiteral("mirror\n"));
    typed(QStringLiteral("@0,50\n"));
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0));
    EXPECT_EQ(line(first).end, MxGePoint3d(0, 100, 0));
    EXPECT_EQ(line(second).end, MxGePoint3d(0, 200, 0));
    EXPECT_EQ(undo().undoUnits().back().name, L"Grip mirror");
}

TEST_F(GripDragTest, CopiesLeaveTheSelectionWhereItIs) {
    click(at(100, 100));
    typed(QStringLiteral("mi\nc\n"));
    EXPECT_TRUE(prompt().startsWith(QStringLiteral("Second point of the mirror line (copies) or ")));
    typed(QStringLiteral("@0,50\n"));
    EXPECT_EQ(line(first).end, MxGePoint3d(200, 100, 0));
    const auto all = document->database()->imp().block(document->database()->currentSpaceId())->entityIds();
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(line(all[2]).end, MxGePoint3d(0, 100, 0));
    EXPECT_EQ(line(all[3]).end, MxGePoint3d(0, 200, 0));
    ASSERT_EQ(undo().undoUnits().size(), 1U);
    EXPECT_TRUE(ap::DocManager::instance().undo(*document));
    EXPECT_EQ(db::DatabaseImp::peek(all[3]), nullptr);
}

TEST_F(GripDragTest, AnotherBaseIsClickedOrTyped) {
    view().setOrtho(true);
    click(at(100, 100));
    typed(QStringLiteral("mi\nb\n"));
    EXPECT_EQ(prompt(), QStringLiteral("Base point: "));
    mouse(QEvent::MouseMove, at(200, 200) + QPointF(3, 3));
    click(at(200, 200) + QPointF(3, 3)); // snaps to an end of what is selected, ortho or not
    typed(QStringLiteral("@0,50\n"));
    EXPECT_EQ(line(first).start, MxGePoint3d(300, 100, 0));
    EXPECT_EQ(line(second).start, MxGePoint3d(200, 100, 0));

    click(at(300, 100));
    const QPointF free = at(340, 30); // neither beside nor above the grip
    typed(QStringLiteral("mo\nb\n"));
    click(free);
    typed(QStringLiteral("300,100\n"));
    const MxGeVector3d by = MxGePoint3d(300, 100, 0) - view().toWorld(free);
    EXPECT_EQ(line(first).start, MxGePoint3d(300, 100, 0) + by);
    EXPECT_TRUE(ap::DocManager::instance().undo(*document));

    click(at(300, 100));
    typed(QStringLiteral("b\n0,0\n"));
    typed(QStringLiteral("10,20\n")); // the stretch is counted from there
    EXPECT_EQ(line(first).start, MxGePoint3d(310, 120, 0));
    click(at(310, 120));
    typed(QStringLiteral("b\n\n@1,0\n")); // kept
    EXPECT_EQ(line(first).start, MxGePoint3d(311, 120, 0));
}

TEST_F(GripDragTest, AnAngleAndAFactorMayBeTyped) {
    click(at(200, 100));
    typed(QStringLiteral("ro\n90\n"));
    EXPECT_NEAR(line(second).end.x, 100, 1e-9);
    EXPECT_NEAR(line(second).end.y, 100, 1e-9);
    click(at(200, 100));
    ed::Console::instance().markRead();
    typed(QStringLiteral("sc\n0\n-1\nnan\n"));
    EXPECT_EQ(ed::Console::instance().unread().count(QStringLiteral("A number above 0 is needed.")), 3);
    EXPECT_EQ(undo().undoUnits().size(), 1U);
    typed(QStringLiteral("0.5\n"));
    EXPECT_NEAR(line(second).end.x, 150, 1e-9);
    EXPECT_NEAR(line(first).start.y, 50, 1e-9);
}

TEST_F(GripDragTest, APointMayBeTypedForAStretchToo) {
    click(at(100, 100));
    typed(QStringLiteral("1e200,0\n"));
    EXPECT_TRUE(ed::Console::instance().unread().contains(QStringLiteral("That point is too far away.")));
    typed(QStringLiteral("@-10,5\n"));
    EXPECT_EQ(line(first).start, MxGePoint3d(90, 105, 0));
    EXPECT_EQ(line(first).end, MxGePoint3d(200, 100, 0));
}

TEST_F(GripDragTest, WhatIsNoAnswerIsACommandAndEndsTheDrag) {
    CommandWatch watch;
    click(at(100, 100));
    typed(QStringLiteral("regen\n"));
    EXPECT_EQ(watch.told, (Told{L"start GRIP_STRETCH", L"cancel GRIP_STRETCH", L"start REGEN", L"end REGEN"}));
    typed(QStringLiteral("\n"));
    EXPECT_EQ(watch.told.back(), L"end REGEN") << "Enter repeats the command again";
    EXPECT_EQ(prompt(), QString());
}

TEST_F(GripDragTest, EscapeInAnyWayLeavesEverythingAsItWas) {
    for (const char* way : {"mo\n", "ro\n", "sc\n", "mi\n"}) {
        click(at(100, 100));
        typed(QLatin1String(way));
        mouse(QEvent::MouseMove, at(130, 150));
        key(&view(), Qt::Key_Escape);
        EXPECT_EQ(prompt(), QString());
    }
    EXPECT_EQ(line(first).start, MxGePoint3d(100, 100, 0));
    EXPECT_TRUE(undo().undoUnits().empty());
}

TEST_F(GripDragTest, TheWholeSelectionIsShownAsItWillBe) {
    view().setSnapping(false);
    click(at(100, 100));
    typed(QStringLiteral("mi\n"));
    mouse(QEvent::MouseMove, at(100, 20));
    EXPECT_EQ(pixel(at(0, 150)), qRgb(255, 0, 0)); // the second line, beyond the first
    typed(QStringLiteral("st\n"));
    EXPECT_EQ(pixel(at(0, 150)), ui::kCanvas.rgb());
}

TEST_F(GripDragTest, APromptThatBeginsMeanwhileKeepsItsText) {
    click(at(100, 100));
    QString shown;
    QTimer::singleShot(0, &window, [&] {
        shown = prompt();
        ed::Prompter::instance().cancel();
    });
    MxGePoint3d picked;
    ed::Prompter::instance().getPoint(nullptr, QStringLiteral("Point: "), picked);
    EXPECT_EQ(shown, QStringLiteral("Point: "));
}

TEST_F(GripDragTest, TheEntityIsShownAsItWillBe) {
    press(at(100, 100));
    mouse(QEvent::MouseMove, at(200, 5), Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(pixel(at(200, 50)), qRgb(255, 0, 0)); // from the hand to the other end
    key(&view(), Qt::Key_Escape);
    EXPECT_EQ(pixel(at(200, 50)), ui::kCanvas.rgb());
}

TEST_F(GripDragTest, GripsAreBlueSquaresOfConstantSize) {
    const QColor blue = ui::kGrip;
    EXPECT_EQ(pixel(at(100, 100) + QPointF(2, 2)), blue.rgb());
    ge::ViewTransform zoomed = view().transform();
    zoomed.zoomAbout(at(100, 100).x(), at(100, 100).y(), 4.0);
    view().setTransform(zoomed);
    EXPECT_EQ(pixel(at(100, 100) + QPointF(2, 2)), blue.rgb());
    EXPECT_NE(pixel(at(100, 100) + QPointF(7, 7)), blue.rgb());
    mouse(QEvent::MouseMove, at(100, 100) + QPointF(3, 3));
    EXPECT_EQ(pixel(at(100, 100) + QPointF(1, 1)), ui::kHoveredGrip.rgb());
}

} // namespace
