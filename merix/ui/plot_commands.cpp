// SPDX-License-Identifier: MIT
#include "merix/ap/ask_path.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"
#include "merix/ui/main_window.h"
#include "merix/ui/plot.h"

namespace merix::ui {

namespace {

void tell(const QString& text) {
    ed::Console::instance().print(QLatin1Char('\n') + text);
}

/// False after Esc.
bool askWindow(MxDbExtents& window) {
    ed::Prompter& prompter = ed::Prompter::instance();
    prompter.init(0, QStringLiteral("Extents Window"));
    QString choice = QStringLiteral("Extents");
    const int result = prompter.getKeyword(QStringLiteral("Plot [Extents/Window] <Extents>: "), choice);
    if (result != kInputNormal && result != kInputNone)
        return false;
    if (choice != QLatin1String("Window"))
        return true;
    MxGePoint3d first, second;
    if (prompter.getPoint(nullptr, QStringLiteral("First corner: "), first) != kInputNormal ||
        prompter.getCorner(first, QStringLiteral("Opposite corner: "), second) != kInputNormal)
        return false;
    window.addPoint(first);
    window.addPoint(second);
    return true;
}

/// With nobody there to ask, scripts replace what they wrote before.
bool mayWrite(const QString& path) {
    const MainWindow* window = MainWindow::instance();
    return !window || window->isUnattended() || ap::mayReplace(path);
}

void exportPlot() {
    const QString path = ap::askPath(QStringLiteral("Export to (.pdf, .svg, .png): "));
    if (path.isEmpty())
        return;
    if (const QString why = whyNoPlotFile(path); !why.isEmpty())
        return tell(why);
    if (!mayWrite(path))
        return;
    PlotView view{ap::DocManager::instance().current()->database(), {}, {}};
    if (!askWindow(view.window))
        return;
    const QString why = plotToFile(view, path);
    tell(why.isEmpty() ? QStringLiteral("Exported %1").arg(path) : why);
}

void print() {
    MainWindow* window = MainWindow::instance();
    if (!window || window->isUnattended()) {
        tell(QStringLiteral("Nobody is there to choose a printer; EXPORT writes a PDF file."));
        return;
    }
    PlotView view{ap::DocManager::instance().current()->database(), {}, {}};
    if (!askWindow(view.window))
        return;
    if (const QString why = printWithDialog(view, window); !why.isEmpty())
        tell(why);
}

} // namespace

void registerPlotCommands(ed::CommandStack& stack) {
    stack.addCommand(ed::kHostGroup, L"EXPORT", L"EXPORT", 0, exportPlot);
    stack.addCommand(ed::kHostGroup, L"PRINT", L"PRINT", 0, print);
}

} // namespace merix::ui
