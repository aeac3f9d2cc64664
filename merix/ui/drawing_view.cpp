// SPDX-License-Identifier: MIT
#include "merix/ui/drawing_view.h"

#include "merix/ed/command_stack.h"
#include "merix/ed/editor.h"
#include "merix/ed/input_points.h"
#include "merix/ed/prompter.h"
#include "merix/ed/selection.h"
#include "merix/ui/fit_scene.h"
#include "merix/ui/look.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace merix::ui {

namespace {

constexpr double kPickBox = 5.0;    ///< half the side of the pick box, pixels of the widget
constexpr double kSnapReach = 10.0; ///< of a snap point, pixels of the widget
constexpr double kHaloWidth = 2.5;  ///< to each side of a selected stroke, pixels of the widget
constexpr double kCrossArm = 32.0;  ///< from the middle to the cross hair's ends
constexpr double kWheelStep = 1.2;  ///< zoom of one notch of the wheel
constexpr double kNotch = 120.0;    ///< angle units of one notch, by Qt

} // namespace

DrawingView::DrawingView(QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("drawingView"));
    setAccessibleName(tr("Drawing"));
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::BlankCursor);
    setMinimumSize(120, 90);
    connect(&ed::Prompter::instance(), &ed::Prompter::changed, this, &DrawingView::promptChanged);
    connect(&ed::Selection::instance(), &ed::Selection::changed, this, &DrawingView::repaintMarks);
}

void DrawingView::promptChanged() {
    if (!isActive())
        return;
    const ed::Prompter& prompter = ed::Prompter::instance();
    if (prompter.isWaiting() || ed::CommandStack::instance().isRunning())
        abandon(); // the hand is the command's now
    if (prompter.isWaiting()) {
        m_boxSelects = prompter.isCornerWanted() && m_lastWanted == ed::Prompter::Wants::kPick;
        m_lastWanted = prompter.wants();
    }
    QWidget::update();
}

DrawingView::~DrawingView() {
    if (ed::activeView() == this)
        ed::setActiveView(nullptr);
}

// ---------------------------------------------------------------- what is shown

void DrawingView::setDocument(ap::Document* document) {
    if (m_document == document)
        return;
    if (m_document) {
        m_layoutViews[{m_document, m_space}] = m_document->view();
        m_document->disconnect(this);
    }
    m_hand.abandon();
    m_hover.leaveNow();
    if (isActive())
        ed::setActiveView(nullptr);
    m_document = document;
    if (document) {
        m_space = space();
        if (!m_highlights[document])
            keep(document, std::make_unique<Highlights>(*document->database()));
        connect(document, &ap::Document::graphicsChanged, this, &DrawingView::update);
        connect(document, &ap::Document::layoutChanged, this, &DrawingView::layoutChanged);
        setUpTransform(document->view());
    }
    setCursor(document ? Qt::BlankCursor : Qt::ArrowCursor);
    update();
}

void DrawingView::becomeActive() {
    if (!m_document || isActive())
        return;
    if (auto* before = dynamic_cast<DrawingView*>(ed::activeView())) {
        before->m_hand.abandon();
        before->m_hover.leaveNow();
        before->repaintMarks();
    }
    ed::setActiveView(this);
    repaintMarks();
    ed::Editor::instance().notifyViewChanged();
}

void DrawingView::keep(ap::Document* document, std::unique_ptr<Highlights> highlights) {
    connect(highlights.get(), &Highlights::changed, this, &DrawingView::repaintMarks);
    m_highlights[document] = std::move(highlights);
}

void DrawingView::forget(ap::Document* document) {
    if (m_document == document)
        setDocument(nullptr);
    std::erase_if(m_layoutViews, [&](const auto& entry) { return entry.first.first == document; });
    m_scenes.erase(document);
    m_highlights.erase(document);
}

void DrawingView::takeOver(DrawingView& other, ap::Document* document) {
    for (const auto& [place, view] : other.m_layoutViews)
        if (place.first == document)
            m_layoutViews[place] = view;
    if (auto scene = other.m_scenes.extract(document))
        m_scenes.insert(std::move(scene));
    if (auto highlights = other.m_highlights.extract(document)) {
        highlights.mapped()->disconnect(&other);
        keep(document, std::move(highlights.mapped()));
    }
    other.forget(document);
}

