// SPDX-License-Identifier: MIT
#include "tests/merix/rx/modules/recording_module.h"

extern "C" int mxrxEntryPoint(int message, void*) {
    return record(message);
}
extern "C" unsigned mxrxGetApiVersion() {
    return 2024U << 16 | 3;
}
