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
inline const QColor kSnapMarker(120, 220, 60);
inline const QColor kHalo(70, 150, 255); ///< around what is selected or meant
constexpr double kHaloOpacity = 0.55;
inline const QColor kWindowBox(90, 160, 255);
inline const QColor kCrossingBox(90, 200, 110);
inline const QColor kGrip(40, 110, 230), kHoveredGrip(255, 150, 90), kHotGrip(225, 50, 40), kGripEdge(225, 235, 250);
inline const QColor kOffer(86, 70, 36), kOfferText(245, 236, 218); ///< what waits for an answer and is in nobody's way

/// For text in columns: the command line and coordinates.
QFont fixedFont();

/// The dark look. Widgets take their colours from the palette alone, so without this call they follow the system.
void applyDarkLook(QApplication& application);

} // namespace merix::ui
