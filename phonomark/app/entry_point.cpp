// SPDX-License-Identifier: MIT
#include "phonomark/app/entry_point.h"

#include "phonomark/app/phonomark_app.h"
#include "phonomark/dbutil/border.h"

namespace {

/// What a message is answered with whose handler failed.
constexpr int kFailed = 1;

const char* nameOf(int message) {
    switch (message) {
    case kInitAppMsg:
        return "the module's load";
    case kUnloadAppMsg:
        return "the module's unload";
    case kLoadDwgMsg:
        return "a drawing's load";
    case kUnloadDwgMsg:
        return "a drawing's unload";
    case kInvkSubrMsg:
        return "a function's call";
    default:
        return "a message";
    }
}

CPhonomarkApp& application() {
    static CPhonomarkApp app;
    return app;
}

} // namespace

int mxrxEntryPoint(int message, void* appId) try {
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
} catch (...) {
    return failed(nameOf(message), kFailed);
}

unsigned mxrxGetApiVersion() {
    return kMxRxApiVersion;
}
