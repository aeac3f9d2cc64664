// SPDX-License-Identifier: MIT
#include "merix/ui/window_watch.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWindow>

#include <cstdio>
#include <memory>
#include <mutex>
#include <vector>

namespace merix::ui {

namespace {

std::mutex g_mutex;
std::set<CWnd*> g_windows; ///< under the mutex: other threads post to them

} // namespace

WindowWatch& WindowWatch::instance() {
    static WindowWatch* const watch = new WindowWatch; // outlives the windows of every module
    return *watch;
}

void WindowWatch::add(CWnd& window) {
    const std::lock_guard lock(g_mutex);
    if (g_windows.empty())
        qApp->installEventFilter(this);
    g_windows.insert(&window);
}

void WindowWatch::remove(CWnd& window) {
    if (m_pressed == &window)
        m_pressed = nullptr; // what would be told is gone
    const std::lock_guard lock(g_mutex);
    g_windows.erase(&window);
    if (g_windows.empty() && qApp)
        qApp->removeEventFilter(this);
}

bool WindowWatch::post(CWnd* window, QEvent* event) {
    std::unique_ptr<QEvent> owned(event);
    const std::lock_guard lock(g_mutex);
    if (g_windows.find(window) == g_windows.end())
        return false;
    QCoreApplication::postEvent(window, owned.release());
    return true;
}

void WindowWatch::pressed(CWnd& window) {
    m_pressed = &window;
}

void WindowWatch::released() {
    m_pressed = nullptr;
}

bool WindowWatch::isPressLost(const QObject* object, const QEvent& event) const {
    const QWidget* const top = m_pressed->window();
    switch (event.type()) {
    case QEvent::Hide:
        return object == m_pressed || object == top;
    case QEvent::WindowDeactivate:
    case QEvent::WindowBlocked:
        return object == top || (top->windowHandle() && object == top->windowHandle());
    case QEvent::ApplicationStateChange:
        return QGuiApplication::applicationState() != Qt::ApplicationActive;
    case QEvent::Show: { // a menu takes the mouse
        const auto* popup = qobject_cast<const QWidget*>(object);
        return popup && popup->windowType() == Qt::Popup;
    }
    case QEvent::MouseButtonRelease:
        return object->isWidgetType() && object != m_pressed &&
               static_cast<const QMouseEvent&>(event).button() == Qt::LeftButton;
    case QEvent::MouseMove: // the button went up where nobody told
        return !(static_cast<const QMouseEvent&>(event).buttons() & Qt::LeftButton);
    default:
        return false;
    }
}

bool WindowWatch::offerEscape() {
    std::vector<QPointer<CWnd>> windows;
    {
        const std::lock_guard lock(g_mutex);
        windows.assign(g_windows.begin(), g_windows.end());
    }
    for (const QPointer<CWnd>& window : windows) {
        if (!window || window->isWindow() || !window->isVisible())
            continue;
        tagMSG message{window.data(), kWindowKeyDown, kKeyEscape, 0};
        try {
            if (window->PreTranslateMessage(&message))
                return true;
        } catch (...) {
            std::fputs("merix: a window of a module failed at a key\n", stderr);
        }
    }
    return false;
}

void WindowWatch::endPress() {
    CWnd* const window = m_pressed;
    m_pressed = nullptr;
    if (!window)
        return;
    try {
        window->OnCaptureChanged();
    } catch (...) {
        std::fputs("merix: a window of a module failed at the end of a press\n", stderr);
    }
}

bool WindowWatch::eventFilter(QObject* object, QEvent* event) {
    if (m_pressed && isPressLost(object, *event))
        endPress();
    if (event->type() != QEvent::KeyPress || !object->isWidgetType() || QApplication::activeModalWidget() ||
        static_cast<const QKeyEvent*>(event)->key() != Qt::Key_Escape || !offerEscape())
        return false;
    event->accept(); // else it would come again for each parent
    return true;
}

} // namespace merix::ui
