// SPDX-License-Identifier: MIT
// Windows that modules keep over the view, and the cursor that comes and goes between them and the view.
#include "merix/ui/hover.h"

#include "host/ui/dialog.h"
#include "tests/merix/ui/window_test.h"

#include <QLabel>
#include <QMenu>
#include <QStatusBar>
#include <QWindow>

// The door that Qt's own test library feeds the mouse through; exported, without a header of its own.
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons state, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers modifiers, int timestamp);

using namespace merix;

namespace {

/// Wants the left button alone, like the window over a note.
class Tag final : public CWnd {
public:
    explicit Tag(QWidget* parent)
        : CWnd(parent) {}
    int pressed = 0;

protected:
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton)
            ++pressed;
        else
            event->ignore();
    }
    void mouseReleaseEvent(QMouseEvent* event) override { event->setAccepted(event->button() == Qt::LeftButton); }
    void mouseMoveEvent(QMouseEvent* event) override { event->ignore(); }
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

class HoverTest : public WindowTest, public MxEdInputPointMonitor {
protected:
    HoverTest() {
        document->inputPointManager()->addPointMonitor(this);
        tag.setGeometry({view().mapTo(&window, QPoint(300, 200)), QSize(36, 36)});
    }
    ~HoverTest() override {
        if (ap::DocManager::instance().current())
            document->inputPointManager()->removePointMonitor(this);
    }
    Mx::ErrorStatus monitorInputPoint(const MxEdInputPoint& input) override {
        EXPECT_TRUE(input.pointComputed);
        told.push_back(input.pickedEntities.size());
        return Mx::eOk;
    }
    /// The hand itself, at a place of the view.
    void hand(QEvent::Type type, const QPoint& at, Qt::MouseButton button = Qt::NoButton,
              Qt::MouseButtons held = Qt::NoButton) {
        const QPoint inWindow = view().mapTo(&window, at);
        if (!isIn) {
            QEnterEvent enter(inWindow, inWindow, window.mapToGlobal(inWindow));
            QCoreApplication::sendEvent(window.windowHandle(), &enter);
        }
        isIn = true;
        qt_handleMouseEvent(window.windowHandle(), inWindow, window.mapToGlobal(inWindow), held, button, type,
                            Qt::NoModifier, time += 5000);
        settle();
    }
    void moveTo(const QPoint& at) { hand(QEvent::MouseMove, at); }
    /// The cursor leaves the program.
    void goAway() {
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(window.windowHandle(), &leave);
        isIn = false;
        settle();
    }
    /// Qt takes what a child leaves to its parent only where the event is the system's: here it is done by hand.
    void wheelOn(QWidget& widget, const QPoint& at, Qt::MouseButtons held = Qt::NoButton, const QPoint& pixels = {}) {
        for (QWidget* target = &widget; target; target = target->parentWidget()) {
            QWheelEvent event(target->mapFrom(&window, widget.mapTo(&window, at)), widget.mapToGlobal(at), pixels,
                              {0, 120}, held, Qt::NoModifier, Qt::NoScrollPhase, false);
            event.ignore();
            QCoreApplication::sendEvent(target, &event);
            if (event.isAccepted())
                return;
        }
    }
    bool isCoordinateShown(const QPoint& at) {
        const MxGePoint3d world = view().toWorld(at);
        const auto labels = window.statusBar()->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->text() == QStringLiteral("%1, %2").arg(world.x, 0, 'f', 4).arg(world.y, 0, 'f', 4);
        });
    }
    /// A line under the place, drawn before the cursor is there.
    void lineUnder(const QPoint& at) {
        addLine(view().toWorld(at + QPoint(-100, 0)), view().toWorld(at + QPoint(100, 0)));
        settle();
    }
    /// What was told last; a number that is never told when nothing was.
    std::size_t last() const { return told.empty() ? ~std::size_t{0} : told.back(); }
    using Told = std::vector<std::size_t>;
    Told told; ///< how many entities were under the cursor, each time
    Tag tag{&window};
    bool isIn = false; ///< the program, the cursor
    int time = 1;
};

