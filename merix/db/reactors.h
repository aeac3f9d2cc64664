// SPDX-License-Identifier: MIT
// Telling the reactors of an object. Lists may change, and reactors go, while they are being told.
#pragma once

#include "merix/db/access.h"

#include <algorithm>
#include <vector>

namespace merix::db {

/// Calls `tell(MxDbObjectReactor&)` for every transient reactor that is still listed when its turn comes.
template <class Tell> void tellTransient(const MxDbObject& object, Tell tell) {
    const ObjectData& data = object.data();
    if (data.reactors.empty())
        return;
    const std::vector<MxDbReactorEntry> list = data.reactors;
    for (const MxDbReactorEntry& entry : list) {
        if (entry.transient && std::find(data.reactors.begin(), data.reactors.end(), entry) != data.reactors.end())
            tell(*entry.transient);
    }
}

/// Calls `tell(MxDbObject&)` for every persistent reactor that can be opened for read.
template <class Tell> void tellPersistent(const MxDbObject& object, Tell tell) {
    const ObjectData& data = object.data();
    if (data.reactors.empty())
        return;
    const std::vector<MxDbReactorEntry> list = data.reactors;
    for (const MxDbReactorEntry& entry : list) {
        if (!mxdbIsPersistentReactor(entry) ||
            std::find(data.reactors.begin(), data.reactors.end(), entry) == data.reactors.end())
            continue;
        MxDbObject* reactor = nullptr;
        if (mxdbOpenObject(reactor, entry.persistent, Mx::kForRead) != Mx::eOk)
            continue;
        tell(*reactor);
        reactor->close();
    }
}

/// Sets the erased mark, tells the object's reactors and the database's listeners. No undo step.
void setErased(MxDbObject& object, bool erased);

} // namespace merix::db
