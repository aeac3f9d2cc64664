// SPDX-License-Identifier: MIT
#include "merix/gi/list_painter.h"

#include "merix/gi/colors.h"

#include <algorithm>

namespace merix::gi {

namespace {

constexpr double kChordTolerance = 0.05; ///< pixels
constexpr double kBorder = 8.0;          ///< pixels around the view that are drawn too, for pens and caps
constexpr double kShortestPattern = 4.0; ///< a line type repeating within fewer pixels is drawn continuous
constexpr double kShortestText = 2.5;    ///< capitals lower than this, in pixels, become a bar
constexpr double kStraight = 0.02;       ///< a line this close to an axis, in pixels, is put on whole pixels
constexpr double kPixelsPerMillimetre = 96.0 / 25.4;
constexpr int kBatch = 4096;

/// Cuts the segment to the box; false when nothing of it is left. `from` and `to` are parts of its length.
bool clip(const MxGePoint2d& a, const MxGePoint2d& b, const MxDbExtents& box, double& from, double& to) {
    from = 0.0, to = 1.0;
    const auto cut = [&](double start, double step, double low, double high) {
        if (step == 0.0)
            return start >= low && start <= high;
        double t0 = (low - start) / step, t1 = (high - start) / step;
        if (t0 > t1)
            std::swap(t0, t1);
        from = std::max(from, t0), to = std::min(to, t1);
        return from <= to;
    };
    return cut(a.x, b.x - a.x, box.minPoint().x, box.maxPoint().x) &&
           cut(a.y, b.y - a.y, box.minPoint().y, box.maxPoint().y);
}

MxGePoint2d between(const MxGePoint2d& a, const MxGePoint2d& b, double t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
}

/// The part of a ring inside the box (Sutherland and Hodgman); edges along the box may be run twice.
std::vector<MxGePoint2d> clipRing(std::vector<MxGePoint2d> ring, const MxDbExtents& box) {
    for (int side = 0; side < 4; ++side) {
        const auto inside = [&](const MxGePoint2d& p) {
            return side == 0   ? p.x - box.minPoint().x
                   : side == 1 ? box.maxPoint().x - p.x
                   : side == 2 ? p.y - box.minPoint().y
                               : box.maxPoint().y - p.y;
        };
        std::vector<MxGePoint2d> out;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const MxGePoint2d &a = ring[i], &b = ring[(i + 1) % ring.size()];
            const double da = inside(a), db = inside(b);
            if (da >= 0)
                out.push_back(a);
            if ((da >= 0) != (db >= 0))
                out.push_back(between(a, b, da / (da - db)));
        }
        ring = std::move(out);
    }
    return ring;
}

} // namespace

ListPainter::ListPainter(QPainter& painter, const ge::ViewTransform& view, const PaintOptions& options)
    : m_painter(painter)
    , m_view(view)
    , m_options(options)
    , m_scale(1.0 / view.unitsPerPixel)
    , m_window(view.worldRect())
    , m_contrast(contrasting(options.background)) {
    const MxGeVector3d border{kBorder * view.unitsPerPixel, kBorder * view.unitsPerPixel, 0};
    m_window.set(m_window.minPoint() - border, m_window.maxPoint() + border);
    m_lines.reserve(kBatch);
    m_painter.setRenderHint(QPainter::Antialiasing);
}

ListPainter::~ListPainter() {
    flush();
}

ListPainter::Pen ListPainter::penOf(const Style& style) const {
    const bool isHeavy = m_options.lineWeights || m_options.plot;
    const double weight = isHeavy ? style.weight / 100.0 * kPixelsPerMillimetre : 0.0;
    if (m_options.halo.isValid())
        return {m_options.halo.rgb(), std::max(1.0, weight * m_options.pixelRatio) + 2 * m_options.haloWidth};
    return {style.contrast ? m_contrast : style.rgb, std::max(1.0, weight * m_options.pixelRatio)};
}

void ListPainter::setPen(const Pen& pen) {
    if (pen == m_pen)
        return;
    flush();
    m_pen = pen;
}

