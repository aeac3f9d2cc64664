// SPDX-License-Identifier: MIT
#include "merix/app/desktop.h"

#include <QApplication>
#include <QPainter>

namespace merix::app {

Desktop::Desktop(QWidget& main)
    : m_main(&main) {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible())
            raise(window);
    qApp->installEventFilter(this);
}

bool Desktop::eventFilter(QObject* object, QEvent* event) {
    const auto type = event->type();
    if ((type == QEvent::Show || type == QEvent::ZOrderChange || type == QEvent::WindowActivate) &&
        object->isWidgetType())
        if (auto* widget = static_cast<QWidget*>(object); widget->isWindow() && widget->isVisible())
            raise(widget);
    return false;
}

void Desktop::raise(QWidget* window) {
    std::erase_if(m_order, [&](const QPointer<QWidget>& known) { return !known || known == window; });
    m_order.emplace_back(window);
    // Windows stay above the window that they belong to.
    const std::vector<QPointer<QWidget>> before = m_order;
    for (const QPointer<QWidget>& known : before) {
        QWidget* other = known.data();
        const QWidget* parent = other && other != window ? other->parentWidget() : nullptr;
        if (parent && parent->window() == window)
            raise(other);
    }
}

std::vector<QWidget*> Desktop::windows() const {
    std::vector<QWidget*> visible;
    for (const QPointer<QWidget>& known : m_order)
        if (QWidget* window = known.data();
            window && window->isVisible() && window->isWindow() && !window->isMinimized())
            visible.push_back(window);
    return visible;
}

QWidget* Desktop::windowAt(const QPoint& global) const {
    const std::vector<QWidget*> all = windows();
    for (auto window = all.rbegin(); window != all.rend(); ++window)
        if (!(*window)->testAttribute(Qt::WA_TransparentForMouseEvents) && (*window)->geometry().contains(global))
            return *window;
    return nullptr;
}

QImage Desktop::picture() const {
    QWidget* main = m_main.data();
    if (!main || !main->isVisible())
        return {};
    QPixmap canvas = main->grab();
    QPainter painter(&canvas);
    const QPoint origin = main->mapToGlobal(QPoint());
    for (QWidget* window : windows())
        if (window != main)
            painter.drawPixmap(window->mapToGlobal(QPoint()) - origin, window->grab());
    painter.end();
    return canvas.toImage();
}

QStringList Desktop::describe() const {
    QStringList lines;
    for (const QWidget* window : windows()) {
        const QRect place = window->geometry();
        const QString title = window->windowTitle().replace(
            QStringLiteral("[*]"), window->isWindowModified() ? QStringLiteral("*") : QString());
        lines << QStringLiteral("%1 \"%2\" %3x%4%5%6")
                     .arg(QLatin1String(window->metaObject()->className()), title)
                     .arg(place.width())
                     .arg(place.height())
                     .arg(place.x() < 0 ? QString::number(place.x()) : QStringLiteral("+%1").arg(place.x()),
                          place.y() < 0 ? QString::number(place.y()) : QStringLiteral("+%1").arg(place.y()));
    }
    return lines;
}

} // namespace merix::app
