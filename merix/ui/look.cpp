// SPDX-License-Identifier: MIT
#include "merix/ui/look.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>

namespace merix::ui {

namespace {

/// Fusion with what it draws for light windows only drawn in the palette's colours.
class Style final : public QProxyStyle {
public:
    Style()
        : QProxyStyle(QStringLiteral("Fusion")) {}
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        if (element != PE_IndicatorTabClose)
            return QProxyStyle::drawPrimitive(element, option, painter, widget);
        const bool hot = option->state & State_MouseOver;
        const QPointF c = QRectF(option->rect).center();
        constexpr double kArm = 3.5;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(option->palette.color(hot ? QPalette::WindowText : QPalette::PlaceholderText), 1.4));
        painter->drawLine(c - QPointF(kArm, kArm), c + QPointF(kArm, kArm));
        painter->drawLine(c - QPointF(kArm, -kArm), c + QPointF(kArm, -kArm));
        painter->restore();
    }
    /// The button for what a tool bar has no room for.
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override {
        if (which != SP_ToolBarHorizontalExtensionButton)
            return QProxyStyle::standardIcon(which, option, widget);
        constexpr int kSide = 32;
        QPixmap picture(kSide, kSide);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QApplication::palette().color(QPalette::ButtonText), 3));
        for (const int x : {7, 16})
            painter.drawPolyline(QPolygon({QPoint(x, 8), QPoint(x + 8, 16), QPoint(x, 24)}));
        return {picture};
    }
};

/// Where there is no desktop to say it.
constexpr int kFontPoints = 9;

} // namespace

QFont fixedFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (!QFontInfo(font).fixedPitch()) {
        font = QFont(QStringLiteral("DejaVu Sans Mono"), QApplication::font().pointSize());
        font.setStyleHint(QFont::Monospace);
    }
    return font;
}

void applyDarkLook(QApplication& application) {
    application.setStyle(new Style);
    if (QGuiApplication::platformName() == QLatin1String("offscreen")) {
        QFont font = application.font();
        font.setPointSize(kFontPoints);
        application.setFont(font);
    }
    const QColor window(45, 52, 60), base(38, 44, 51), text(222, 227, 232), dim(127, 137, 147), accent(66, 134, 206);
    QPalette palette(text, window.lighter(112), window.lighter(150), window.darker(150), window.darker(120), text,
                     base);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, base.lighter(115));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, window.lighter(112));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(116, 178, 240));
    palette.setColor(QPalette::ToolTipBase, window.lighter(125));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, dim);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, dim);
    application.setPalette(palette);
}

} // namespace merix::ui