void ListPainter::flush() {
    if (m_lines.isEmpty())
        return;
    m_painter.setPen(pen());
    m_painter.drawLines(m_lines);
    m_lines.clear();
}

QPen ListPainter::pen() const {
    return QPen(QColor::fromRgb(m_pen.rgb), m_pen.width, Qt::SolidLine,
                m_pen.width > 1.5 ? Qt::RoundCap : Qt::SquareCap, Qt::RoundJoin);
}

/// What is painted around an area.
QPen ListPainter::haloPen() const {
    return m_options.halo.isValid()
               ? QPen(m_options.halo, 2 * m_options.haloWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin)
               : QPen(Qt::NoPen);
}

void ListPainter::draw(const DisplayList& list) {
    for (const Primitive& primitive : list.primitives) {
        const Style& style = list.styles[primitive.style];
        const MxGePoint2d* points = list.points.data() + primitive.first;
        switch (primitive.kind) {
        case Primitive::Kind::kStroke:
            setPen(penOf(style));
            strokeChain(points, primitive.count, style);
            break;
        case Primitive::Kind::kCurve:
            setPen(penOf(style));
            m_chords.clear();
            ge::flatten(list.curves[primitive.first], kChordTolerance * m_view.unitsPerPixel, &m_window, m_chords);
            if (style.dashes)
                dashChain(m_chords.data(), m_chords.size(), style);
            else
                smoothChain(m_chords.data(), m_chords.size());
            break;
        case Primitive::Kind::kFill:
            fill(points, primitive.count, penOf(style).rgb);
            break;
        case Primitive::Kind::kBand:
            band(list, list.bands[primitive.first], style);
            break;
        case Primitive::Kind::kText:
            text(list.texts[primitive.first], penOf(style).rgb);
            break;
        }
    }
}

void ListPainter::strokeChain(const MxGePoint2d* points, std::size_t count, const Style& style) {
    if (style.dashes)
        return dashChain(points, count, style);
    if (count == 1)
        line(points[0], points[0]);
    for (std::size_t i = 0; i + 1 < count; ++i)
        line(points[i], points[i + 1]);
}

void ListPainter::dashChain(const MxGePoint2d* points, std::size_t count, const Style& style) {
    const DashPattern& dashes = *style.dashes;
    double period = 0.0;
    for (const double dash : dashes)
        period += std::abs(dash) * style.dashScale;
    if (!(period * m_scale >= kShortestPattern) || !std::isfinite(period)) {
        Style continuous = style;
        continuous.dashes = nullptr;
        return strokeChain(points, count, continuous);
    }
    double travelled = 0.0; // along the chain to the segment's start
    for (std::size_t i = 0; i + 1 < count; ++i) {
        const MxGePoint2d &a = points[i], &b = points[i + 1];
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        double from = 0.0, to = 1.0;
        if (length > 0.0 && clip(a, b, m_window, from, to)) {
            const double begin = travelled + from * length, end = travelled + to * length;
            // From the beginning of the repetition that the visible part begins in.
            double at = std::floor(begin / period) * period;
            for (std::size_t k = 0; at < end; k = (k + 1) % dashes.size()) {
                const double next = at + std::abs(dashes[k]) * style.dashScale;
                if (dashes[k] >= 0.0 && next >= begin)
                    line(between(a, b, (std::max(at, begin) - travelled) / length),
                         between(a, b, (std::min(next, end) - travelled) / length));
                at = next;
            }
        }
        travelled += length;
    }
}

/// Chords of a curve as runs of joined lines: ends of single short lines would show as bumps.
void ListPainter::smoothChain(const MxGePoint2d* points, std::size_t count) {
    flush();
    m_painter.setPen(pen());
    QPolygonF run;
    const auto end = [&] {
        if (run.size() > 1)
            m_painter.drawPolyline(run);
        run.clear();
    };
    for (std::size_t i = 0; i + 1 < count; ++i) {
        double from = 0.0, to = 1.0;
        if (!clip(points[i], points[i + 1], m_window, from, to)) {
            end();
            continue;
        }
        if (from > 0.0)
            end();
        if (run.isEmpty())
            run.append(toPixel(between(points[i], points[i + 1], from)));
        run.append(toPixel(between(points[i], points[i + 1], to)));
        if (to < 1.0)
            end();
    }
    end();
}

