// SPDX-License-Identifier: MIT
// The notes of an open drawing from one registry to the next. The list in the drawing names those that stood in it; a
// note that is erased stands in none, and one that comes back while the module is away tells nobody. The host therefore
// keeps the handles of all that was watched: the drawing is never searched for notes.
#include "phonomark/registry/phonomark_manager.h"

#include "host/db/kept_handles.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/registry/object_watch.h"

#include <optional>
#include <set>

namespace {

constexpr wchar_t kModuleKey[] = L"MrxPhonomark";

/// Whether the object is erased; nothing when it cannot be opened.
std::optional<bool> isErased(MxDbObjectId id) {
    const Opened<MxDbObject> object(id, Mx::kForRead, true);
    return object ? std::optional(object->isErased()) : std::nullopt;
}

} // namespace

void PhonomarkManager::keepWatched(const MxApDocument& document) {
    if (MxDbDatabase* database = document.database())
        mxdbKeepHandles(*database, kModuleKey, watchedHandles(database));
}

void PhonomarkManager::resumeWatching(MxApDocument* document) {
    MxDbDatabase* database = document->database();
    std::set<MxDbObjectId> listed;
    if (const CDocData* data = dataOf(document))
        listed.insert(data->ids().begin(), data->ids().end());
    for (const MxDbHandle& handle : database ? mxdbKeptHandles(*database, kModuleKey) : std::vector<MxDbHandle>()) {
        MxDbObjectId id;
        if (database->getMxDbObjectId(id, false, handle, 0) != Mx::eOk)
            continue;
        const bool isListed = listed.count(id) > 0;
        const std::optional<bool> erased = isErased(id);
        if (erased == true)
            watchErasedObject(id, isListed);
        else if (erased == false && !isListed)
            AppendPhonomark(id, document);
    }
}
