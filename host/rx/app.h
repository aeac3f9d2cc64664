// SPDX-License-Identifier: MIT
// The framework that a module compiles into itself: the application object that receives the host's messages.
#pragma once

#include "host/rx/registry.h"

/// Messages that the host sends to `mxrxEntryPoint`. Values are part of the module interface.
enum MxRxAppMessage : int {
    kNullMsg = 0,
    kInitAppMsg = 1,
    kUnloadAppMsg = 2, ///< an answer other than 0: not all could be taken back, the module has to stay mapped
    kLoadDwgMsg = 3,
    kUnloadDwgMsg = 4,
    kInvkSubrMsg = 5,
    kCfgMsg = 6,
    kEndMsg = 7,
    kQuitMsg = 8,
    kSaveMsg = 9,
    kDependencyMsg = 10,
    kNoDependencyMsg = 11,
    kOleUnloadAppMsg = 12,
    kPreQuitMsg = 13,
    kInitDialogMsg = 14,
    kEndDialogMsg = 15,
};

/// Host API version of this contract: 2025 in the high 16 bits. A module returns it from `mxrxGetApiVersion`.
constexpr unsigned kMxRxApiVersion = 2025U << 16;

/// Entry points that every module exports with C linkage.
using MxRxEntryPoint = int (*)(int message, void* appId);
using MxRxGetApiVersion = unsigned (*)();

/// Base of a module's application object. Handlers run on the main thread; 0 means success.
/// Objects of it are statics of a final class; none is deleted through the base.
class MxRxDbxApp {
public:
    virtual int On_kInitAppMsg(void* appId) {
        if (auto* linker = dynamicLinker()) {
            linker->setUnloadable(appId, m_unloadable);
            linker->setServesSeveralDocuments(appId, m_servesSeveralDocuments);
        }
        return 0;
    }
    virtual int On_kUnloadAppMsg(void*) { return 0; }
    virtual int On_kLoadDwgMsg(void*) { return 0; }
    virtual int On_kUnloadDwgMsg(void*) { return 0; }
    virtual int On_kInvkSubrMsg(void*) { return 0; }
    virtual int On_kCfgMsg(void*) { return 0; }
    virtual int On_kEndMsg(void*) { return 0; }
    virtual int On_kQuitMsg(void*) { return 0; }
    virtual int On_kSaveMsg(void*) { return 0; }
    virtual int On_kDependencyMsg(void*) { return 0; }
    virtual int On_kNoDependencyMsg(void*) { return 0; }
    virtual int On_kOleUnloadAppMsg(void*) { return 0; }
    virtual int On_kPreQuitMsg(void*) { return 0; }
    virtual int On_kInitDialogMsg(void*) { return 0; }
    virtual int On_kEndDialogMsg(void*) { return 0; }
    virtual int On_kNullMsg(void*) { return 0; }
    virtual void RegisterServerComponents() = 0;

protected:
    ~MxRxDbxApp() = default; // not virtual: the first virtual function is the handler of message 1

    bool m_unloadable = false;
    bool m_servesSeveralDocuments = false;

private:
    static MxRxDynamicLinker* dynamicLinker() {
        MxRxObject* object = mxrxSysRegistry()->at(L"DynamicLinker");
        return object && object->isKindOf(MxRxDynamicLinker::desc()) ? static_cast<MxRxDynamicLinker*>(object)
                                                                     : nullptr;
    }
};

/// Base of an application object of a module with commands and windows.
class MxRxMrxApp : public MxRxDbxApp {
protected:
    ~MxRxMrxApp() = default;
};
