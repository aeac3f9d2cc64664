// SPDX-License-Identifier: MIT
// Answers that it could not take everything back.
#include "tests/merix/rx/modules/recording_module.h"

extern "C" int mxrxEntryPoint(int message, void* appId) {
    if (message == kInitAppMsg)
        declareUnloadable(appId);
    record(message);
    return message == kUnloadAppMsg ? 3 : 0;
}
extern "C" unsigned mxrxGetApiVersion() {
    return kMxRxApiVersion;
}
