// SPDX-License-Identifier: MIT
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

namespace merix::app {

struct Options {
    enum class Mode { kWindow, kConvert, kRender, kVersion, kHelp };
    Mode mode = Mode::kWindow;
    QStringList drawings;
    bool headless = false;
    QString script;        ///< a file, "-" for standard input; empty: none
    QString input, output; ///< convert, render
    QSize size{1600, 1200};
    QString module; ///< empty: the voice-note module where it is installed
    bool noModule = false;
    QString error; ///< one line; empty when the command line was understood
};

/// Reads the arguments after the program's name.
Options parseOptions(const QStringList& arguments);

QString helpText();

} // namespace merix::app