TEST_F(HoverTest, ACursorThatLeavesTheViewHoweverFastLeavesNothingUnderIt) {
    lineUnder({310, 210});
    moveTo({310, 210});
    ASSERT_EQ(last(), 1u);
    goAway();
    EXPECT_EQ(last(), 0u);
    moveTo({311, 210});
    ASSERT_EQ(last(), 1u);
    moveTo({311, -60}); // onto the tool bar at once
    EXPECT_EQ(last(), 0u);
}

TEST_F(HoverTest, ACursorThatGoesOntoAModulesWindowIsNotAway) {
    lineUnder({310, 210});
    moveTo({310, 210});
    told.clear();
    tag.show();
    settle();
    moveTo({312, 212});
    ASSERT_TRUE(tag.underMouse());
    EXPECT_EQ(told, Told());
    goAway();
    EXPECT_EQ(told, Told{0});
}

TEST_F(HoverTest, AModulesWindowBesideTheViewHoldsNothing) {
    lineUnder({310, 210});
    tag.move(view().mapTo(&window, QPoint(300, -60)));
    tag.show();
    moveTo({310, 210});
    moveTo({310, -50});
    ASSERT_TRUE(tag.underMouse());
    EXPECT_EQ(last(), 0u);
}

TEST_F(HoverTest, MovesOverAModulesWindowMoveTheDrawingsCursorAndLookAtNothing) {
    tag.show();
    moveTo({310, 210});
    told.clear();
    moveTo({315, 215});
    EXPECT_TRUE(tag.underMouse());
    EXPECT_TRUE(isCoordinateShown({315, 215}));
    EXPECT_EQ(told, Told());
    moveTo({400, 300});
    EXPECT_TRUE(isCoordinateShown({400, 300}));
    EXPECT_EQ(last(), 0u);
    EXPECT_FALSE(told.empty());
}

TEST_F(HoverTest, TheWheelOverAModulesWindowZoomsAboutItsPlace) {
    tag.show();
    moveTo({310, 210});
    told.clear();
    const MxGePoint3d world = view().toWorld({310, 210});
    const double before = view().transform().unitsPerPixel;
    wheelOn(tag, {10, 10});
    EXPECT_LT(view().transform().unitsPerPixel, before);
    EXPECT_LT(QLineF(view().toWidget(world), QPointF(310, 210)).length(), 1e-6);
    EXPECT_EQ(told, Told());
    settle();
    EXPECT_EQ(told, Told{0}); // the drawing has moved away beneath it
    const double zoomed = view().transform().unitsPerPixel;
    wheelOn(tag, {10, 10}, Qt::LeftButton); // the hand holds it: it may be recording
    EXPECT_EQ(view().transform().unitsPerPixel, zoomed);
}

TEST_F(HoverTest, TheWheelBesideTheViewIsNotTheDrawings) {
    const double before = view().transform().unitsPerPixel;
    wheelOn(*window.statusBar(), {10, 5});
    tag.move(view().mapTo(&window, QPoint(300, -60)));
    tag.show();
    wheelOn(tag, {10, 10});
    EXPECT_EQ(view().transform().unitsPerPixel, before);
}

TEST_F(HoverTest, TheMiddleButtonOverAModulesWindowPansAsFarAsItGoes) {
    tag.show();
    moveTo({310, 210});
    const MxGePoint3d world = view().toWorld({310, 210});
    hand(QEvent::MouseButtonPress, {310, 210}, Qt::MiddleButton, Qt::MiddleButton);
    hand(QEvent::MouseMove, {320, 215}, Qt::NoButton, Qt::MiddleButton);
    hand(QEvent::MouseMove, {480, 350}, Qt::NoButton, Qt::MiddleButton);
    EXPECT_LT(QLineF(view().toWidget(world), QPointF(480, 350)).length(), 1e-6);
    hand(QEvent::MouseButtonRelease, {480, 350}, Qt::MiddleButton);
    hand(QEvent::MouseMove, {500, 380});
    EXPECT_LT(QLineF(view().toWidget(world), QPointF(480, 350)).length(), 1e-6); // let go
    EXPECT_EQ(tag.pressed, 0);
}