void ListPainter::line(const MxGePoint2d& worldFrom, const MxGePoint2d& worldTo) {
    double from = 0.0, to = 1.0;
    if (!clip(worldFrom, worldTo, m_window, from, to))
        return;
    QPointF a = toPixel(from > 0.0 ? between(worldFrom, worldTo, from) : worldFrom);
    QPointF b = toPixel(to < 1.0 ? between(worldFrom, worldTo, to) : worldTo);
    // Thin lines along the axes fill exactly one row or column of pixels and so keep their full colour.
    if (m_pen.width < 1.5) {
        if (std::abs(a.y() - b.y()) < kStraight)
            a.setY(std::floor(a.y()) + 0.5), b.setY(a.y());
        if (std::abs(a.x() - b.x()) < kStraight)
            a.setX(std::floor(a.x()) + 0.5), b.setX(a.x());
    }
    if (a == b)
        b.rx() += 0.01; // a dot, which a line without length would not leave
    m_lines.append({a, b});
    if (m_lines.size() >= kBatch)
        flush();
}

void ListPainter::fill(const MxGePoint2d* points, std::size_t count, QRgb rgb) {
    flush();
    std::vector<MxGePoint2d> ring(points, points + count);
    const auto beyond = [&](const MxGePoint2d& p) {
        return p.x < m_window.minPoint().x || p.x > m_window.maxPoint().x || p.y < m_window.minPoint().y ||
               p.y > m_window.maxPoint().y;
    };
    if (std::any_of(ring.begin(), ring.end(), beyond))
        ring = clipRing(std::move(ring), m_window);
    if (ring.size() < 2)
        return;
    QPolygonF polygon;
    polygon.reserve(static_cast<int>(ring.size()));
    for (const MxGePoint2d& p : ring)
        polygon.append(toPixel(p));
    const QRectF box = polygon.boundingRect();
    if (box.width() < 1.0 || box.height() < 1.0) { // a band thinner than a line is drawn as one
        setPen({rgb, 1.0});
        for (std::size_t i = 0; i < ring.size(); ++i)
            line(ring[i], ring[(i + 1) % ring.size()]);
        return;
    }
    m_painter.setPen(haloPen());
    m_painter.setBrush(QColor::fromRgb(rgb));
    m_painter.drawPolygon(polygon, Qt::WindingFill);
}

void ListPainter::band(const DisplayList& list, const Band& band, const Style& style) {
    if (band.width * m_scale >= 1.0)
        return fill(list.points.data() + band.outline, band.outlineCount, penOf(style).rgb);
    Style thin = style;
    thin.weight = 0;
    thin.dashes = nullptr;
    setPen(penOf(thin));
    if (band.middleCount > 2)
        smoothChain(list.points.data() + band.middle, band.middleCount);
    else
        strokeChain(list.points.data() + band.middle, band.middleCount, thin);
}

void ListPainter::text(const PlacedText& text, QRgb rgb) {
    const QTransform toPixels(m_scale, 0, 0, -m_scale, m_view.width / 2 - m_view.center.x * m_scale,
                              m_view.height / 2 + m_view.center.y * m_scale);
    const QTransform letters = text.toWorld * toPixels;
    const QRectF box(0, 0, text.outline.advance, 1.0);
    if (!letters.mapRect(box.adjusted(-1, -1, 1, 1)).intersects(QRectF(0, 0, m_view.width, m_view.height)))
        return;
    flush();
    const double height = std::hypot(letters.m21(), letters.m22());
    if (height < kShortestText) {
        QColor faint = QColor::fromRgb(rgb);
        faint.setAlphaF(0.45);
        QPainterPath bar;
        bar.addPolygon(letters.map(QPolygonF(box)));
        m_painter.fillPath(bar, faint);
        return;
    }
    const QPainterPath path = letters.map(text.outline.path);
    m_painter.fillPath(path, QColor::fromRgb(rgb));
    if (m_options.halo.isValid())
        m_painter.strokePath(path, haloPen());
}

} // namespace merix::gi
