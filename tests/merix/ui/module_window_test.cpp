// SPDX-License-Identifier: MIT
// Windows of modules: Qt's events come to them as messages first.
#include "host/ui/dialog.h"
#include "tests/merix/ui/window_test.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>

#include <thread>

namespace {

/// Writes down what it is told.
class Probe : public CDialog {
public:
    using CDialog::CDialog;
    bool PreTranslateMessage(tagMSG* message) override {
        told.push_back(*message);
        return consumes == message->message;
    }
    void OnTimer(unsigned id) override { timers.push_back(id); }
    void OnMouseLeave() override { ++leaves; }
    void OnCaptureChanged() override { ++captures; }
    void OnDestroy() override { ++destroyed; }
    void OnPaint() override { ++paints; }
    void mousePressEvent(QMouseEvent*) override { ++presses; }
    void mouseReleaseEvent(QMouseEvent*) override { ++releases; }

    std::vector<unsigned> numbers() {
        std::vector<unsigned> all;
        for (const tagMSG& message : std::exchange(told, {}))
            all.push_back(message.message);
        return all;
    }

    std::vector<tagMSG> told;
    std::vector<unsigned> timers;
    unsigned consumes = 0;
    int leaves = 0, captures = 0, destroyed = 0, paints = 0, presses = 0, releases = 0;
};

class ModuleWindowTest : public WindowTest {
protected:
    ModuleWindowTest() {
        probe.setWindowFlags(Qt::FramelessWindowHint);
        probe.resize(36, 36);
        probe.ShowWindow(1);
    }
    void send(QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons held,
              Qt::KeyboardModifiers keys = Qt::NoModifier, QWidget* to = nullptr) {
        QMouseEvent event(type, at, button, held, keys);
        QCoreApplication::sendEvent(to ? to : &probe, &event);
    }
    void press() { send(QEvent::MouseButtonPress, {5, 6}, Qt::LeftButton, Qt::LeftButton); }
    void letGo() { send(QEvent::MouseButtonRelease, {5, 6}, Qt::LeftButton, Qt::NoButton); }
    static bool escape(QWidget& to) {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, QStringLiteral("\x1b"));
        key.ignore();
        QCoreApplication::sendEvent(&to, &key);
        return key.isAccepted();
    }

    Probe probe{&window};
};

using Numbers = std::vector<unsigned>;

} // namespace

TEST_F(ModuleWindowTest, TheMouseComesAsMessagesWithPlaceAndKeys) {
    send(QEvent::MouseMove, {3.6, 7.4}, Qt::NoButton, Qt::NoButton);
    send(QEvent::MouseMove, {-2, 40}, Qt::NoButton, Qt::LeftButton | Qt::MiddleButton,
         Qt::ShiftModifier | Qt::ControlModifier);
    ASSERT_EQ(probe.told.size(), 2u);
    EXPECT_EQ(probe.told[0].hwnd, &probe);
    EXPECT_EQ(mouseX(probe.told[0]), 4);
    EXPECT_EQ(mouseY(probe.told[0]), 7);
    EXPECT_EQ(probe.told[0].wParam, 0u);
    EXPECT_EQ(mouseX(probe.told[1]), -2);
    EXPECT_EQ(mouseY(probe.told[1]), 40);
    EXPECT_EQ(probe.told[1].wParam, 1u | 16u | 4u | 8u);
    EXPECT_EQ(probe.numbers(), (Numbers{512, 512}));
    press();
    letGo();
    EXPECT_EQ(probe.numbers(), (Numbers{513, 514}));
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton, Qt::BackButton}) {
        send(QEvent::MouseButtonPress, {1, 1}, button, button);
        send(QEvent::MouseButtonRelease, {1, 1}, button, Qt::NoButton);
    }
    EXPECT_EQ(probe.told.front().wParam, 2u);
    EXPECT_EQ(probe.numbers(), (Numbers{516, 517, 519, 520}));
    send(QEvent::MouseButtonDblClick, {1, 1}, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(probe.numbers(), Numbers{513});
    letGo();
}

TEST_F(ModuleWindowTest, WhatItDealsWithQtDoesNotSee) {
    press();
    letGo();
    EXPECT_EQ(probe.presses, 1);
    EXPECT_EQ(probe.releases, 1);
    probe.consumes = 513;
    press();
    letGo();
    EXPECT_EQ(probe.presses, 1);
    EXPECT_EQ(probe.releases, 2);
}

