// SPDX-License-Identifier: MIT
// What the registrations of the module's run-time classes have in common. Main thread only.
#pragma once

#include "host/rx/rx_class.h"

/// A default instance in a block of the host heap, or null when there is no memory for it.
template <class T> MxRxObject* makeOnHostHeap() {
    void* block = mxHeapAlloc(sizeof(T));
    if (!block)
        return nullptr;
    try {
        return new (block) T;
    } catch (...) {
        mxHeapFree(block);
        return nullptr;
    }
}

/// `known` while it is the class registered under `name`, else null: the class has to be made. Stops the host with
/// "Class mismatch" when another class stands under a name that was registered before.
MxRxClass* registeredClass(MxRxClass* known, const wchar_t* name);

/// `made`, or stops the host with "Class mismatch" when it is null because the name is taken.
MxRxClass* requireClass(MxRxClass* made);

/// Registers a class that is not filed, with version 1 and `T` as what its pseudo-constructor makes.
template <class T> MxRxClass* registerUnfiledClass(MxRxClass*& known, const wchar_t* name, const MxRxClass* parent) {
    if (MxRxClass* found = registeredClass(known, name))
        return found;
    return known = requireClass(newMxRxClass(name, parent->name(), 1, &T::makeDefault));
}
