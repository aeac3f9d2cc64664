// SPDX-License-Identifier: MIT
#include "merix/ui/selection_hand.h"

#include "merix/ed/selection.h"
#include "merix/ui/drawing_view.h"
#include "merix/ui/look.h"

#include <QPainter>

namespace merix::ui {

namespace {

constexpr double kGripHalf = 4.5;  ///< half the side of a grip's square, pixels of the widget
constexpr double kGripReach = 6.0; ///< the hand need not hit it exactly

double distance(const QPointF& a, const QPointF& b) {
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

} // namespace

void paintSelectionBox(QPainter& painter, const SelectionBox& box) {
    const QColor color = box.isCrossing() ? kCrossingBox : kWindowBox;
    QColor area = color;
    area.setAlpha(40);
    const QRectF rect = QRectF(box.from, box.to).normalized();
    const QPointF corner(std::floor(rect.left()) + 0.5, std::floor(rect.top()) + 0.5);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(color, 1, box.isCrossing() ? Qt::DashLine : Qt::SolidLine));
    painter.setBrush(area);
    painter.drawRect(QRectF(corner, rect.size()));
    painter.setBrush(Qt::NoBrush);
}

SelectionHand::SelectionHand(DrawingView& view)
    : m_view(view) {
    connect(&ed::Selection::instance(), &ed::Selection::changed, this, [this] {
        if (m_drag && !m_drag->isSelected()) // what is erased is not selected either
            abandon();
    });
}

SelectionHand::~SelectionHand() {
    endDrag();
}

const Grips& SelectionHand::grips() const {
    if (std::exchange(m_stale, false))
        m_grips.gather(ed::Selection::instance().ids());
    return m_grips;
}

double SelectionHand::reach() const {
    return kGripReach * m_view.devicePixelRatioF() * m_view.transform().unitsPerPixel;
}

MxGePoint3d SelectionHand::snapped(const QPointF& at) const {
    if (const auto snap = m_view.snapAt(at))
        return snap->point;
    const Grip* grip = grips().at(m_view.toWorld(at), reach());
    return grip ? grip->point : m_view.aimedAt(at);
}

// ---------------------------------------------------------------- the button

void SelectionHand::press(const QPointF& at, Qt::KeyboardModifiers modifiers) {
    m_at = at;
    if (m_drag) // the second of two clicks
        return putDrag(at);
    if (m_boxFrom)
        return finishBox(at, modifiers);
    m_pressedAt = at;
    if (const Grip* grip = grips().at(m_view.toWorld(at), reach()))
        return pressGrip(*grip, at, modifiers);
    const MxDbObjectId id = m_view.pick(m_view.toWorld(at));
    if (id.isNull())
        m_boxFrom = at;
    else
        select({id}, modifiers & Qt::ShiftModifier && ed::Selection::instance().contains(id));
}

void SelectionHand::pressGrip(const Grip& grip, const QPointF&, Qt::KeyboardModifiers modifiers) {
    const MxGePoint3d point = grip.point;
    const bool wasHot = m_grips.isHot(point);
    if (modifiers & Qt::ShiftModifier) {
        m_grips.setHot(point, !wasHot);
    } else {
        if (!wasHot)
            m_grips.coolDown();
        m_grips.setHot(point, true);
        if (GripDrag::mayBegin(m_grips.hot()))
            beginDrag(point);
        else
            m_grips.coolDown();
    }
    m_view.repaintMarks();
}

void SelectionHand::beginDrag(const MxGePoint3d& base) {
    m_drag = std::make_unique<GripDrag>(*m_view.document(), m_grips.hot(), base);
    ed::CommandStack::instance().setLineTaker(this);
}

std::unique_ptr<GripDrag> SelectionHand::endDrag() {
    auto& stack = ed::CommandStack::instance();
    if (stack.lineTaker() == this)
        stack.setLineTaker(nullptr);
    return std::move(m_drag);
}

bool SelectionHand::take(const QString& line) {
    const QString typed = line.trimmed(), asked = ed::Console::instance().prompt();
    const auto answer = m_drag->answer(typed);
    if (answer == GripDrag::Answer::kNone)
        return false;
    ed::Console::instance().print(QLatin1Char('\n') + asked + typed);
    if (answer == GripDrag::Answer::kGiven)
        finishDrag();
    m_view.repaintMarks();
    return true;
}

void SelectionHand::move(const QPointF& at) {
    m_at = at;
    if (m_drag && (!m_pressedAt || distance(*m_pressedAt, at) > kDragDistance))
        m_drag->moveTo(snapped(at));
}

void SelectionHand::release(const QPointF& at, Qt::KeyboardModifiers modifiers) {
    m_at = at;
    const bool dragged = m_pressedAt && distance(*m_pressedAt, at) > kDragDistance;
    m_pressedAt.reset();
    if (!dragged)
        return; // a click: what it began waits for the next
    if (m_drag)
        putDrag(at);
    else if (m_boxFrom)
        finishBox(at, modifiers);
}

void SelectionHand::putDrag(const QPointF& at) {
    if (m_drag->put(snapped(at)))
        finishDrag();
    m_view.repaintMarks();
}

void SelectionHand::finishDrag() {
    const std::unique_ptr<GripDrag> drag = endDrag();
    m_pressedAt.reset();
    drag->finish();
    m_grips.coolDown();
    m_stale = true;
    m_view.repaintMarks();
}

void SelectionHand::finishBox(const QPointF& to, Qt::KeyboardModifiers modifiers) {
    const SelectionBox box{*m_boxFrom, to};
    m_boxFrom.reset();
    m_pressedAt.reset();
    MxDbExtents area;
    area.addPoint(m_view.toWorld(box.from));
    area.addPoint(m_view.toWorld(box.to));
    select(m_view.inBox(area, box.isCrossing()), modifiers & Qt::ShiftModifier);
    m_view.repaintMarks();
}

void SelectionHand::select(const std::vector<MxDbObjectId>& ids, bool remove) {
    auto& selection = ed::Selection::instance();
    if (remove)
        selection.remove(ids);
    else
        selection.add(ids);
}

void SelectionHand::escape() {
    if (isUnderWay())
        return abandon();
    m_grips.coolDown();
    ed::Selection::instance().clear();
    m_view.repaintMarks();
}

void SelectionHand::abandon() {
    m_boxFrom.reset();
    m_pressedAt.reset();
    endDrag();
    m_grips.coolDown();
    m_view.repaintMarks();
}

// ---------------------------------------------------------------- painting

void SelectionHand::paint(QPainter& painter) {
    if (ed::CommandStack::instance().isRunning())
        return;
    painter.save();
    if (m_drag) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(kRubberBand, 1, Qt::DashLine));
        painter.drawLine(m_view.toWidget(m_drag->base()), m_view.toWidget(m_drag->at()));
        painter.save();
        painter.scale(1.0 / m_view.devicePixelRatioF(), 1.0 / m_view.devicePixelRatioF());
        m_drag->paint(painter, m_view.transform(), m_view.paintOptions());
        painter.restore();
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    const Grip* under = grips().at(m_view.toWorld(m_at), reach());
    const QRectF visible = QRectF(m_view.rect()).adjusted(-kGripHalf, -kGripHalf, kGripHalf, kGripHalf);
    for (const Grip& grip : grips().all()) {
        const QPointF p = m_view.toWidget(grip.point);
        if (!visible.contains(p))
            continue;
        const bool hovered = under && under->point == grip.point;
        painter.setPen(QPen(kGripEdge, 1));
        painter.setBrush(grip.hot ? kHotGrip : hovered ? kHoveredGrip : kGrip);
        painter.drawRect(QRectF(std::floor(p.x() - kGripHalf) + 0.5, std::floor(p.y() - kGripHalf) + 0.5, 2 * kGripHalf,
                                2 * kGripHalf));
    }
    painter.restore();
    if (m_boxFrom)
        paintSelectionBox(painter, {*m_boxFrom, m_at});
}

} // namespace merix::ui
