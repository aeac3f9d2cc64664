// SPDX-License-Identifier: MIT
#include "tests/merix/rx/modules/recording_module.h"

class Application final : public MxRxMrxApp {
public:
    Application() { m_unloadable = m_servesSeveralDocuments = true; }
    void RegisterServerComponents() override {}
};

extern "C" int mxrxEntryPoint(int message, void* appId) {
    if (message == kInitAppMsg)
        Application().On_kInitAppMsg(appId);
    return record(message);
}
extern "C" unsigned mxrxGetApiVersion() {
    return kMxRxApiVersion;
}