void DrawingView::setUpTransform(ge::ViewTransform& view) {
    const bool isNew = view.width <= 0;
    sizeTransform(view);
    if (isNew)
        view = firstView(*m_document->database(), scene(), space(), view);
}

void DrawingView::sizeTransform(ge::ViewTransform& view) const {
    view.pixelRatio = devicePixelRatioF();
    view.width = width() * view.pixelRatio;
    view.height = height() * view.pixelRatio;
}

void DrawingView::layoutChanged() {
    if (!m_document || m_space == space())
        return;
    m_hand.abandon();
    m_hover.leaveNow();
    if (isActive())
        ed::Selection::instance().clear();
    m_layoutViews[{m_document, m_space}] = m_document->view();
    m_space = space();
    const auto known = m_layoutViews.find({m_document, m_space});
    m_document->view() = known == m_layoutViews.end() ? ge::ViewTransform() : known->second;
    setUpTransform(m_document->view());
    update();
    if (isActive())
        ed::Editor::instance().notifyViewChanged();
}

gi::Scene& DrawingView::scene() {
    auto& scene = m_scenes[m_document];
    if (!scene)
        scene = std::make_unique<gi::Scene>(*m_document->database());
    return *scene;
}

MxDbObjectId DrawingView::space() const {
    return m_document->database()->currentSpaceId();
}

const ge::ViewTransform& DrawingView::transform() const {
    return m_document ? m_document->view() : m_none;
}

void DrawingView::setTransform(const ge::ViewTransform& transform) {
    if (!m_document || m_document->view() == transform)
        return;
    m_document->view() = transform;
    update();
    if (isActive())
        ed::Editor::instance().notifyViewChanged(); // else when it becomes active
    if (m_cursor) {
        Q_EMIT cursorMoved(toWorld(*m_cursor));
        m_hover.lookSoon();
    }
}

std::optional<ge::ViewTransform> DrawingView::showingAll() {
    if (!m_document)
        return {};
    return ui::showingAll(*m_document->database(), scene(), space(), transform());
}

double DrawingView::aperture() const {
    return kPickBox * devicePixelRatioF() * transform().unitsPerPixel;
}

std::vector<MxDbObjectId> DrawingView::under(const MxGePoint3d& world) {
    return m_document ? scene().pick(space(), world, aperture()) : std::vector<MxDbObjectId>();
}

std::vector<MxDbObjectId> DrawingView::inBox(const MxDbExtents& box, bool crossing) {
    return m_document ? scene().inBox(space(), box, crossing) : std::vector<MxDbObjectId>();
}

void DrawingView::zoomExtents() {
    if (!m_document)
        return;
    ge::ViewTransform sheet = transform();
    sheet.fit(kEmptySheet);
    setTransform(showingAll().value_or(sheet));
}

void DrawingView::selectAll() {
    if (!m_document)
        return;
    const MadeFor graphics(*m_document->database(), transform());
    const MxDbExtents all = scene().extents(space());
    if (!all.isEmpty())
        ed::Selection::instance().set(inBox(all, false));
}

void DrawingView::escape() {
    m_hand.escape();
}

void DrawingView::abandon() {
    if (m_hand.isUnderWay())
        m_hand.abandon();
}

void DrawingView::regenerate() {
    m_scenes.erase(m_document);
    update();
}

void DrawingView::update() {
    m_stale = true;
    repaintMarks();
}

void DrawingView::repaintMarks() {
    m_marksStale = true;
    m_hand.invalidate();
    QWidget::update();
}

void DrawingView::drawEntity(MxDbObjectId id, bool draw) {
    if (!m_document || id.database() != m_document->database())
        return;
    scene().setDrawn(id, draw);
    update();
}

void DrawingView::repairNow() {
    if (m_stale && isVisible())
        repaint();
}

QPointF DrawingView::toWidget(const MxGePoint3d& world) const {
    const MxGePoint2d pixel = transform().toPixel(world);
    return QPointF(pixel.x, pixel.y) / devicePixelRatioF();
}

