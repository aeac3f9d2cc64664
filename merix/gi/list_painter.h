// SPDX-License-Identifier: MIT
// Puts display lists on a painter's surface, in pixels of a view.
#pragma once

#include "merix/gi/display_list.h"
#include "merix/gi/scene.h"

#include <QPainter>
#include <QVector>

namespace merix::gi {

/// Strokes of one pen are gathered over as many lists as follow each other with it. Each entity keeps its place in
/// the drawing order.
class ListPainter {
public:
    ListPainter(QPainter& painter, const ge::ViewTransform& view, const PaintOptions& options);
    ~ListPainter();
    ListPainter(const ListPainter&) = delete;
    ListPainter& operator=(const ListPainter&) = delete;

    void draw(const DisplayList& list);

private:
    struct Pen {
        QRgb rgb = 0;
        double width = 0.0;
        bool operator==(const Pen&) const = default;
    };

    Pen penOf(const Style& style) const;
    void setPen(const Pen& pen);
    void flush();
    void strokeChain(const MxGePoint2d* points, std::size_t count, const Style& style);
    void dashChain(const MxGePoint2d* points, std::size_t count, const Style& style);
    void smoothChain(const MxGePoint2d* points, std::size_t count);
    QPen pen() const;
    QPen haloPen() const;
    void line(const MxGePoint2d& worldFrom, const MxGePoint2d& worldTo);
    void fill(const MxGePoint2d* points, std::size_t count, QRgb rgb);
    void band(const DisplayList& list, const Band& band, const Style& style);
    void text(const PlacedText& text, QRgb rgb);
    QPointF toPixel(const MxGePoint2d& p) const {
        return {(p.x - m_view.center.x) * m_scale + m_view.width / 2,
                m_view.height / 2 - (p.y - m_view.center.y) * m_scale};
    }

    QPainter& m_painter;
    const ge::ViewTransform& m_view;
    const PaintOptions& m_options;
    double m_scale;
    MxDbExtents m_window; ///< what is seen and a little around it, world
    QRgb m_contrast;
    Pen m_pen;
    QVector<QLineF> m_lines;
    std::vector<MxGePoint2d> m_chords;
};

} // namespace merix::gi
