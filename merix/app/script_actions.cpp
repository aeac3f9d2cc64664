// SPDX-License-Identifier: MIT
// The `@` lines of scripts.
#include "merix/app/script.h"

#include "merix/ap/document_imp.h"
#include "merix/app/picture_file.h"
#include "merix/ui/main_window.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <cmath>

namespace merix::app {

namespace {

constexpr int kTick = 20; ///< how often what lies under the cursor is looked at, milliseconds
/// A script that waits longer has a slip of the pen in its number, milliseconds.
constexpr int kLongestWait = 3600 * 1000;
/// The side of a view, pixels.
constexpr int kLargestView = 10000;

QString noDrawing() {
    return QStringLiteral("no drawing is open");
}

} // namespace

QString Script::hover(const QString& argument) {
    const QStringList numbers = argument.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    bool okX = false, okY = false;
    const double x = numbers.value(0).toDouble(&okX), y = numbers.value(1).toDouble(&okY);
    if (numbers.size() != 2 || !okX || !okY || !std::isfinite(x) || !std::isfinite(y))
        return QStringLiteral("a point is X Y in drawing units");
    const ui::DrawingView* view = window().view();
    if (!view->document())
        return noDrawing();
    const QPointF place = view->toWidget({x, y, 0.0});
    if (!QRectF(view->rect()).contains(place))
        return QStringLiteral("the point %1 %2 is not in the view").arg(numbers[0], numbers[1]);
    m_hand.moveTo(view->mapToGlobal(place.toPoint()));
    return {};
}

QString Script::press(const QString&) {
    m_hand.press();
    return {};
}

QString Script::release(const QString&) {
    m_hand.release();
    return {};
}

QString Script::click(const QString& argument) {
    if (const QString why = hover(argument); !why.isEmpty())
        return why;
    drain();
    m_hand.press();
    m_hand.release();
    return {};
}

QString Script::key(const QString& argument) {
    const QString name = argument == QLatin1String("Escape") ? QStringLiteral("Esc") : argument;
    const QKeySequence sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
    if (sequence.count() != 1 || sequence[0] == Qt::Key_unknown)
        return QStringLiteral("unknown key %1").arg(argument);
    m_hand.key(sequence);
    return {};
}

QString Script::wait(const QString& argument) {
    bool ok = false;
    const int duration = argument.toInt(&ok);
    if (!ok || duration < 0 || duration > kLongestWait)
        return QStringLiteral("a time is a whole number of milliseconds");
    QEventLoop loop;
    QTimer tick;
    connect(&tick, &QTimer::timeout, this, [this] { m_hand.settle(); });
    tick.start(kTick);
    QTimer::singleShot(duration, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    const bool outer = std::exchange(m_busy, true);
    loop.exec();
    m_busy = outer;
    return {};
}

QString Script::shot(const QString& argument) {
    if (argument.isEmpty())
        return QStringLiteral("a file name is needed");
    const QImage picture = m_desktop.picture();
    if (picture.isNull())
        return QStringLiteral("there is no window");
    return writePicture(picture, argument);
}

/// The window is made so large that the drawing view gets that size: pictures of it then do not depend on what else
/// the window shows.
QString Script::viewSize(const QString& argument) {
    const QStringList numbers = argument.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const QSize wanted(numbers.value(0).toInt(), numbers.value(1).toInt());
    if (numbers.size() != 2 || wanted.isEmpty() || wanted.width() > kLargestView || wanted.height() > kLargestView)
        return QStringLiteral("a size is WIDTH HEIGHT in pixels, 1 to %1 each").arg(kLargestView);
    window().resize(window().size() + wanted - window().view()->size());
    drain();
    const QSize got = window().view()->size();
    return got == wanted ? QString()
                         : QStringLiteral("the view is %1 by %2 instead").arg(got.width()).arg(got.height());
}

QString Script::viewShot(const QString& argument) {
    if (argument.isEmpty())
        return QStringLiteral("a file name is needed");
    return writePicture(window().view()->grab().toImage().convertToFormat(QImage::Format_RGB32), argument);
}

QString Script::open(const QString& argument) {
    return ap::DocManager::instance().open(argument).message;
}

QString Script::save(const QString& argument) {
    auto& manager = ap::DocManager::instance();
    ap::Document* document = manager.current();
    if (!document)
        return noDrawing();
    return (argument.isEmpty() ? manager.save(*document) : manager.saveAs(*document, argument)).message;
}

QString Script::close(const QString&) {
    ap::Document* document = ap::DocManager::instance().current();
    if (!document)
        return noDrawing();
    ap::DocManager::instance().close(*document);
    return {};
}

QString Script::activate(const QString& argument) {
    bool ok = false;
    const int number = argument.toInt(&ok);
    const auto documents = ap::DocManager::instance().all();
    if (!ok || number < 1 || std::size_t(number) > documents.size())
        return QStringLiteral("there is no drawing number %1").arg(argument);
    ap::DocManager::instance().activate(documents[std::size_t(number) - 1]);
    return {};
}

QString Script::layout(const QString& argument) {
    ap::Document* document = ap::DocManager::instance().current();
    if (!document)
        return noDrawing();
    return document->setCurrentLayout(argument) ? QString() : QStringLiteral("there is no layout %1").arg(argument);
}

QString Script::undo(const QString&) {
    ap::Document* document = ap::DocManager::instance().current();
    if (!document)
        return noDrawing();
    return ap::DocManager::instance().undo(*document) ? QString() : QStringLiteral("nothing to undo");
}

QString Script::redo(const QString&) {
    ap::Document* document = ap::DocManager::instance().current();
    if (!document)
        return noDrawing();
    return ap::DocManager::instance().redo(*document) ? QString() : QStringLiteral("nothing to redo");
}

QString Script::expect(const QString& argument) {
    ed::Console& console = ed::Console::instance();
    // A prompt that waits stands before the person's eyes, although the history gets it only with its answer.
    const bool holds = console.unread().contains(argument) || console.prompt().contains(argument);
    console.markRead();
    return holds ? QString() : QStringLiteral("the command line does not show \"%1\"").arg(argument);
}

QString Script::listWindows(const QString&) {
    for (const QString& line : m_desktop.describe())
        ed::Console::instance().print(QLatin1Char('\n') + line);
    return {};
}

} // namespace merix::app
