// SPDX-License-Identifier: MIT
#include "phonomark/app/entry_point.h"

#include "phonomark/app/phonomark_app.h"

namespace {

CPhonomarkApp& application() {
    static CPhonomarkApp app;
    return app;
}

} // namespace

int mxrxEntryPoint(int message, void* appId) {
    CPhonomarkApp& app = application();
    switch (message) {
    case kInitAppMsg:
        return app.On_kInitAppMsg(appId);
    case kUnloadAppMsg:
        return app.On_kUnloadAppMsg(appId);
    case kLoadDwgMsg:
        return app.On_kLoadDwgMsg(appId);
    case kUnloadDwgMsg:
        return app.On_kUnloadDwgMsg(appId);
    case kInvkSubrMsg:
        return app.On_kInvkSubrMsg(appId);
    default: // the framework's handlers of the other messages do nothing
        return 0;
    }
}

unsigned mxrxGetApiVersion() {
    return kMxRxApiVersion;
}
