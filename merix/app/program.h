// SPDX-License-Identifier: MIT
// The program from its command line to its exit status.
#pragma once

namespace merix::app {

/// Runs Merix as its arguments say. 0, or 1 with one line on standard error that says what went wrong and where.
int runProgram(int argc, char** argv);

} // namespace merix::app
