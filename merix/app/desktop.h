// SPDX-License-Identifier: MIT
// The program's windows as they lie over each other on the screen.
#pragma once

#include <QImage>
#include <QPointer>
#include <QWidget>

#include <vector>

namespace merix::app {

/// Keeps the stacking order of the visible top-level windows by watching them being shown, raised and activated: what
/// lies where is known on every platform, also where there is no window manager to ask.
class Desktop : public QObject {
    Q_OBJECT
public:
    explicit Desktop(QWidget& main);

    /// Lowest first.
    std::vector<QWidget*> windows() const;
    /// The topmost window that contains the point (screen coordinates), or null.
    QWidget* windowAt(const QPoint& global) const;
    /// The main window with the windows over it at their places, as a person sees it.
    QImage picture() const;
    /// A line for each window: class, title, geometry.
    QStringList describe() const;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void raise(QWidget* window);

    QPointer<QWidget> m_main;
    std::vector<QPointer<QWidget>> m_order;
};

} // namespace merix::app
