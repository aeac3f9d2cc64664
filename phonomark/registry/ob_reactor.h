// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"

/// Told of the erasure of listed notes: takes them off their document's list and, when it is undone, lists them again
/// at the end. One shared instance serves all notes (phObjRectPtr). Main thread only.
class PhonomarkObReactor : public MxDbObjectReactor {
public:
    static MxRxClass* gpDesc;
    static MxRxClass* rxInit();
    static MxRxObject* makeDefault();
    static MxRxClass* desc() { return gpDesc; }
    MxRxClass* isA() const override { return desc(); }

    void erased(const MxDbObject* object, bool erasing) override;
    void modified(const MxDbObject* object) override;
    void goodbye(const MxDbObject* object) override;
};
