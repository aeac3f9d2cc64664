// SPDX-License-Identifier: MIT
#include "merix/ui/window_watch.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWindow>

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
        if (window->PreTranslateMessage(&message))
            return true;
    }
    return false;
}

bool WindowWatch::eventFilter(QObject* object, QEvent* event) {
    if (m_pressed && isPressLost(object, *event)) {
        CWnd* const window = m_pressed;
        m_pressed = nullptr;
        window->OnCaptureChanged();
    }
    return event->type() == QEvent::KeyPress && object->isWidgetType() &&
           static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && !QApplication::activeModalWidget() &&
           offerEscape();
}

} // namespace merix::ui
