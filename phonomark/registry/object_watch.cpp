// SPDX-License-Identifier: MIT
#include "phonomark/registry/object_watch.h"

#include "phonomark/registry/ob_reactor.h"

#include <algorithm>
#include <set>

namespace {

PhonomarkObReactor g_objectReactor;
std::set<MxDbObjectId> g_watched, g_listedWhileErased;

void addTo(MxDbObjectId id, bool openErased) {
    MxDbObject* object = nullptr;
    if (mxdbOpenObject(object, id, Mx::kForRead, openErased) != Mx::eOk)
        return;
    if (!HasPhonomarkObReactor(object) && object->addReactor(phObjRectPtr()) == Mx::eOk)
        g_watched.insert(id);
    object->close();
}

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
    addTo(id, false);
}

void watchErasedObject(MxDbObjectId id, bool isListed) {
    addTo(id, true);
    if (isListed)
        g_listedWhileErased.insert(id);
}

bool takeListedWhileErased(MxDbObjectId id) {
    return g_listedWhileErased.erase(id) > 0;
}

void unwatchObject(MxDbObjectId id) {
    g_listedWhileErased.erase(id); // whoever stops watching has taken it off the list
    if (removeFrom(id, false))
        g_watched.erase(id);
}

void forgetObject(MxDbObjectId id) {
    g_watched.erase(id);
    g_listedWhileErased.erase(id);
}

std::vector<MxDbHandle> watchedHandles(const MxDbDatabase* database) {
    std::vector<MxDbHandle> handles;
    for (const MxDbObjectId& id : g_watched)
        if (id.database() == database)
            handles.push_back(id.handle());
    std::sort(handles.begin(), handles.end());
    return handles;
}

void unwatchDatabase(const MxDbDatabase* database) {
    for (auto id = g_watched.begin(); id != g_watched.end();) {
        if (id->database() == database && removeFrom(*id, true))
            id = g_watched.erase(id);
        else
            ++id;
    }
}
