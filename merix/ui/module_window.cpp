// SPDX-License-Identifier: MIT
// Windows of modules: Qt's events as messages.
#include "merix/ui/window_watch.h"

#include <QCloseEvent>
#include <QMouseEvent>

#include <utility>

using merix::ui::WindowWatch;

namespace {

const QEvent::Type kPosted = static_cast<QEvent::Type>(QEvent::registerEventType());

class PostedMessage : public QEvent {
public:
    explicit PostedMessage(const tagMSG& aMessage)
        : QEvent(kPosted)
        , message(aMessage) {}
    tagMSG message;
};

std::uintptr_t keysOf(const QMouseEvent& event) {
    const auto flag = [](bool isSet, std::uintptr_t value) { return isSet ? value : 0; };
    return flag(event.buttons() & Qt::LeftButton, kMouseKeyLeft) |
           flag(event.buttons() & Qt::RightButton, kMouseKeyRight) |
           flag(event.buttons() & Qt::MiddleButton, kMouseKeyMiddle) |
           flag(event.modifiers() & Qt::ShiftModifier, kMouseKeyShift) |
           flag(event.modifiers() & Qt::ControlModifier, kMouseKeyControl);
}

/// 0 for buttons that have no message.
unsigned numberOf(const QMouseEvent& event) {
    if (event.type() == QEvent::MouseMove)
        return kWindowMouseMove;
    const bool down = event.type() != QEvent::MouseButtonRelease;
    switch (event.button()) {
    case Qt::LeftButton:
        return down ? kWindowLeftDown : kWindowLeftUp;
    case Qt::RightButton:
        return down ? kWindowRightDown : kWindowRightUp;
    case Qt::MiddleButton:
        return down ? kWindowMiddleDown : kWindowMiddleUp;
    default:
        return 0;
    }
}

std::intptr_t placeOf(const QMouseEvent& event) {
    const std::intptr_t x = qRound(event.localPos().x()), y = qRound(event.localPos().y());
    return (x & 0xFFFF) | (y & 0xFFFF) << 16;
}

bool isOfMouse(const QEvent& event) {
    return event.type() == QEvent::MouseMove || event.type() == QEvent::MouseButtonPress ||
           event.type() == QEvent::MouseButtonDblClick || event.type() == QEvent::MouseButtonRelease;
}

void noteLeftButton(CWnd& window, const QMouseEvent& event) {
    if (event.button() != Qt::LeftButton)
        return;
    if (event.type() == QEvent::MouseButtonRelease)
        WindowWatch::instance().released();
    else
        WindowWatch::instance().pressed(window);
}

} // namespace

CWnd::CWnd(QWidget* parent)
    : QWidget(parent) {
    WindowWatch::instance().add(*this);
}

CWnd::~CWnd() {
    WindowWatch::instance().remove(*this);
}

void CWnd::ShowWindow(int show) {
    setVisible(show != 0);
    if (show != 0)
        raise();
}

void CWnd::DestroyWindow() {
    if (std::exchange(m_destroyed, true))
        return;
    OnDestroy();
    hide();
}

bool CWnd::PostMessage(CWnd* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    return WindowWatch::post(window, new PostedMessage({window, message, wParam, lParam}));
}

bool CWnd::PreTranslateMessage(tagMSG*) {
    return false;
}

void CWnd::OnTimer(unsigned) {}
void CWnd::OnMouseLeave() {}
void CWnd::OnCaptureChanged() {}
void CWnd::OnDestroy() {}
void CWnd::OnClose() {}
void CWnd::OnPaint() {}

bool CWnd::translate(QEvent* event) {
    tagMSG message;
    message.hwnd = this;
    if (event->type() == kPosted) {
        message = static_cast<const PostedMessage*>(event)->message;
        if (!PreTranslateMessage(&message) && message.message == kWindowTimer)
            OnTimer(static_cast<unsigned>(message.wParam));
        return true;
    }
    const auto& mouse = *static_cast<const QMouseEvent*>(event);
    message.message = numberOf(mouse);
    message.wParam = keysOf(mouse);
    message.lParam = placeOf(mouse);
    return message.message != 0 && PreTranslateMessage(&message);
}

bool CWnd::event(QEvent* event) {
    if (isOfMouse(*event))
        noteLeftButton(*this, *static_cast<const QMouseEvent*>(event));
    if ((event->type() == kPosted || isOfMouse(*event)) && translate(event)) {
        event->accept();
        return true; // the window may be gone
    }
    if (event->type() == QEvent::Leave)
        OnMouseLeave();
    else if (event->type() == QEvent::Paint)
        OnPaint();
    return QWidget::event(event);
}

void CWnd::closeEvent(QCloseEvent* event) {
    event->ignore();
    OnClose();
}
