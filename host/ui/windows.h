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
/// A pixel of the active drawing view (as mxedCoordFromWorldToPixel gives it) in screen coordinates. Views count
/// physical pixels: the result lies as many of them from the main window's corner. What mxuiScreenToMainWindow makes of
/// it is therefore to be divided by the device pixel ratio to give a place for a widget.
QPoint mxuiViewToScreen(const QPoint& pixel);
/// A screen point in the main window's coordinates.
QPoint mxuiScreenToMainWindow(const QPoint& point);
/// The size of the active drawing view in pixels; empty without one.
QRect mxuiViewRect();
/// Physical pixels in one pixel of the windows' coordinates.
double mxuiDevicePixelRatio();
/// Says in passing what the event under way has done in the active drawing, and offers to take that step back: for ten
/// seconds, or until the drawing is changed again or another is the active one. An offer takes the place of the one
/// before. No effect without a window, or when there is nothing to take back.
void mxuiOfferUndo(const wchar_t* text);
/// Paints what is stale in the active view now.
void mxuiRepairView();
