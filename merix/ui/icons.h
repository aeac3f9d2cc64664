// SPDX-License-Identifier: MIT
// The tool bar's icons, drawn as lines in the colours of the palette in force: legible on light and on dark, sharp on
// every screen.
#pragma once

#include <QIcon>
#include <QStringList>

namespace merix::ui {

/// The icon of a command by its global name, or of a state of layers ("on", "off", "frozen", "thawed", "locked",
/// "unlocked"); a null icon for any other.
QIcon iconNamed(const QString& name);

/// Paints the same into `area` in the palette's text colour.
void paintIcon(QPainter& painter, const QString& name, const QRectF& area, const QPalette& palette,
               bool enabled = true);

QStringList iconNames();

} // namespace merix::ui
