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
    if (!window)
        return pixel;
    const QPointF corner = QPointF(window->view()->mapTo(window, QPoint(0, 0))) * mxuiDevicePixelRatio();
    return window->mapToGlobal(QPoint(0, 0)) + corner.toPoint() + pixel;
}

QPoint mxuiScreenToMainWindow(const QPoint& point) {
    const MainWindow* window = MainWindow::instance();
    return window ? window->mapFromGlobal(point) : point;
}

QRect mxuiViewRect() {
    const merix::ed::ActiveView* view = merix::ed::activeView();
    if (!view)
        return {};
    return {0, 0, static_cast<int>(view->transform().width), static_cast<int>(view->transform().height)};
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
