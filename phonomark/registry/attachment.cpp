// SPDX-License-Identifier: MIT
// Attaching notes to objects. An attachment lives in the drawing: the note's extension dictionary holds a reactor that
// names the note, and the object lists it.
#include "phonomark/entity/phonomark.h"
#include "phonomark/entity/ps_reactor.h"
#include "phonomark/registry/locked_layer.h"
#include "phonomark/registry/phonomark_manager.h"

#include <memory>

namespace {

constexpr wchar_t kAttachmentKey[] = L"PHONOMARKASSOC";

/// An entity open for write whatever its layer, for as long as the object lives.
class Writing {
public:
    explicit Writing(MxDbObjectId id)
        : m_open(openObjectIgnoreLockLayer(m_entity, id, Mx::kForWrite) == Mx::eOk) {}
    ~Writing() {
        if (m_entity)
            m_entity->close();
    }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    /// Null when it could not be opened for write.
    MxDbEntity* entity() const { return m_open ? m_entity : nullptr; }

private:
    MxDbEntity* m_entity = nullptr;
    bool m_open;
};

/// The id of a new attachment reactor in the note's extension dictionary; null when there is none to write into.
MxDbObjectId addReactor(const MxDbPhonomark& note) {
    MxDbDictionary* dictionary = nullptr;
    if (mxdbOpenObject(dictionary, note.extensionDictionary(), Mx::kForWrite) != Mx::eOk)
        return {};
    auto reactor = std::make_unique<PhonomarkPsReactor>();
    reactor->setNoteId(note.objectId());
    MxDbObjectId id;
    if (dictionary->setAt(kAttachmentKey, reactor.get(), id) == Mx::eOk)
        reactor.release()->close(); // the database's
    dictionary->close();
    return id;
}

MxDbObjectId reactorOf(const MxDbPhonomark& note) {
    MxDbDictionary* dictionary = nullptr;
    if (mxdbOpenObject(dictionary, note.extensionDictionary(), Mx::kForRead) != Mx::eOk)
        return {};
    MxDbObjectId id;
    dictionary->getAt(kAttachmentKey, id);
    dictionary->close();
    return id;
}

} // namespace

bool PhonomarkManager::addNotifier(const MxDbPhonomark* note, MxDbObjectId ownerId) {
    const Writing owner(ownerId);
    if (!owner.entity())
        return false;
    if (note->extensionDictionary().isNull()) {
        const Writing open(note->objectId());
        if (!open.entity() || open.entity()->createExtensionDictionary() != Mx::eOk)
            return false;
    }
    const MxDbObjectId reactor = addReactor(*note);
    return !reactor.isNull() && owner.entity()->addPersistentReactor(reactor) == Mx::eOk;
}

bool PhonomarkManager::delNotifier(MxDbPhonomark* note, MxDbObjectId ownerId) {
    const MxDbObjectId reactorId = reactorOf(*note);
    if (reactorId.isNull())
        return false;
    MxDbObject* owner = nullptr;
    if (mxdbOpenObject(owner, ownerId, Mx::kForWrite) != Mx::eOk)
        return false;
    owner->removePersistentReactor(reactorId);
    owner->close();
    PhonomarkPsReactor* reactor = nullptr;
    if (mxdbOpenObject(reactor, reactorId, Mx::kForWrite) != Mx::eOk)
        return false;
    reactor->erase(true);
    reactor->close();
    note->releaseExtensionDictionary();
    return true;
}
