// SPDX-License-Identifier: MIT
// A module that writes down what the host tells it, in the list that the system registry names "TestLog".
#pragma once

#include "host/rx/app.h"

#include <functional>
#include <string>

class TestLog : public MxRxObject {
public:
    std::string text;
    std::function<void(int message)> onMessage; ///< may throw
};

inline int record(int message) {
    if (auto* log = static_cast<TestLog*>(mxrxSysRegistry()->at(L"TestLog"))) {
        log->text += std::to_string(message) + " ";
        if (log->onMessage)
            log->onMessage(message);
    }
    return 0;
}

inline void declareUnloadable(void* appId) {
    static_cast<MxRxDynamicLinker*>(mxrxSysRegistry()->at(L"DynamicLinker"))->setUnloadable(appId, true);
}
