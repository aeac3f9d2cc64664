// SPDX-License-Identifier: MIT
#include "merix/ui/look.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace merix::ui {

void applyDarkLook(QApplication& application) {
    application.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
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
