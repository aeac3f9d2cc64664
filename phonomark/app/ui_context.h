// SPDX-License-Identifier: MIT
#pragma once

#include "host/ed/ui_context.h"

/// A context menu without entries.
class PhonomarkUICtxApp : public MxEdUIContext {
public:
    void* getMenuContext() override { return nullptr; }
    void onCommand(unsigned) override {}
};
