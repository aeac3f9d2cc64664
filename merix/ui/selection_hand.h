// SPDX-License-Identifier: MIT
// What the left button does in the drawing while nothing is asked: it selects by click and by box, and drags grips.
#pragma once

#include "merix/ed/command_stack.h"
#include "merix/ui/grip_drag.h"
#include "merix/ui/grips.h"

#include <QObject>
#include <QPointF>

#include <memory>
#include <optional>

class QPainter;

namespace merix::ui {

class DrawingView;

/// How far the button must travel, held, to have dragged: pixels of the widget.
constexpr double kDragDistance = 4.0;

/// The box between two clicks, or under a held button, in the widget's coordinates.
struct SelectionBox {
    QPointF from, to;
    /// From right to left: what the box touches is meant. Else only what it holds whole.
    bool isCrossing() const { return to.x() < from.x(); }
};

void paintSelectionBox(QPainter& painter, const SelectionBox& box);

class SelectionHand : public QObject, private ed::LineTaker {
    Q_OBJECT
public:
    explicit SelectionHand(DrawingView& view);
    ~SelectionHand() override;

    /// Points are in the view's widget coordinates.
    void press(const QPointF& at, Qt::KeyboardModifiers modifiers);
    void move(const QPointF& at);
    void release(const QPointF& at, Qt::KeyboardModifiers modifiers);
    /// Gives up the box or drag under way; without one clears the selection.
    void escape();
    /// Gives up what is under way.
    void abandon();

    bool isDragging() const { return m_drag != nullptr; }
    /// The drag under way; null without one.
    const GripDrag* drag() const { return m_drag.get(); }
    /// Something follows the cursor all over the view.
    bool isUnderWay() const { return m_drag || m_boxFrom; }
    /// Where a hand that drags means to be: on a snap point, on a grip it is near to, straight from where it began.
    MxGePoint3d snapped(const QPointF& at) const;

    /// The grips are not what the drawing and the selection are any more.
    void invalidate() { m_stale = true; }
    void paint(QPainter& painter);

private:
    /// While grips are dragged: the drag's answers.
    bool take(const QString& line) override;
    const Grips& grips() const;
    double reach() const;
    void pressGrip(const Grip& grip, const QPointF& at, Qt::KeyboardModifiers modifiers);
    void beginDrag(const MxGePoint3d& base);
    std::unique_ptr<GripDrag> endDrag();
    /// The hand lets go at, or clicks on, the place.
    void putDrag(const QPointF& at);
    void finishDrag();
    void finishBox(const QPointF& to, Qt::KeyboardModifiers modifiers);
    void select(const std::vector<MxDbObjectId>& ids, bool remove);

    DrawingView& m_view;
    mutable Grips m_grips;
    mutable bool m_stale = true;
    std::unique_ptr<GripDrag> m_drag;
    std::optional<QPointF> m_boxFrom, m_pressedAt;
    QPointF m_at;
};

} // namespace merix::ui
