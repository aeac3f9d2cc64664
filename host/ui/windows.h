// SPDX-License-Identifier: MIT
// The host's windows as modules see them. Main thread only.
#pragma once

#include <QPoint>
#include <QRect>

class QWidget;

/// The main window's widget, the parent of module windows; null without a user interface.
QWidget* mxuiMainWindow();
/// The main window's area, screen coordinates.
QRect mxuiMainWindowRect();
/// A pixel of the active drawing view (as mxedCoordFromWorldToPixel gives it) in screen coordinates.
QPoint mxuiViewToScreen(const QPoint& pixel);
/// A screen point in the main window's coordinates.
QPoint mxuiScreenToMainWindow(const QPoint& point);
/// A screen point in physical pixels from the main window's corner: divided by the device pixel ratio and rounded, the
/// place for a widget there.
QPoint mxuiScreenToMainWindowPixels(const QPoint& point);
/// The size of the active drawing view in the windows' pixels; empty without one.
QRect mxuiViewRect();
/// Physical pixels in one pixel of the windows' coordinates.
double mxuiDevicePixelRatio();
/// Says in passing what the event under way has done in the active drawing, and offers to take that step back: for ten
/// seconds, or until the drawing is changed again or another is the active one. An offer takes the place of the one
/// before. No effect without a window, or when there is nothing to take back.
void mxuiOfferUndo(const wchar_t* text);
/// Paints what is stale in the active view now.
void mxuiRepairView();
