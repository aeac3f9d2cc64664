// SPDX-License-Identifier: MIT
#include "tests/merix/rx/modules/recording_module.h"

extern "C" int mxrxEntryPoint(int message, void*) {
    record(message);
    return message == kInitAppMsg ? 7 : 0;
}
extern "C" unsigned mxrxGetApiVersion() {
    return kMxRxApiVersion;
}
