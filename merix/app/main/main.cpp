// SPDX-License-Identifier: MIT
#include "merix/app/program.h"

int main(int argc, char** argv) {
    return merix::app::runProgram(argc, argv);
}
