// SPDX-License-Identifier: MIT
// Attaching notes to objects. An attachment lives in the drawing: the note's extension dictionary holds a reactor that
// names the note, and the object lists it.
#include "phonomark/dbutil/opened.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/entity/ps_reactor.h"
#include "phonomark/registry/locked_layer.h"
#include "phonomark/registry/phonomark_manager.h"

#include <memory>

namespace {

constexpr wchar_t kAttachmentKey[] = L"PHONOMARKASSOC";

/// The entity open for write whatever its layer; empty when that fails.
Opened<MxDbEntity> openWhateverItsLayer(MxDbObjectId id) {
    MxDbEntity* entity = nullptr;
    const Mx::ErrorStatus status = openObjectIgnoreLockLayer(entity, id, Mx::kForWrite);
    Opened<MxDbEntity> opened(entity); // open for read after some failures
    if (status != Mx::eOk)
        return {};
    return opened;
}

/// The id of a new attachment reactor in the note's extension dictionary; null when there is none to write into.
MxDbObjectId addReactor(const MxDbPhonomark& note) {
    Opened<MxDbDictionary> dictionary(note.extensionDictionary(), Mx::kForWrite);
    if (!dictionary)
        return {};
    auto reactor = std::make_unique<PhonomarkPsReactor>();
    reactor->setNoteId(note.objectId());
    MxDbObjectId id;
    if (dictionary->setAt(kAttachmentKey, reactor.get(), id) == Mx::eOk)
        reactor.release()->close(); // the database's
    dictionary.close();
    return id;
}

MxDbObjectId reactorOf(const MxDbPhonomark& note) {
    const Opened<MxDbDictionary> dictionary(note.extensionDictionary(), Mx::kForRead);
    MxDbObjectId id;
    if (dictionary)
        dictionary->getAt(kAttachmentKey, id);
    return id;
}

} // namespace

bool PhonomarkManager::addNotifier(const MxDbPhonomark* note, MxDbObjectId ownerId) {
    const Opened<MxDbEntity> owner = openWhateverItsLayer(ownerId);
    if (!owner)
        return false;
    if (note->extensionDictionary().isNull()) {
        const Opened<MxDbEntity> open = openWhateverItsLayer(note->objectId());
        if (!open || open->createExtensionDictionary() != Mx::eOk)
            return false;
    }
    const MxDbObjectId reactor = addReactor(*note);
    return !reactor.isNull() && owner->addPersistentReactor(reactor) == Mx::eOk;
}

bool PhonomarkManager::delNotifier(MxDbPhonomark* note, MxDbObjectId ownerId) {
    const MxDbObjectId reactorId = reactorOf(*note);
    if (reactorId.isNull())
        return false;
    Opened<MxDbObject> owner(ownerId, Mx::kForWrite);
    if (!owner)
        return false;
    owner->removePersistentReactor(reactorId);
    owner.close();
    Opened<PhonomarkPsReactor> reactor(reactorId, Mx::kForWrite);
    if (!reactor)
        return false;
    reactor->erase(true);
    reactor.close();
    note->releaseExtensionDictionary();
    return true;
}