MxGePoint3d DrawingView::toWorld(const QPointF& position) const {
    const double ratio = devicePixelRatioF();
    return transform().toWorld(position.x() * ratio, position.y() * ratio);
}

// ---------------------------------------------------------------- painting

void DrawingView::paintEvent(QPaintEvent* event) {
    if (m_stale)
        paintPicture();
    QPainter painter(this);
    painter.setClipRegion(event->region());
    painter.drawPixmap(0, 0, m_picture);
    if (m_marksStale)
        paintMarks();
    if (!m_marks.isNull())
        painter.drawPixmap(0, 0, m_marks);
    if (m_document) {
        if (isActive())
            m_hand.paint(painter);
        paintCursor(painter);
    } else
        paintHint(painter);
}

void DrawingView::paintPicture() {
    const double ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * ratio).toSize();
    if (m_picture.size() != pixels)
        m_picture = QPixmap(pixels);
    m_picture.setDevicePixelRatio(1.0); // the scene is painted in physical pixels
    m_picture.fill(kCanvas);
    m_stale = false; // before painting: what changes meanwhile is painted next time
    if (m_document) {
        const MadeFor graphics(*m_document->database(), transform());
        QPainter painter(&m_picture);
        scene().paint(painter, m_document->view(), space(), paintOptions());
    }
    m_picture.setDevicePixelRatio(ratio);
}

gi::PaintOptions DrawingView::paintOptions() const {
    gi::PaintOptions options;
    options.background = kCanvas;
    options.pixelRatio = devicePixelRatioF();
    return options;
}

/// A halo around everything that is selected or highlighted, itself drawn over it again.
void DrawingView::paintMarks() {
    m_marksStale = false;
    std::vector<MxDbObjectId> ids;
    if (isActive()) // the selection is of the active drawing
        ids = ed::Selection::instance().ids();
    if (m_document)
        for (const MxDbObjectId id : m_highlights.at(m_document)->ids())
            if (!ed::Selection::instance().contains(id))
                ids.push_back(id);
    if (!m_document || ids.empty()) {
        m_marks = QPixmap();
        return;
    }
    const MadeFor graphics(*m_document->database(), transform());
    gi::PaintOptions options = paintOptions();
    QPixmap halo(m_picture.size());
    halo.fill(Qt::transparent);
    {
        QPainter painter(&halo);
        gi::PaintOptions wide = options;
        wide.halo = kHalo;
        wide.haloWidth = kHaloWidth * options.pixelRatio;
        scene().paintOnly(painter, m_document->view(), space(), ids, wide);
    }
    m_marks = QPixmap(m_picture.size());
    m_marks.fill(Qt::transparent);
    QPainter painter(&m_marks);
    painter.setOpacity(kHaloOpacity); // at once: where strokes of a halo meet it is no denser
    painter.drawPixmap(0, 0, halo);
    painter.setOpacity(1.0);
    scene().paintOnly(painter, m_document->view(), space(), ids, options);
    painter.end();
    m_marks.setDevicePixelRatio(options.pixelRatio);
}

void DrawingView::paintHint(QPainter& painter) const {
    painter.setPen(kCanvasText);
    painter.drawText(
        rect(), Qt::AlignCenter,
        tr("No drawing is open.\n\nCtrl+O opens one, Ctrl+N begins one;\nfiles can also be dropped here."));
}

