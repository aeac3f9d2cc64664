// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/attachments.h"

#include "phonomark/dbutil/opened.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/entity/ps_reactor.h"

#include <algorithm>

namespace {

/// The note that the attachment reactor `id` belongs to; null when it is none.
MxDbObjectId noteOf(MxDbObjectId id) {
    const Opened<PhonomarkPsReactor> reactor(id, Mx::kForRead);
    return reactor && reactor->noteId().isValid() ? reactor->noteId() : MxDbObjectId();
}

bool isAttachedTo(MxDbObjectId noteId, MxDbObjectId object) {
    const Opened<MxDbPhonomark> note(noteId, Mx::kForRead);
    return note && note->attachObj() == object;
}

bool isAttachmentReactor(MxDbObjectId id) {
    return bool(Opened<PhonomarkPsReactor>(id, Mx::kForRead));
}

} // namespace

bool hasPersistentReactor(const MxDbObject* object, const MxDbObjectId& reactor) {
    const std::vector<MxDbReactorEntry> reactors = object->reactors();
    return !reactor.isNull() && std::any_of(reactors.begin(), reactors.end(),
                                            [&](const auto& entry) { return entry.persistent == reactor; });
}

bool IsAttachedVoice(MxDbObjectId id) {
    const Opened<MxDbObject> object(id, Mx::kForRead);
    if (!object)
        return false;
    const std::vector<MxDbReactorEntry> reactors = object->reactors();
    return std::any_of(reactors.begin(), reactors.end(), [&](const MxDbReactorEntry& entry) {
        return mxdbIsPersistentReactor(entry) && isAttachedTo(noteOf(entry.persistent), id);
    });
}

void CleanPhonomarkPsReactor(MxDbObjectId id) {
    const Opened<MxDbObject> object(id, Mx::kForRead);
    if (!object)
        return;
    for (const MxDbReactorEntry& entry : object->reactors()) {
        if (!mxdbIsPersistentReactor(entry) || !isAttachmentReactor(entry.persistent))
            continue;
        if (object->upgradeOpen() == Mx::eOk && object->removePersistentReactor(entry.persistent) == Mx::eOk)
            if (const Opened<PhonomarkPsReactor> reactor(entry.persistent, Mx::kForWrite); reactor)
                reactor->erase(true);
        break;
    }
}
