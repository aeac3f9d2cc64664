// SPDX-License-Identifier: MIT
#include "tests/merix/rx/modules/recording_module.h"

#include <stdexcept>

extern "C" int mxrxEntryPoint(int message, void*) {
    record(message);
    throw std::runtime_error("on purpose");
}
extern "C" unsigned mxrxGetApiVersion() {
    return kMxRxApiVersion;
}
