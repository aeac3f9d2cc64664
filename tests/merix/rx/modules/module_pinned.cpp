// SPDX-License-Identifier: MIT
// Linked so that the system never unmaps it.
#include "tests/merix/rx/modules/recording_module.h"

extern "C" int mxrxEntryPoint(int message, void* appId) {
    if (message == kInitAppMsg)
        declareUnloadable(appId);
    return record(message);
}
/// A command of it.
extern "C" void pinnedCommand() {
    record(100);
}
extern "C" unsigned mxrxGetApiVersion() {
    return kMxRxApiVersion;
}
