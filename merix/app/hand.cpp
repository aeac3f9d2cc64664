// SPDX-License-Identifier: MIT
#include "merix/app/hand.h"

#include <QApplication>
#include <QCursor>
#include <QMouseEvent>

// The doors that Qt's own test library feeds input through; exported, without a header of their own.
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons state, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers modifiers, int timestamp);
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key, Qt::KeyboardModifiers modifiers,
                                    const QString& text, bool autoRepeat, ushort count);

namespace merix::app {

namespace {

/// More than the longest pause between the two presses of a double click, milliseconds.
constexpr int kBetweenClicks = 5000;

/// What Ctrl makes of a character by the X keyboard extension.
QChar controlled(QChar character) {
    const ushort code = character.unicode();
    if ((code >= '@' && code < '\x7f') || code == ' ')
        return QChar(code & 0x1F);
    if (code >= '3' && code <= '7')
        return QChar(code - '3' + 0x1B);
    switch (code) {
    case '2':
        return QChar(0);
    case '8':
        return QChar(0x7F);
    case '/':
        return QChar(0x1F);
    default:
        return character;
    }
}

/// As an X server has it: Alt and Meta leave the text as it is.
QString textOf(int key, Qt::KeyboardModifiers modifiers) {
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return QStringLiteral("\r");
    case Qt::Key_Escape:
        return QStringLiteral("\x1b");
    case Qt::Key_Tab:
        return QStringLiteral("\t");
    case Qt::Key_Backspace:
        return QStringLiteral("\b");
    case Qt::Key_Delete:
        return QStringLiteral("\x7f");
    default:
        break;
    }
    if (key < Qt::Key_Space || key > 0xFFFF)
        return {};
    const QChar character(static_cast<ushort>(key));
    if (modifiers & Qt::ControlModifier)
        return QString(controlled(character));
    return modifiers & Qt::ShiftModifier ? QString(character) : QString(character.toLower());
}

} // namespace

Hand::Hand(const Desktop& desktop)
    : m_desktop(desktop) {
    qApp->installEventFilter(this);
}

QWindow* Hand::under() const {
    const QWidget* window = m_desktop.windowAt(m_position);
    return window ? window->windowHandle() : nullptr;
}

/// Where nothing is shown the platform keeps a cursor of its own, which widgets ask for. Placing it makes move events
/// by a guess of what lies on top; those are held back, the hand's own follow. As a move to where the cursor is already
/// is dropped on its way, the last event held back is of a place beside it.
void Hand::placeCursor(const QPoint& global) {
    if (QGuiApplication::platformName() != QLatin1String("offscreen"))
        return;
    m_placing = true;
    QCursor::setPos(global);
    QCoreApplication::processEvents();
    if (QWindow* window = under())
        qt_handleMouseEvent(window, {}, global + QPoint(1, 0), m_pressed ? Qt::LeftButton : Qt::NoButton, Qt::NoButton,
                            QEvent::MouseMove, Qt::NoModifier, ++m_time);
    m_placing = false;
}

bool Hand::eventFilter(QObject* object, QEvent* event) {
    if (!m_placing || !object->isWindowType())
        return false;
    const auto type = event->type();
    return type == QEvent::MouseMove || type == QEvent::Enter || type == QEvent::Leave;
}

void Hand::cross(QWindow* target) {
    if (target == m_window)
        return;
    if (m_window) {
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(m_window, &leave);
    }
    m_window = target;
    if (!target)
        return;
    const QPointF local = target->mapFromGlobal(m_position);
    QEnterEvent enter(local, local, m_position);
    QCoreApplication::sendEvent(target, &enter);
}

void Hand::moveTo(const QPoint& global) {
    m_position = global;
    placeCursor(global);
    if (!m_pressed) // a pressed button keeps the mouse with its window
        cross(under());
    if (!m_window)
        return;
    // Handed to the window itself: the platform, whose cursor is there already, would drop a move to the same place.
    QMouseEvent move(QEvent::MouseMove, m_window->mapFromGlobal(global), m_window->mapFromGlobal(global), global,
                     Qt::NoButton, m_pressed ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
    move.setTimestamp(++m_time);
    QCoreApplication::sendEvent(m_window, &move);
}

void Hand::press() {
    settle();
    m_time += kBetweenClicks;
    if (m_window && m_window != QGuiApplication::focusWindow() && !(m_window->flags() & Qt::WindowDoesNotAcceptFocus) &&
        m_window->type() != Qt::Popup)
        m_window->requestActivate(); // the window manager gives the keyboard to the window that was clicked
    button(true);
}

void Hand::release() {
    ++m_time;
    button(false);
    settle();
}

void Hand::button(bool down) {
    m_pressed = down;
    if (!m_window)
        return;
    qt_handleMouseEvent(m_window, m_window->mapFromGlobal(m_position), m_position, down ? Qt::LeftButton : Qt::NoButton,
                        Qt::LeftButton, down ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease, Qt::NoModifier,
                        m_time);
}

void Hand::key(const QKeySequence& sequence) {
    QWindow* target = QGuiApplication::focusWindow();
    if (!target && !m_desktop.windows().empty())
        target = m_desktop.windows().back()->windowHandle();
    if (!target || sequence.isEmpty())
        return;
    const int code = sequence[0];
    const int key = code & ~int(Qt::KeyboardModifierMask);
    const Qt::KeyboardModifiers modifiers(code & int(Qt::KeyboardModifierMask));
    const QString text = textOf(key, modifiers);
    const QPointer<QWindow> guard = target;
    qt_handleKeyEvent(target, QEvent::KeyPress, key, modifiers, text, false, 1);
    if (guard)
        qt_handleKeyEvent(target, QEvent::KeyRelease, key, modifiers, text, false, 1);
}

void Hand::settle() {
    if (m_position.x() >= 0 && !m_pressed)
        cross(under());
}

} // namespace merix::app
