// SPDX-License-Identifier: MIT
// Drawings on paper: printed, or in files that are plots. Entities are asked to draw for a plot, so voice notes stay
// away; lines have their weights.
#pragma once

#include "host/db/database.h"

#include <QSizeF>
#include <QString>

class QPainter;
class QPrinter;
class QWidget;

namespace merix::ed {
class CommandStack;
}

namespace merix::ui {

/// What is plotted.
struct PlotView {
    MxDbDatabase* database = nullptr;
    MxDbObjectId space; ///< null: the current one
    MxDbExtents window; ///< empty: all there is
};

/// Paints onto a sheet of `size` dots, black on white where the drawing says neither: the whole of the window, in the
/// middle.
void plot(QPainter& painter, const QSizeF& size, double dotsPerInch, const PlotView& view);

/// Writes a sheet of A3, upright or lying as the drawing is, as .pdf, .svg or .png by the suffix: the whole file, or
/// none and what stood there before. Empty, or one line that says why not.
QString plotToFile(const PlotView& view, const QString& path);

/// Empty when the path ends like one of those, or the line that says that it does not.
QString whyNoPlotFile(const QString& path);

/// Prints one page. Empty, or one line that says why not.
QString plotToPrinter(const PlotView& view, QPrinter& printer);

/// The same after asking for the printer; empty too when the user did not want to.
QString printWithDialog(const PlotView& view, QWidget* parent);

/// PRINT and EXPORT.
void registerPlotCommands(ed::CommandStack& stack);

} // namespace merix::ui
