// SPDX-License-Identifier: MIT
#include "merix/app/program.h"

#include "merix/app/options.h"

#include <cstdio>

namespace merix::app {

int runProgram(int argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const Options options = parseOptions(arguments);
    if (!options.error.isEmpty()) {
        std::fprintf(stderr, "merix: %s\n", qPrintable(options.error));
        return 1;
    }
    std::fputs(qPrintable(helpText()), stdout);
    return 0;
}

} // namespace merix::app
