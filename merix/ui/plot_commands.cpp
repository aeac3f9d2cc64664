// SPDX-License-Identifier: MIT
#include "merix/ed/command_stack.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"
#include "merix/ui/main_window.h"
#include "merix/ui/plot.h"

#include <QDir>

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

void exportPlot() {
    QString path;
    if (ed::Prompter::instance().getString(true, QStringLiteral("Export to (.pdf, .svg, .png): "), path) !=
        kInputNormal)
        return;
    if (path.startsWith(QLatin1String("~/")))
        path = QDir::homePath() + path.mid(1);
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
    if (askWindow(view.window))
        printWithDialog(view, window);
}

} // namespace

void registerPlotCommands(ed::CommandStack& stack) {
    stack.addCommand(ed::kHostGroup, L"EXPORT", L"EXPORT", 0, exportPlot);
    stack.addCommand(ed::kHostGroup, L"PRINT", L"PRINT", 0, print);
}

} // namespace merix::ui
