// SPDX-License-Identifier: MIT
// The functions that the module exports; everything else in it is hidden.
#pragma once

extern "C" {

/// Receives the host's messages (MxRxAppMessage). The first message of any kind makes the application object. Messages
/// above 15 are ignored. Returns the handler's result, 0 for success. Main thread only.
__attribute__((visibility("default"))) int mxrxEntryPoint(int message, void* appId);

/// The host API version that the module was built against.
__attribute__((visibility("default"))) unsigned mxrxGetApiVersion();
}
