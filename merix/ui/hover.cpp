// SPDX-License-Identifier: MIT
#include "merix/ui/hover.h"

#include "host/ui/dialog.h"
#include "merix/ui/drawing_view.h"

#include <QApplication>

#include <algorithm>
#include <utility>

namespace merix::ui {

Hover::Hover(DrawingView& view)
    : m_view(view) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Hover::look);
    qApp->installEventFilter(this); // popups and module windows are nobody's here
}

void Hover::look() {
    if (!m_view.isActive() || m_view.m_panning)
        return;
    const bool isOn = isOnModulesWindow();
    if (isOn && QGuiApplication::mouseButtons() != Qt::NoButton)
        return; // the hand holds it
    const bool isSeen = m_view.isVisible() && !m_view.window()->isMinimized() && !QApplication::activePopupWidget();
    if (isSeen && m_view.m_cursor) {
        const MxGePoint3d point = m_view.toWorld(*m_view.m_cursor);
        std::vector<MxDbObjectId> picked = m_view.under(point);
        std::reverse(picked.begin(), picked.end()); // monitors are told of the topmost last
        tell(point, std::move(picked));
    } else if (!isSeen || !isOn) {
        tell({}, {});
    }
}

void Hover::leaveNow() {
    m_timer.stop();
    if (m_view.isActive())
        tell({}, {});
}

void Hover::tell(const MxGePoint3d& point, std::vector<MxDbObjectId> picked) {
    MxEdInputPoint input;
    input.pointComputed = true;
    input.rawPoint = point;
    input.pickedEntities = std::move(picked);
    m_view.document()->inputPointManager()->notify(input);
}

bool Hover::isOnModulesWindow() const {
    const QObjectList& siblings = m_view.window()->children();
    return std::any_of(siblings.begin(), siblings.end(), [this](QObject* child) {
        const auto* window = dynamic_cast<const CWnd*>(child);
        return window && !window->isWindow() && window->isVisible() && window->underMouse() &&
               window->geometry().intersects({m_view.mapTo(m_view.window(), QPoint()), m_view.size()});
    });
}

void Hover::cover(QWidget& window) {
    if (m_cover != &window)
        m_timer.stop(); // the cursor did not go away
    if (m_cover && m_cover != &window)
        disconnect(m_cover, &QObject::destroyed, this, &Hover::uncover);
    m_cover = &window;
    connect(&window, &QObject::destroyed, this, &Hover::uncover, Qt::UniqueConnection);
}

void Hover::uncover() {
    m_cover.clear();
    if (m_view.underMouse())
        return;
    m_view.moveCursor({});
    lookSoon();
}

bool Hover::eventFilter(QObject* watched, QEvent* event) {
    if ((event->type() == QEvent::Leave || event->type() == QEvent::Hide) && m_cover && watched == m_cover) {
        uncover();
    } else if (event->type() == QEvent::Show) {
        const auto* window = qobject_cast<const QWidget*>(watched);
        if (window && window->windowType() == Qt::Popup)
            lookSoon(); // the cursor is the popup's
    }
    return false;
}

} // namespace merix::ui