void DrawingView::paintCursor(QPainter& painter) const {
    if (!m_cursor || m_panning)
        return;
    const ed::Prompter& prompter = ed::Prompter::instance();
    const bool wantsPoint = isActive() && prompter.isPointTaken() && prompter.wants() != ed::Prompter::Wants::kPick;
    const QPointF c(std::floor(m_cursor->x()) + 0.5, std::floor(m_cursor->y()) + 0.5);
    if (wantsPoint && prompter.base())
        paintRubberBand(painter, c);
    if (m_snap)
        paintSnap(painter, m_snap->mode, toWidget(m_snap->point));
    painter.setPen(QPen(kCrossHair, 1));
    // With a point asked for the cross runs through; else it leaves the pick box open.
    const double gap = wantsPoint ? 0.0 : kPickBox;
    painter.drawLine(QLineF(c.x() - kCrossArm, c.y(), c.x() - gap, c.y()));
    painter.drawLine(QLineF(c.x() + gap, c.y(), c.x() + kCrossArm, c.y()));
    painter.drawLine(QLineF(c.x(), c.y() - kCrossArm, c.x(), c.y() - gap));
    painter.drawLine(QLineF(c.x(), c.y() + gap, c.x(), c.y() + kCrossArm));
    if (!wantsPoint)
        painter.drawRect(QRectF(c.x() - kPickBox, c.y() - kPickBox, 2 * kPickBox, 2 * kPickBox));
}

void DrawingView::paintRubberBand(QPainter& painter, const QPointF& cursor) const {
    const ed::Prompter& prompter = ed::Prompter::instance();
    const QPointF base = toWidget(*prompter.base());
    if (m_boxSelects && prompter.isCornerWanted())
        return paintSelectionBox(painter, {base, cursor});
    QPointF end = cursor;
    if (m_snap)
        end = toWidget(m_snap->point);
    else if (m_ortho && !prompter.isCornerWanted())
        end = toWidget(squared(*prompter.base(), toWorld(cursor)));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kRubberBand, 1, Qt::DashLine));
    if (prompter.isCornerWanted())
        painter.drawRect(QRectF(base, end).normalized());
    else
        painter.drawLine(base, end);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

QRegion DrawingView::cursorRegion() const {
    if (!m_cursor)
        return {};
    if (ed::Prompter::instance().base() || m_hand.isUnderWay() || m_snap)
        return rect(); // the rubber band
    const int reach = static_cast<int>(kCrossArm) + 2;
    const QPoint c = m_cursor->toPoint();
    return QRect(c.x() - reach, c.y() - reach, 2 * reach + 1, 2 * reach + 1);
}

void DrawingView::setSnapping(bool on) {
    m_snapping = on;
    m_snap.reset();
    QWidget::update();
}

void DrawingView::setOrtho(bool on) {
    m_ortho = on;
    QWidget::update();
}

std::optional<MxGePoint3d> DrawingView::aimBase() const {
    return m_hand.isDragging() ? m_hand.drag()->base() : ed::Prompter::instance().base();
}

std::optional<SnapPoint> DrawingView::snapAt(const QPointF& position) {
    const bool isAsked = !m_boxSelects && ed::Prompter::instance().wants() == ed::Prompter::Wants::kPoint;
    if (!m_snapping || !isActive() || !(isAsked || m_hand.isDragging()))
        return {};
    const MxGePoint3d world = toWorld(position);
    const double reach = kSnapReach * devicePixelRatioF() * transform().unitsPerPixel;
    std::vector<MxDbObjectId> near = scene().pick(space(), world, reach);
    if (m_hand.isDragging())
        std::erase_if(near, [this](MxDbObjectId id) { return m_hand.drag()->moves(id); });
    return findSnap(near, world, aimBase().value_or(world), reach);
}

MxGePoint3d DrawingView::aimedAt(const QPointF& position) {
    if (const auto snap = snapAt(position))
        return snap->point;
    const ed::Prompter& prompter = ed::Prompter::instance();
    const MxGePoint3d world = toWorld(position);
    const bool isAsked =
        prompter.wants() == ed::Prompter::Wants::kPoint && prompter.base() && !prompter.isCornerWanted();
    const bool isDragged = m_hand.isDragging() && !m_hand.drag()->isBaseAsked();
    return m_ortho && (isAsked || isDragged) ? squared(*aimBase(), world) : world;
}

void DrawingView::moveCursor(std::optional<QPointF> position) {
    const QRegion before = cursorRegion();
    m_cursor = position;
    m_snap = position ? snapAt(*position) : std::nullopt;
    QWidget::update(before | cursorRegion());
    if (m_cursor)
        Q_EMIT cursorMoved(toWorld(*m_cursor));
    else
        Q_EMIT cursorLeft();
}

