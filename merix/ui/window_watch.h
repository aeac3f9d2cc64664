// SPDX-License-Identifier: MIT
// What windows of modules are told that does not come to them by itself: that a press will see no release, and Esc.
#pragma once

#include "host/ui/dialog.h"

#include <QPointer>

#include <set>

namespace merix::ui {

/// Watches the events of the whole program while there are windows of modules. Main thread only, but for post().
class WindowWatch : public QObject {
public:
    static WindowWatch& instance();

    void add(CWnd& window);
    void remove(CWnd& window);
    /// Delivers an event to the window if it is still there; takes the event over. Any thread.
    static bool post(CWnd* window, QEvent* event);

    /// The left button went down in the window; it is up again.
    void pressed(CWnd& window);
    void released();
    /// The press under way, if there is one, ends here for its window: its drawing is about to be put away.
    void endPress();

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    bool isPressLost(const QObject* object, const QEvent& event) const;
    bool offerEscape();

    QPointer<CWnd> m_pressed;
};

} // namespace merix::ui