TEST_F(HoverTest, AWindowThatGoesWhileItIsPannedOverDoesNotLeaveThePanStuck) {
    auto* passing = new Tag(&window);
    passing->setGeometry(tag.geometry());
    passing->show();
    moveTo({310, 210});
    const MxGePoint3d world = view().toWorld({310, 210});
    hand(QEvent::MouseButtonPress, {310, 210}, Qt::MiddleButton, Qt::MiddleButton);
    delete passing;
    hand(QEvent::MouseButtonRelease, {310, 210}, Qt::MiddleButton);
    hand(QEvent::MouseMove, {500, 380});
    hand(QEvent::MouseMove, {510, 390});
    EXPECT_LT(QLineF(view().toWidget(world), QPointF(310, 210)).length(), 1e-6);
    EXPECT_EQ(view().cursor().shape(), Qt::BlankCursor);
}

TEST_F(HoverTest, ADoubleClickOfTheMiddleButtonOverAModulesWindowShowsAll) {
    addLine({0, 0, 0}, {5000, 5000, 0});
    tag.show();
    moveTo({310, 210});
    const double before = view().transform().unitsPerPixel;
    QMouseEvent event(QEvent::MouseButtonDblClick, {10, 10}, tag.mapToGlobal({10, 10}), Qt::MiddleButton,
                      Qt::MiddleButton, Qt::NoModifier);
    QApplication::sendEvent(&tag, &event);
    EXPECT_GT(view().transform().unitsPerPixel, before);
}

TEST_F(HoverTest, TheLeftButtonStaysWithTheModulesWindow) {
    lineUnder({310, 210});
    tag.show();
    moveTo({310, 210});
    told.clear();
    hand(QEvent::MouseButtonPress, {310, 210}, Qt::LeftButton, Qt::LeftButton);
    view().zoomExtents();
    settle();
    EXPECT_EQ(told, Told()) << "nothing is told while the hand holds it";
    hand(QEvent::MouseMove, {315, 212}, Qt::NoButton, Qt::LeftButton);
    hand(QEvent::MouseButtonRelease, {315, 212}, Qt::LeftButton);
    EXPECT_EQ(tag.pressed, 1);
    EXPECT_TRUE(ed::Selection::instance().ids().empty());
    EXPECT_FALSE(ed::Prompter::instance().isWaiting());
}

TEST_F(HoverTest, AWindowThatHidesUnderTheCursorGivesItBack) {
    tag.show();
    moveTo({310, 210});
    tag.hide();
    moveTo({311, 211});
    lineUnder({310, 210});
    told.clear();
    moveTo({310, 210});
    EXPECT_EQ(told, Told{1});
}

TEST_F(HoverTest, AHiddenViewHasNothingUnderTheCursor) {
    lineUnder({310, 210});
    moveTo({310, 210});
    window.hide();
    settle();
    EXPECT_EQ(last(), 0u);
    window.show();
    settle();
    moveTo({311, 210});
    ASSERT_EQ(last(), 1u);
    window.setWindowState(Qt::WindowMinimized);
    settle();
    EXPECT_EQ(last(), 0u);
}

TEST_F(HoverTest, APopupHasTheCursor) {
    lineUnder({310, 210});
    moveTo({310, 210});
    ASSERT_EQ(last(), 1u);
    QMenu menu;
    menu.addAction(QStringLiteral("One"));
    menu.popup(view().mapToGlobal(QPoint(600, 400)));
    settle();
    EXPECT_EQ(last(), 0u);
}

TEST_F(HoverTest, AnotherDrawingInTheViewIsUnderTheCursorInItsPlace) {
    lineUnder({310, 210});
    moveTo({310, 210});
    ASSERT_EQ(last(), 1u);
    ap::DocManager::instance().create();
    EXPECT_EQ(last(), 0u);
}

TEST_F(HoverTest, AnotherWindowsDrawingLeavesNothingUnderTheCursorInThisOne) {
    ap::Document* other = ap::DocManager::instance().create();
    ui::MainWindow::takeOut(*other);
    settle();
    ap::DocManager::instance().activate(document);
    settle();
    ap::DocManager::instance().activate(document);
    lineUnder({310, 210});
    moveTo({310, 210});
    ASSERT_EQ(last(), 1u);
    ap::DocManager::instance().activate(other);
    EXPECT_EQ(last(), 0u);
}

} // namespace
