// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object_id.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <vector>

class QWidget;
struct MxGePoint3d;

namespace merix::ui {

class DrawingView;

/// Tells the input-point monitors of a view's drawing what lies under the cursor, and that nothing does once it is
/// away, however fast it went. A cursor that stands on a window which a module keeps over the view is not away: the
/// window would go under the hand.
class Hover : public QObject {
    Q_OBJECT
public:
    explicit Hover(DrawingView& view);

    /// One look for all the moves that come at once.
    void lookSoon() { m_timer.start(0); }
    /// The monitors are told now that nothing lies under the cursor: another drawing or view takes over.
    void leaveNow();
    /// The cursor stands on a module's window that leaves it to the view.
    void cover(QWidget& window);
    bool isCovered() const { return m_cover; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void look();
    void uncover();
    /// A module's window over the view has the cursor.
    bool isOnModulesWindow() const;
    void tell(const MxGePoint3d& point, std::vector<MxDbObjectId> picked);

    DrawingView& m_view;
    QPointer<QWidget> m_cover;
    QTimer m_timer;
};

} // namespace merix::ui
