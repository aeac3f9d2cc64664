// SPDX-License-Identifier: MIT
// Colours, fonts and style of the windows, in one place.
#pragma once

#include <QColor>
#include <QFont>

class QApplication;

namespace merix::ui {

inline const QColor kCanvas(33, 40, 48);
inline const QColor kCanvasText(150, 163, 176);
inline const QColor kCrossHair(214, 222, 230);
inline const QColor kRubberBand(240, 170, 80);

/// For text in columns: the command line and coordinates.
QFont fixedFont();

/// The dark look. Widgets take their colours from the palette alone, so without this call they follow the system.
void applyDarkLook(QApplication& application);

} // namespace merix::ui
