// SPDX-License-Identifier: MIT
// The host's system registry: named services found at run time. Main thread only.
#pragma once

#include "host/rx/rx_class.h"

/// Keys: "MERIX_REGISTERED_COMMANDS" is an MxEdCommandStack, "DynamicLinker" an MxRxDynamicLinker, "MxEditor" an
/// MxEditor. The registry does not own what it names.
class MxRxSystemRegistry {
public:
    virtual ~MxRxSystemRegistry() = default;
    /// The object under `key`, or null.
    virtual MxRxObject* at(const wchar_t* key) const = 0;
};

MxRxSystemRegistry* mxrxSysRegistry();

/// What a module tells the loader about itself.
class MxRxDynamicLinker : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    /// The module of this application id may be unloaded while the host runs.
    virtual void setUnloadable(void* appId, bool unloadable) = 0;
    /// The module of this application id can serve several open documents.
    virtual void setServesSeveralDocuments(void* appId, bool several) = 0;
};