void DrawingView::resizeEvent(QResizeEvent*) {
    m_stale = true;
    if (!m_document)
        return;
    ge::ViewTransform view = m_document->view();
    sizeTransform(view);
    setTransform(view);
}

// ---------------------------------------------------------------- input

void DrawingView::wheelEvent(QWheelEvent* event) {
    if (!m_document)
        return;
    const double ratio = devicePixelRatioF();
    ge::ViewTransform view = transform();
    view.zoomAbout(event->position().x() * ratio, event->position().y() * ratio,
                   std::pow(kWheelStep, event->angleDelta().y() / kNotch));
    moveCursor(event->position());
    setTransform(view);
    event->accept();
}

void DrawingView::mousePressEvent(QMouseEvent* event) {
    if (!m_document)
        return;
    if (!isActive()) {
        Q_EMIT activationWanted();
    } else if (event->button() == Qt::MiddleButton) {
        m_panning = true;
        m_panFrom = event->localPos();
        setCursor(Qt::ClosedHandCursor);
        QWidget::update();
    } else if (event->button() == Qt::LeftButton) {
        leftPress(event);
    } else if (event->button() == Qt::RightButton && (ed::Prompter::instance().isWaiting() || m_hand.isDragging())) {
        ed::Prompter::instance().submitLine(QString());
    }
}

void DrawingView::leftPress(QMouseEvent* event) {
    moveCursor(event->localPos());
    if (ed::Prompter::instance().isWaiting()) {
        m_answeredAt = event->localPos();
        const MxGePoint3d point = aimedAt(event->localPos());
        m_snap.reset();
        ed::Prompter::instance().submitPoint(point, event->modifiers() & Qt::ShiftModifier);
    } else if (!ed::CommandStack::instance().isRunning()) {
        m_hand.press(event->localPos(), event->modifiers());
        QWidget::update();
    }
}

void DrawingView::leftRelease(QMouseEvent* event) {
    const std::optional<QPointF> answeredAt = std::exchange(m_answeredAt, std::nullopt);
    moveCursor(event->localPos());
    if (!answeredAt)
        m_hand.release(event->localPos(), event->modifiers());
    else if (ed::Prompter::instance().isCornerWanted() &&
             QLineF(*answeredAt, event->localPos()).length() > kDragDistance)
        ed::Prompter::instance().submitPoint(aimedAt(event->localPos()), // the corner was dragged open
                                             event->modifiers() & Qt::ShiftModifier);
    m_hover.lookSoon();
}

void DrawingView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_document)
        return;
    if (m_panning && !(event->buttons() & Qt::MiddleButton))
        endPan(); // the window under which it began went and took the release with it
    if (m_panning) {
        const QPointF step = (event->localPos() - m_panFrom) * devicePixelRatioF();
        m_panFrom = event->localPos();
        m_cursor = event->localPos();
        ge::ViewTransform view = transform();
        view.center.x -= step.x() * view.unitsPerPixel;
        view.center.y += step.y() * view.unitsPerPixel;
        setTransform(view);
        return;
    }
    m_hand.move(event->localPos());
    moveCursor(event->localPos());
    if (event->buttons() == Qt::NoButton && !m_hand.isDragging() && !m_hover.isCovered())
        m_hover.lookSoon();
}

void DrawingView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && isActive())
        leftRelease(event);
    if (event->button() != Qt::MiddleButton || !m_panning)
        return;
    endPan();
    moveCursor(event->localPos());
    m_hover.lookSoon();
}

void DrawingView::endPan() {
    m_panning = false;
    setCursor(Qt::BlankCursor);
}

void DrawingView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::MiddleButton)
        zoomExtents();
    else
        mousePressEvent(event);
}

void DrawingView::enterEvent(QEvent*) {
    moveCursor(QPointF(mapFromGlobal(QCursor::pos())));
}

void DrawingView::leaveEvent(QEvent*) {
    moveCursor({});
    m_hover.lookSoon();
}

void DrawingView::hideEvent(QHideEvent*) {
    moveCursor({});
    m_hover.lookSoon();
}

} // namespace merix::ui
