// SPDX-License-Identifier: MIT
#include "host/ui/windows.h"

#include "merix/ui/main_window.h"

using merix::ui::MainWindow;

QWidget* mxuiMainWindow() {
    return MainWindow::instance();
}

QRect mxuiMainWindowRect() {
    const MainWindow* window = MainWindow::instance();
    return window ? QRect(window->mapToGlobal(QPoint(0, 0)), window->size()) : QRect();
}

QPoint mxuiViewToScreen(const QPoint& pixel) {
    const MainWindow* window = MainWindow::instance();
    return window ? window->view()->mapToGlobal(pixel) : pixel;
}

QPoint mxuiScreenToMainWindow(const QPoint& point) {
    const MainWindow* window = MainWindow::instance();
    return window ? window->mapFromGlobal(point) : point;
}

QPoint mxuiScreenToMainWindowPixels(const QPoint& point) {
    return (QPointF(mxuiScreenToMainWindow(point)) * mxuiDevicePixelRatio()).toPoint();
}

QRect mxuiViewRect() {
    const merix::ed::ActiveView* view = merix::ed::activeView();
    if (!view)
        return {};
    const merix::ge::ViewTransform& shown = view->transform();
    return {0, 0, qRound(shown.width / shown.pixelRatio), qRound(shown.height / shown.pixelRatio)};
}

double mxuiDevicePixelRatio() {
    const MainWindow* window = MainWindow::instance();
    return window ? window->devicePixelRatioF() : 1.0;
}

void mxuiOfferUndo(const wchar_t* text) {
    if (MainWindow* window = MainWindow::instance(); window && text)
        window->offerUndo(QString::fromWCharArray(text));
}

void mxuiRepairView() {
    if (const MainWindow* window = MainWindow::instance())
        window->view()->repairNow();
}
