// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/entity.h"

/// The entity reactor: a registered class without behaviour of its own; nothing carries an instance.
class PhonomarkEnReactor : public MxDbEntityReactor {
public:
    static MxRxClass* gpDesc;
    static MxRxClass* rxInit();
    static MxRxObject* makeDefault();
    static MxRxClass* desc() { return gpDesc; }
    MxRxClass* isA() const override { return desc(); }
};
