// SPDX-License-Identifier: MIT
#include "phonomark/registry/object_watch.h"

#include "phonomark/dbutil/opened.h"
#include "phonomark/registry/ob_reactor.h"

#include <algorithm>
#include <set>

namespace {

PhonomarkObReactor g_objectReactor;
std::set<MxDbObjectId> g_watched, g_listedWhileErased;

void addTo(MxDbObjectId id, bool openErased) {
    const Opened<MxDbObject> object(id, Mx::kForRead, openErased);
    if (!object || HasPhonomarkObReactor(object.get()))
        return;
    g_watched.insert(id); // before the reactor is there: none may stay behind that is not remembered
    if (object->addReactor(phObjRectPtr()) != Mx::eOk)
        g_watched.erase(id);
}

bool removeFrom(MxDbObjectId id, bool openErased) {
    const Opened<MxDbObject> object(id, Mx::kForRead, openErased);
    return object && (!HasPhonomarkObReactor(object.get()) || object->removeReactor(phObjRectPtr()) == Mx::eOk);
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
