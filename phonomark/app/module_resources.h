// SPDX-License-Identifier: MIT
#pragma once

#include "host/ap/document.h"
#include "phonomark/app/module_state.h"

/// The module's dialog templates are in force as long as this lives. Main thread only.
class ModuleResources {
public:
    ModuleResources() {
        if (MxApDocManager* manager = mxDocManagerPtr())
            manager->pushResourceHandle(_hdllInstance);
    }
    ~ModuleResources() {
        if (MxApDocManager* manager = mxDocManagerPtr())
            manager->popResourceHandle();
    }
    ModuleResources(const ModuleResources&) = delete;
    ModuleResources& operator=(const ModuleResources&) = delete;
};
