// SPDX-License-Identifier: MIT
// A hand on mouse and keyboard that nobody holds: events enter Qt where the platform's own do, at the window under the
// cursor, so grabs, popups, modality and enter and leave work as under a real hand.
#pragma once

#include "merix/app/desktop.h"

#include <QKeySequence>
#include <QWindow>

namespace merix::app {

class Hand : public QObject {
    Q_OBJECT
public:
    explicit Hand(const Desktop& desktop);

    /// Screen coordinates.
    void moveTo(const QPoint& global);
    /// The left button, where the cursor is.
    void press();
    void release();
    /// Presses and releases one key with its modifiers, in the window that has the keyboard.
    void key(const QKeySequence& key);
    /// A window came or went under the cursor: it is entered, the other left, as the window system would tell.
    void settle();

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void placeCursor(const QPoint& global);
    void cross(QWindow* target);
    void button(bool down);
    QWindow* under() const;

    const Desktop& m_desktop;
    QPoint m_position{-1, -1};
    QPointer<QWindow> m_window; ///< that the cursor has entered
    bool m_pressed = false;
    bool m_placing = false;
    int m_time = 0; ///< milliseconds, so that no two presses are a double click
};

} // namespace merix::app
