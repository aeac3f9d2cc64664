// SPDX-License-Identifier: MIT
#include "merix/app/script.h"

#include "merix/ap/document_imp.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/host_functions.h"
#include "merix/ui/main_window.h"

#include <QApplication>
#include <QEventLoop>
#include <QHash>
#include <QRegularExpression>
#include <QTimer>

#include <cmath>

namespace merix::app {

namespace {

/// How often a modal dialog or a `@wait` is looked after, milliseconds.
constexpr int kTick = 20;
/// Longest time that events are worked off after a line, milliseconds: timers that repeat at once would never end.
constexpr int kDrain = 200;

/// The line without its comment: `;` at the beginning or after a blank. `isLine` is false when nothing else stood
/// there.
QString withoutComment(const QString& line, bool& isLine) {
    static const QRegularExpression comment(QStringLiteral("(^|\\s);.*$"));
    const auto match = comment.match(line);
    if (!match.hasMatch())
        return line;
    const QString rest = line.left(match.capturedStart());
    isLine = !rest.trimmed().isEmpty();
    return rest;
}

} // namespace

Script::Script(ui::MainWindow& first)
    : m_desktop(first)
    , m_hand(m_desktop) {}

Script::~Script() = default;

ui::MainWindow& Script::window() {
    return *ui::MainWindow::instance();
}

QString Script::run(LineReader& lines, const QString& name) {
    m_lines = &lines;
    m_name = name;
    ed::Prompter::instance().setSource(this);
    QTimer::singleShot(kTick, this, &Script::pump);
    drain();
    while (runNext()) {
    }
    ed::Prompter::instance().setSource(nullptr);
    return m_error;
}

/// A prompt at the end of the script is cancelled, and so is every further one: nobody is left to answer.
bool Script::feed() {
    if (!runNext())
        ed::Prompter::instance().cancel();
    return true;
}

bool Script::runNext() {
    QString line;
    bool isLine = false;
    while (!isLine) {
        m_busy = true;
        const bool more = !m_stopped && m_error.isEmpty() && m_lines->next(line);
        m_busy = false;
        if (!more || m_stopped)
            return false;
        isLine = true;
        line = withoutComment(line, isLine);
    }
    const int number = m_lines->lineNumber();
    const QPointer<QWidget> outer = std::exchange(m_modalAtLine, QApplication::activeModalWidget());
    const QString why = runLine(line);
    drain();
    m_modalAtLine = outer;
    fail(number, why);
    return m_error.isEmpty();
}

void Script::fail(int line, const QString& why) {
    if (!why.isEmpty() && m_error.isEmpty())
        m_error = QStringLiteral("%1:%2: %3").arg(m_name).arg(line).arg(why);
}

/// A command may have opened a dialog and run its own event loop: the lines that follow then act on the dialog.
void Script::pump() {
    QTimer::singleShot(kTick, this, &Script::pump);
    m_hand.settle();
    const QWidget* modal = QApplication::activeModalWidget();
    if (!m_lines || m_busy || !modal || modal == m_modalAtLine || !m_error.isEmpty())
        return;
    if (!runNext() && modal == QApplication::activeModalWidget())
        QApplication::activeModalWidget()->close(); // nobody is left to close it
}

void Script::drain() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents(QEventLoop::AllEvents, kDrain);
    m_hand.settle();
    QCoreApplication::processEvents(QEventLoop::AllEvents, kDrain);
}

QString Script::runLine(const QString& line) {
    const QString text = line.trimmed();
    if (!text.startsWith(QLatin1Char('@')))
        return runTyped(line);
    // `@10,20` answers a prompt: a distance from the last point.
    if (text.size() < 2 || !text[1].isLetter())
        return runTyped(line);
    const int blank = text.indexOf(QLatin1Char(' '));
    const QString name = text.left(blank);
    const Action action = actionNamed(name);
    if (!action)
        return QStringLiteral("unknown line %1").arg(name);
    const QString why = (this->*action)(blank < 0 ? QString() : text.mid(blank + 1).trimmed());
    return why.isEmpty() ? why : QStringLiteral("%1: %2").arg(name, why);
}

QString Script::runTyped(const QString& line) {
    if (line.trimmed().startsWith(QLatin1Char('(')))
        return ed::HostFunctions::instance().callLine(line) ? QString() : ed::Console::instance().history().last();
    if (ed::Prompter::instance().isWaiting()) {
        ed::Prompter::instance().submitLine(line);
        return {};
    }
    using Outcome = ed::CommandStack::Outcome;
    const Outcome outcome = ed::CommandStack::instance().runLine(line);
    const bool failed = outcome == Outcome::kUnknown || outcome == Outcome::kRefused || outcome == Outcome::kFailed;
    return failed ? ed::Console::instance().history().last() : QString();
}

Script::Action Script::actionNamed(const QString& name) {
    static const QHash<QString, Action> actions{
        {QStringLiteral("@hover"), &Script::hover},       {QStringLiteral("@press"), &Script::press},
        {QStringLiteral("@release"), &Script::release},   {QStringLiteral("@click"), &Script::click},
        {QStringLiteral("@key"), &Script::key},           {QStringLiteral("@wait"), &Script::wait},
        {QStringLiteral("@shot"), &Script::shot},         {QStringLiteral("@viewsize"), &Script::viewSize},
        {QStringLiteral("@viewshot"), &Script::viewShot}, {QStringLiteral("@open"), &Script::open},
        {QStringLiteral("@save"), &Script::save},         {QStringLiteral("@close"), &Script::close},
        {QStringLiteral("@activate"), &Script::activate}, {QStringLiteral("@layout"), &Script::layout},
        {QStringLiteral("@undo"), &Script::undo},         {QStringLiteral("@redo"), &Script::redo},
        {QStringLiteral("@expect"), &Script::expect},     {QStringLiteral("@windows"), &Script::listWindows},
    };
    return actions.value(name, nullptr);
}

} // namespace merix::app
