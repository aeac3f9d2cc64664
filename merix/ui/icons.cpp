// SPDX-License-Identifier: MIT
// Each icon is a line of strokes in a square of 24 units: M x y and L x y move and draw, Z closes, O x y r is a circle,
// A x y r start sweep an arc (degrees), R x y w h a rectangle, D x y a node. After * strokes take the accent colour.
#include "merix/ui/icons.h"

#include <QApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace merix::ui {

namespace {

constexpr double kGrid = 24.0;
constexpr double kStroke = 1.6, kNode = 2.1;

const QHash<QString, const char*>& drawings() {
    static const QHash<QString, const char*> all{
        {QStringLiteral("LINE"), "M 5 19 L 19 5 * D 5 19 D 19 5"},
        {QStringLiteral("PLINE"), "M 4 18 L 10 8 L 15 15 L 20 5 * D 4 18 D 10 8 D 15 15 D 20 5"},
        {QStringLiteral("RECTANG"), "R 4 7 16 11 * D 4 18 D 20 7"},
        {QStringLiteral("CIRCLE"), "O 12 12 8 * M 12 12 L 18 7 D 12 12"},
        {QStringLiteral("ARC"), "A 12 16 9 10 160 * D 3.2 14.5 D 20.8 14.5 D 12 7"},
        {QStringLiteral("TEXT"), "M 5 8 L 5 5 L 19 5 L 19 8 M 12 5 L 12 19 M 9 19 L 15 19"},
        {QStringLiteral("MOVE"),
         "M 12 3 L 12 21 M 3 12 L 21 12 * M 9 6 L 12 3 L 15 6 M 9 18 L 12 21 L 15 18 M 6 9 L 3 12 L 6 15 M 18 9 "
         "L 21 12 L 18 15"},
        {QStringLiteral("COPY"), "R 4 8 11 12 * M 9 5 L 9 4 L 20 4 L 20 16 L 18 16"},
        {QStringLiteral("ROTATE"), "A 12 12 8 60 270 * M 19.5 4 L 16 5 L 17 9 D 12 12"},
        {QStringLiteral("SCALE"), "R 4 12 8 8 * M 12 4 L 20 4 L 20 12 M 20 4 L 13 11"},
        {QStringLiteral("MIRROR"),
         "M 9 6 L 3 18 L 9 18 Z * M 12 3 L 12 7 M 12 10 L 12 14 M 12 17 L 12 21 M 15 6 L 21 18 L 15 18 Z"},
        {QStringLiteral("STRETCH"),
         "M 12 7 L 4 7 L 4 17 L 12 17 * M 12 7 L 20 4 M 12 17 L 20 20 M 20 4 L 20 20 D 20 4 D 20 20"},
        {QStringLiteral("ERASE"), "M 8 19 L 3.5 14.5 L 13 5 L 19 11 L 11 19 Z M 8 10 L 14 16 * M 6 20.5 L 20 20.5"},
        {QStringLiteral("UNDO"), "M 4 9 L 14 9 M 8 19 L 14 19 A 14 14 5 -90 180 * M 8 5 L 4 9 L 8 13"},
        {QStringLiteral("REDO"), "M 20 9 L 10 9 M 16 19 L 10 19 A 10 14 5 90 180 * M 16 5 L 20 9 L 16 13"},
        {QStringLiteral("ZOOM"), "O 10 10 6 M 14.5 14.5 L 20 20 * M 7 10 L 13 10 M 10 7 L 10 13"},
        {QStringLiteral("ZOOM_EXTENTS"),
         "R 8 8 8 8 * M 3 8 L 3 3 L 8 3 M 16 3 L 21 3 L 21 8 M 21 16 L 21 21 L 16 21 M 8 21 L 3 21 L 3 16"},
        {QStringLiteral("ZOOM_WINDOW"), "O 10 10 6 M 14.5 14.5 L 20 20 * R 7 8 6 4"},
        {QStringLiteral("ZOOM_PREVIOUS"), "O 13 10 6 M 17.5 14.5 L 21 18 * M 9 10 L 16 10 M 12 7 L 9 10 L 12 13"},
        {QStringLiteral("PHONOMARK"), "R 9.5 3 5 11 A 12 11 6 180 180 M 12 17 L 12 21 M 8.5 21 L 15.5 21 * D 19.5 5"},
        {QStringLiteral("VOICEMAN"),
         "R 4 4 3.5 7 A 5.75 9 4 180 180 M 5.75 13 L 5.75 16 * M 13 6 L 21 6 M 13 12 L 21 12 M 4 20 L 21 20"},
        {QStringLiteral("VOICESHOW"), "A 12 18.5 11 35 110 A 12 5.5 11 215 110 * O 12 12 2.6"},
        {QStringLiteral("NEW"),
         "M 6 3 L 14 3 L 18 7 L 18 21 L 6 21 Z M 14 3 L 14 7 L 18 7 * M 12 11 L 12 17 M 9 14 L 15 14"},
        {QStringLiteral("OPEN"), "M 3 19 L 3 6 L 9 6 L 11 8.5 L 19 8.5 L 19 11 M 3 19 L 6.5 11 L 22 11 L 18.5 19 Z"},
        {QStringLiteral("SAVE"), "M 4 4 L 17 4 L 20 7 L 20 20 L 4 20 Z M 8 4 L 8 9 L 15 9 L 15 4 * R 8 13 8 7"},
        {QStringLiteral("on"),
         "A 12 10 5.5 -55 290 M 9.5 15 L 9.5 18 L 14.5 18 L 14.5 15 M 10.5 20.5 L 13.5 20.5 * M 12 1.5 L 12 2.5 M 4 "
         "4 L 5 5 M 20 4 L 19 5"},
        {QStringLiteral("off"),
         "A 12 10 5.5 -55 290 M 9.5 15 L 9.5 18 L 14.5 18 L 14.5 15 M 10.5 20.5 L 13.5 20.5 * M 4 21 L 20 3"},
        {QStringLiteral("thawed"),
         "O 12 12 4 M 12 3 L 12 5 M 12 19 L 12 21 M 3 12 L 5 12 M 19 12 L 21 12 M 5.6 5.6 L 7 7 M 17 17 L 18.4 "
         "18.4 M 5.6 18.4 L 7 17 M 17 7 L 18.4 5.6"},
        {QStringLiteral("frozen"),
         "* M 12 2.5 L 12 21.5 M 3.8 7.2 L 20.2 16.8 M 3.8 16.8 L 20.2 7.2 M 9.5 4 L 12 6.5 L 14.5 4 M 9.5 20 L "
         "12 17.5 L 14.5 20"},
        {QStringLiteral("unlocked"), "R 5 11 14 9 A 12 8 4.5 0 180 M 7.5 8 L 7.5 11"},
        {QStringLiteral("locked"), "R 5 11 14 9 * A 12 8 4.5 0 180 M 7.5 8 L 7.5 11 M 16.5 8 L 16.5 11 D 12 15.5"},
    };
    return all;
}

class Strokes {
public:
    explicit Strokes(const char* text)
        : m_words(QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {}

    void paint(QPainter& painter, const QColor& plain, const QColor& accent) {
        QColor color = plain;
        while (m_next < m_words.size()) {
            const QString word = m_words[m_next++];
            if (word == QLatin1String("*")) {
                stroke(painter, color);
                color = accent;
            } else {
                add(word[0].toLatin1());
            }
        }
        stroke(painter, color);
    }

private:
    double number() { return m_words[m_next++].toDouble(); }
    QPointF point() {
        const double x = number();
        return {x, number()};
    }
    void add(char operation) {
        switch (operation) {
        case 'M':
            return m_path.moveTo(point());
        case 'L':
            return m_path.lineTo(point());
        case 'Z':
            return m_path.closeSubpath();
        case 'O': {
            const QPointF center = point();
            const double r = number();
            return m_path.addEllipse(center, r, r);
        }
        case 'A': {
            const QPointF center = point();
            const double r = number(), start = number(), sweep = number();
            const QRectF box(center.x() - r, center.y() - r, 2 * r, 2 * r);
            m_path.arcMoveTo(box, start);
            return m_path.arcTo(box, start, sweep);
        }
        case 'R': {
            const QPointF corner = point();
            const double w = number(), h = number();
            return m_path.addRoundedRect(QRectF(corner, QSizeF(w, h)), 1, 1);
        }
        case 'D':
            return m_nodes.addEllipse(point(), kNode, kNode);
        default:
            return;
        }
    }
    void stroke(QPainter& painter, const QColor& color) {
        painter.strokePath(m_path, QPen(color, kStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.fillPath(m_nodes, color);
        m_path = m_nodes = QPainterPath();
    }

    QStringList m_words;
    int m_next = 0;
    QPainterPath m_path, m_nodes;
};

class Engine final : public QIconEngine {
public:
    explicit Engine(const QString& name)
        : m_name(name) {}
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        paintIcon(*painter, m_name, rect, QApplication::palette(), mode != QIcon::Disabled);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new Engine(m_name); }

private:
    QString m_name;
};

} // namespace

void paintIcon(QPainter& painter, const QString& name, const QRectF& area, const QPalette& palette, bool enabled) {
    const char* drawing = drawings().value(name, nullptr);
    if (!drawing)
        return;
    const auto group = enabled ? QPalette::Active : QPalette::Disabled;
    const QColor plain = palette.color(group, QPalette::ButtonText);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double side = std::min(area.width(), area.height());
    painter.translate(area.center() - QPointF(side / 2, side / 2));
    painter.scale(side / kGrid, side / kGrid);
    Strokes(drawing).paint(painter, plain, enabled ? palette.color(QPalette::Link) : plain);
    painter.restore();
}

QIcon iconNamed(const QString& name) {
    return drawings().contains(name) ? QIcon(new Engine(name)) : QIcon();
}

QStringList iconNames() {
    return drawings().keys();
}

} // namespace merix::ui