TEST_F(ModuleWindowTest, WhatIsPostedComesAtTheNextTurnFromAnyThread) {
    std::thread other([&] {
        EXPECT_TRUE(CWnd::PostMessage(&probe, 1125, 7, -3));
        EXPECT_TRUE(CWnd::PostMessage(&probe, kWindowTimer, 2));
    });
    other.join();
    EXPECT_TRUE(probe.told.empty());
    QCoreApplication::sendPostedEvents();
    ASSERT_EQ(probe.told.size(), 2u);
    EXPECT_EQ(probe.told[0].wParam, 7u);
    EXPECT_EQ(probe.told[0].lParam, -3);
    EXPECT_EQ(probe.numbers(), (Numbers{1125, 275}));
    EXPECT_EQ(probe.timers, Numbers{2});
    probe.consumes = kWindowTimer;
    CWnd::PostMessage(&probe, kWindowTimer, 1);
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(probe.timers, Numbers{2});
    auto gone = std::make_unique<Probe>(nullptr);
    Probe* const there = gone.get();
    gone.reset();
    EXPECT_FALSE(CWnd::PostMessage(there, 1125));
}

TEST_F(ModuleWindowTest, LeavingPaintingAndDestroyingAreTold) {
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&probe, &leave);
    EXPECT_EQ(probe.leaves, 1);
    const int before = probe.paints;
    probe.repaint();
    EXPECT_EQ(probe.paints, before + 1);
    probe.DestroyWindow();
    probe.DestroyWindow();
    EXPECT_EQ(probe.destroyed, 1);
    EXPECT_FALSE(probe.isVisible());
}

TEST_F(ModuleWindowTest, APressWhoseReleaseWillNotComeIsTold) {
    const auto lost = [this] { return std::exchange(probe.captures, 0); };
    press();
    letGo();
    EXPECT_EQ(lost(), 0);

    press();
    probe.hide();
    EXPECT_EQ(lost(), 1) << "hidden";
    probe.show();

    press();
    QEvent deactivate(QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(&window, &deactivate);
    EXPECT_EQ(lost(), 1) << "another window has the keyboard";
    QCoreApplication::sendEvent(&window, &deactivate);
    EXPECT_EQ(lost(), 0) << "told once";

    press();
    {
        QMessageBox question(&window);
        question.setModal(true);
        question.show();
        QCoreApplication::processEvents();
        EXPECT_EQ(lost(), 1) << "a question is open";
    }

    press();
    {
        QMenu menu;
        menu.addAction(QStringLiteral("one"));
        menu.popup(QPoint(0, 0));
        EXPECT_EQ(lost(), 1) << "a menu takes the mouse";
        menu.close();
    }

    press();
    send(QEvent::MouseButtonRelease, {5, 6}, Qt::LeftButton, Qt::NoButton, {}, &view());
    EXPECT_EQ(lost(), 1) << "another one got the release";

    press();
    send(QEvent::MouseMove, {9, 9}, Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(lost(), 0) << "still held";
    send(QEvent::MouseMove, {9, 9}, Qt::NoButton, Qt::NoButton, {}, &window);
    EXPECT_EQ(lost(), 1) << "the button went up where nobody told";

    press();
    send(QEvent::MouseButtonRelease, {5, 6}, Qt::RightButton, Qt::LeftButton);
    window.hide();
    EXPECT_EQ(lost(), 1) << "the other button is no matter";
    window.show();
}

TEST_F(ModuleWindowTest, EscComesToItBeforeTheCommandLine) {
    auto* entry = window.findChild<QLineEdit*>(QStringLiteral("commandEntry"));
    ASSERT_TRUE(entry);
    entry->setText(QStringLiteral("typed"));
    probe.consumes = kWindowKeyDown;
    escape(*entry);
    EXPECT_EQ(entry->text(), QStringLiteral("typed"));
    ASSERT_EQ(probe.told.size(), 1u);
    EXPECT_EQ(probe.told[0].wParam, kKeyEscape);
    probe.consumes = 0;
    escape(*entry);
    EXPECT_EQ(entry->text(), QString());
    probe.told.clear();
    probe.hide();
    escape(*entry);
    EXPECT_TRUE(probe.told.empty()) << "it is hidden";
    Probe dialog(&window);
    dialog.show();
    escape(*entry);
    EXPECT_TRUE(dialog.told.empty()) << "a window of its own has keys of its own";
}
