// SPDX-License-Identifier: MIT
#pragma once

#include "merix/io/dxf_form.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace merix::app {

struct Options {
    enum class Mode { kWindow, kConvert, kRender, kVersion, kHelp };
    Mode mode = Mode::kWindow;
    QStringList drawings;
    bool headless = false;
    QString script;                  ///< a file, "-" for standard input; empty: none
    QString input, output;           ///< convert, render
    std::optional<io::DxfForm> form; ///< of the .dxf file that convert writes; none: the one it has
    QSize size{1600, 1200};
    QString module; ///< empty: the voice-note module where it is installed
    bool noModule = false;
    QString error; ///< one line; empty when the command line was understood
};

/// Reads the arguments after the program's name.
Options parseOptions(const QStringList& arguments);

QString helpText();

} // namespace merix::app
