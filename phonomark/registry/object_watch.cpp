// SPDX-License-Identifier: MIT
#include "phonomark/registry/object_watch.h"

#include "phonomark/registry/ob_reactor.h"

#include <algorithm>
#include <set>

namespace {

PhonomarkObReactor g_objectReactor;
std::set<MxDbObjectId> g_watched;

bool removeFrom(MxDbObjectId id, bool openErased) {
    MxDbObject* object = nullptr;
    if (mxdbOpenObject(object, id, Mx::kForRead, openErased) != Mx::eOk)
        return false;
    const bool removed = !HasPhonomarkObReactor(object) || object->removeReactor(phObjRectPtr()) == Mx::eOk;
    object->close();
    return removed;
}

} // namespace

MxDbObjectReactor* phObjRectPtr() {
    return &g_objectReactor;
}

bool HasPhonomarkObReactor(const MxDbObject* object) {
    const std::vector<MxDbReactorEntry> reactors = object->reactors();
    return std::any_of(reactors.begin(), reactors.end(), [](const MxDbReactorEntry& entry) {
        return !mxdbIsPersistentReactor(entry) && entry.transient &&
               entry.transient->isKindOf(PhonomarkObReactor::desc());
    });
}

void watchObject(MxDbObjectId id) {
    MxDbObject* object = nullptr;
    if (mxdbOpenObject(object, id, Mx::kForRead) != Mx::eOk)
        return;
    if (!HasPhonomarkObReactor(object) && object->addReactor(phObjRectPtr()) == Mx::eOk)
        g_watched.insert(id);
    object->close();
}

void unwatchObject(MxDbObjectId id) {
    if (removeFrom(id, false))
        g_watched.erase(id);
}

void forgetObject(MxDbObjectId id) {
    g_watched.erase(id);
}

void unwatchDatabase(const MxDbDatabase* database) {
    for (auto id = g_watched.begin(); id != g_watched.end();) {
        if (id->database() == database && removeFrom(*id, true))
            id = g_watched.erase(id);
        else
            ++id;
    }
}
