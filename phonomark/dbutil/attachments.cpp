// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/attachments.h"

#include "phonomark/entity/phonomark.h"
#include "phonomark/entity/ps_reactor.h"

#include <algorithm>

namespace {

/// The note that the attachment reactor `id` belongs to; null when it is none.
MxDbObjectId noteOf(MxDbObjectId id) {
    PhonomarkPsReactor* reactor = nullptr;
    if (mxdbOpenObject(reactor, id, Mx::kForRead) != Mx::eOk)
        return {};
    const MxDbObjectId note = reactor->noteId();
    reactor->close();
    return note.isValid() ? note : MxDbObjectId();
}

bool isAttachedTo(MxDbObjectId noteId, MxDbObjectId object) {
    MxDbPhonomark* note = nullptr;
    if (mxdbOpenObject(note, noteId, Mx::kForRead) != Mx::eOk)
        return false;
    const bool attached = note->attachObj() == object;
    note->close();
    return attached;
}

bool isAttachmentReactor(MxDbObjectId id) {
    PhonomarkPsReactor* reactor = nullptr;
    if (mxdbOpenObject(reactor, id, Mx::kForRead) != Mx::eOk)
        return false;
    reactor->close();
    return true;
}

} // namespace

bool hasPersistentReactor(const MxDbObject* object, const MxDbObjectId& reactor) {
    const std::vector<MxDbReactorEntry> reactors = object->reactors();
    return !reactor.isNull() && std::any_of(reactors.begin(), reactors.end(),
                                            [&](const auto& entry) { return entry.persistent == reactor; });
}

bool IsAttachedVoice(MxDbObjectId id) {
    MxDbObject* object = nullptr;
    if (mxdbOpenObject(object, id, Mx::kForRead) != Mx::eOk)
        return false;
    const std::vector<MxDbReactorEntry> reactors = object->reactors();
    const bool attached = std::any_of(reactors.begin(), reactors.end(), [&](const MxDbReactorEntry& entry) {
        return mxdbIsPersistentReactor(entry) && isAttachedTo(noteOf(entry.persistent), id);
    });
    object->close();
    return attached;
}

void CleanPhonomarkPsReactor(MxDbObjectId id) {
    MxDbObject* object = nullptr;
    if (mxdbOpenObject(object, id, Mx::kForRead) != Mx::eOk)
        return;
    for (const MxDbReactorEntry& entry : object->reactors()) {
        if (!mxdbIsPersistentReactor(entry) || !isAttachmentReactor(entry.persistent))
            continue;
        PhonomarkPsReactor* reactor = nullptr;
        if (object->upgradeOpen() == Mx::eOk && object->removePersistentReactor(entry.persistent) == Mx::eOk &&
            mxdbOpenObject(reactor, entry.persistent, Mx::kForWrite) == Mx::eOk) {
            reactor->erase(true);
            reactor->close();
        }
        break;
    }
    object->close();
}
