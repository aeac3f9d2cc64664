// SPDX-License-Identifier: MIT
// The open/close rules. An object is open for read by any number, or for write by one; what a write-open changed is
// recorded and told when it is closed.
#include "host/db/dictionary.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/db/reactors.h"
#include "merix/db/tables.h"
#include "merix/rx/class_registry.h"

#include <limits>
#include <utility>

using namespace merix::db;

MERIX_RX_CLASS(MxDbObject, "MxDbObject", MxRxObject, nullptr, "")

namespace {

bool isOnLockedLayer(const MxDbObject& object) {
    if (!object.data().isEntity)
        return false;
    const MxDbObject* layer = DatabaseImp::peek(traits(static_cast<const MxDbEntity&>(object)).layer);
    return layer && layer->isKindOf(LayerRecord::desc()) && static_cast<const LayerRecord*>(layer)->isLocked();
}

/// The state at the beginning of a write-open.
void beginWriting(MxDbObject& object) {
    ObjectData& data = object.data();
    data.readers = 0;
    data.writer = true;
    data.changedInOpen = data.graphicsChangedInOpen = false;
    data.erasedAtOpen = data.stub->erased;
    data.beforeImage.reset();
}

void recordUndo(MxDbObject& object) {
    ObjectData& data = object.data();
    UndoRecorder& undo = data.stub->database->undo;
    const MxDbObjectId id = object.objectId();
    if (data.beforeImage)
        undo.record({UndoStep::Kind::kModify, id, std::move(*data.beforeImage), object.isA()->name()});
    data.beforeImage.reset();
    if (data.stub->erased != data.erasedAtOpen)
        undo.record({data.stub->erased ? UndoStep::Kind::kErase : UndoStep::Kind::kUnerase, id, {}, {}});
}

void tellClosed(MxDbObject& object, bool wasNew, bool changed, bool graphics) {
    DatabaseImp& database = *object.data().stub->database;
    if (wasNew) {
        if (!object.isErased())
            database.notifyAppended(object);
    } else if (changed) {
        database.notifyModified(object);
    } else if (graphics) {
        database.notifyGraphicsModified(object);
    }
    if (changed && !wasNew) {
        tellTransient(object, [&](MxDbObjectReactor& reactor) { reactor.modified(&object); });
        tellPersistent(object, [&](MxDbObject& reactor) { reactor.modified(&object); });
    }
    if (object.data().isEntity && (changed || graphics)) {
        auto* entity = static_cast<MxDbEntity*>(&object);
        tellPersistent(object, [&](MxDbObject& reactor) { reactor.modifiedGraphics(entity); });
    }
    tellPersistent(object, [&](MxDbObject& reactor) { reactor.objectClosed(object.objectId()); });
}

void closeWriter(MxDbObject& object) {
    ObjectData& data = object.data();
    recordUndo(object);
    const bool wasNew = std::exchange(data.isNew, false);
    const bool changed = std::exchange(data.changedInOpen, false);
    const bool graphics = std::exchange(data.graphicsChangedInOpen, false);
    if (changed)
        ++data.graphicsVersion;
    // Those who are told may read the object.
    data.writer = false;
    const ReadAccess readable(object);
    tellClosed(object, wasNew, changed, graphics);
}

/// Things owned by things owned: deeper ones stay, so that a damaged file cannot use up the stack.
constexpr int kDeepestErase = 200;
int g_eraseDepth = 0;

struct EraseLevel {
    EraseLevel() { ++g_eraseDepth; }
    ~EraseLevel() { --g_eraseDepth; }
    EraseLevel(const EraseLevel&) = delete;
    EraseLevel& operator=(const EraseLevel&) = delete;
};

/// A file may name any object there, even the named objects dictionary: it counts only when it is the object's own.
bool ownsExtensionDictionary(const MxDbObject& object) {
    const ObjectData& data = object.data();
    const MxDbObject* dictionary = DatabaseImp::peek(data.extensionDictionary, true);
    if (!dictionary || dictionary == &object || !dictionary->isKindOf(MxDbDictionary::desc()))
        return false;
    const bool owned = dictionary->ownerId().isNull() || dictionary->ownerId() == object.objectId();
    return owned && (!data.stub || data.stub->database->roots.namedObjects != data.extensionDictionary);
}

void eraseExtensionDictionary(const MxDbObject& object, bool erasing) {
    MxDbDictionary* dictionary = nullptr;
    if (!ownsExtensionDictionary(object) ||
        mxdbOpenObject(dictionary, object.data().extensionDictionary, Mx::kForWrite, !erasing) != Mx::eOk)
        return;
    dictionary->erase(erasing);
    dictionary->close();
}

} // namespace

namespace merix::db {

std::string undoImage(const MxDbObject& object) {
    const ObjectData& data = object.data();
    if (data.isEntity && static_cast<const EntityData&>(data).traits.layer.handle().isNull())
        data.stub->database->listImplicitLayers(); // an image names the layer by its handle
    const ReadAccess readable(object);
    return dwgImage(object, MxDbFilerType::kUndo);
}

void setErased(MxDbObject& object, bool erased) {
    ObjectData& data = object.data();
    data.stub->erased = erased;
    const ReadAccess readable(object);
    data.stub->database->notifyErased(object, erased);
    tellTransient(object, [&](MxDbObjectReactor& reactor) { reactor.erased(&object, erased); });
    tellPersistent(object, [&](MxDbObject& reactor) { reactor.erased(&object, erased); });
}

} // namespace merix::db

MxDbObject::MxDbObject()
    : MxDbObject(new ObjectData) {}

MxDbObject::~MxDbObject() {
    tellTransient(*this, [this](MxDbObjectReactor& reactor) { reactor.goodbye(this); });
    if (m_data->isEntity)
        delete static_cast<EntityData*>(m_data);
    else
        delete m_data;
}

MxDbObjectId MxDbObject::objectId() const {
    return MxDbObjectId(m_data->stub);
}

MxDbObjectId MxDbObject::ownerId() const {
    return m_data->owner;
}

MxDbDatabase* MxDbObject::database() const {
    return m_data->stub ? &m_data->stub->database->self() : nullptr;
}

bool MxDbObject::isErased() const {
    return m_data->stub && m_data->stub->erased;
}

void MxDbObject::assertReadEnabled() const {
    if (m_data->stub && !m_data->writer && m_data->readers == 0)
        mxrx_abort((std::wstring(L"read of an object that is not open: ") + isA()->name()).c_str());
}

void MxDbObject::assertWriteEnabled() {
    ObjectData& data = *m_data;
    if (!data.stub || data.restoring)
        return;
    if (!data.writer)
        mxrx_abort((std::wstring(L"change of an object that is not open for write: ") + isA()->name()).c_str());
    DatabaseImp& database = *data.stub->database;
    database.markChanged(*this);
    if (std::exchange(data.changedInOpen, true) || data.isNew)
        return;
    if (!database.undo.isRecording())
        database.undo.noteUnrecorded();
    else if (!data.beforeImage)
        data.beforeImage = std::make_unique<std::string>(undoImage(*this));
    tellPersistent(*this, [this](MxDbObject& reactor) { reactor.openedForModify(this); });
}

Mx::ErrorStatus MxDbObject::upgradeOpen() {
    ObjectData& data = *m_data;
    if (data.writer)
        return Mx::eOk;
    if (!data.stub || data.readers == 0)
        return Mx::eNotOpen;
    if (data.readers > 1)
        return Mx::eOpenForRead;
    if (isOnLockedLayer(*this))
        return Mx::eOnLockedLayer;
    if (const auto status = subOpen(Mx::kForWrite); status != Mx::eOk)
        return status;
    beginWriting(*this);
    return Mx::eOk;
}

Mx::ErrorStatus MxDbObject::close() {
    ObjectData& data = *m_data;
    if (!data.stub || (!data.writer && data.readers == 0))
        return Mx::eNotOpen;
    const auto status = subClose();
    if (data.writer)
        closeWriter(*this);
    else
        --data.readers;
    return status;
}

Mx::ErrorStatus MxDbObject::cancel() {
    ObjectData& data = *m_data;
    if (!data.writer)
        return close();
    const auto status = subCancel();
    if (const auto image = std::exchange(data.beforeImage, nullptr)) {
        readDwgImage(*this, *image, MxDbFilerType::kUndo);
        ++data.graphicsVersion;
    }
    if (data.isNew)
        erase(true);
    else if (data.stub->erased != data.erasedAtOpen)
        setErased(*this, data.erasedAtOpen);
    recordUndo(*this);
    const bool changed = std::exchange(data.changedInOpen, false) || data.graphicsChangedInOpen;
    data.isNew = data.graphicsChangedInOpen = data.writer = false;
    const ReadAccess readable(*this);
    if (changed)
        data.stub->database->notifyGraphicsModified(*this);
    tellPersistent(*this, [this](MxDbObject& reactor) { reactor.cancelled(this); });
    return status;
}

Mx::ErrorStatus MxDbObject::erase(bool erasing) {
    ObjectData& data = *m_data;
    if (!data.stub)
        return Mx::eNoDatabase;
    if (!data.writer)
        return Mx::eNotOpen;
    if (data.stub->erased == erasing)
        return erasing ? Mx::eWasErased : Mx::eOk;
    data.stub->database->markChanged(*this);
    if (g_eraseDepth < kDeepestErase) {
        const EraseLevel level;
        if (isKindOf(MxDbDictionary::desc()))
            static_cast<MxDbDictionary*>(this)->erasing(erasing);
        eraseExtensionDictionary(*this, erasing);
    }
    setErased(*this, erasing);
    return Mx::eOk;
}

MxDbObjectId MxDbObject::extensionDictionary() const {
    return DatabaseImp::peek(m_data->extensionDictionary) && ownsExtensionDictionary(*this)
               ? m_data->extensionDictionary
               : MxDbObjectId();
}

Mx::ErrorStatus MxDbObject::createExtensionDictionary() {
    if (!m_data->stub)
        return Mx::eNoDatabase;
    if (!extensionDictionary().isNull())
        return Mx::eHasExtensionDictionary;
    assertWriteEnabled();
    auto dictionary = std::make_unique<MxDbDictionary>();
    MxDbObjectId id;
    if (const auto status = m_data->stub->database->append(dictionary.get(), objectId(), id); status != Mx::eOk)
        return status;
    m_data->extensionDictionary = id;
    return dictionary.release()->close();
}

Mx::ErrorStatus MxDbObject::releaseExtensionDictionary() {
    if (!m_data->stub || !m_data->writer)
        return Mx::eNotOpen;
    if (extensionDictionary().isNull())
        return Mx::eKeyNotFound;
    MxDbDictionary* dictionary = nullptr;
    if (const auto status = mxdbOpenObject(dictionary, m_data->extensionDictionary, Mx::kForRead); status != Mx::eOk)
        return status;
    auto status = dictionary->entries().empty() ? dictionary->upgradeOpen() : Mx::eNotEmpty;
    if (status == Mx::eOk) {
        assertWriteEnabled();
        status = dictionary->erase();
        m_data->extensionDictionary = MxDbObjectId();
    }
    dictionary->close();
    return status;
}

std::vector<MxDbReactorEntry> MxDbObject::reactors() const {
    return m_data->reactors;
}

Mx::ErrorStatus MxDbObject::addReactor(MxDbObjectReactor* reactor) const {
    if (!reactor)
        return Mx::eInvalidInput;
    assertReadEnabled();
    auto& list = m_data->reactors;
    if (const MxDbReactorEntry entry{reactor, {}}; std::find(list.begin(), list.end(), entry) == list.end())
        list.push_back(entry);
    return Mx::eOk;
}

Mx::ErrorStatus MxDbObject::removeReactor(MxDbObjectReactor* reactor) const {
    assertReadEnabled();
    return std::erase(m_data->reactors, MxDbReactorEntry{reactor, {}}) ? Mx::eOk : Mx::eKeyNotFound;
}

Mx::ErrorStatus MxDbObject::addPersistentReactor(MxDbObjectId reactor) {
    if (reactor.isNull())
        return Mx::eNullObjectId;
    if (!m_data->stub || !m_data->writer)
        return Mx::eNotOpen;
    if (reactor.stub()->database != m_data->stub->database)
        return Mx::eWrongDatabase;
    auto& list = m_data->reactors;
    if (const MxDbReactorEntry entry{nullptr, reactor}; std::find(list.begin(), list.end(), entry) == list.end()) {
        assertWriteEnabled();
        list.push_back(entry);
    }
    return Mx::eOk;
}

Mx::ErrorStatus MxDbObject::removePersistentReactor(MxDbObjectId reactor) {
    if (reactor.isNull())
        return Mx::eNullObjectId;
    if (!m_data->stub || !m_data->writer)
        return Mx::eNotOpen;
    const auto& list = m_data->reactors;
    const MxDbReactorEntry entry{nullptr, reactor};
    if (std::find(list.begin(), list.end(), entry) == list.end())
        return Mx::eKeyNotFound;
    assertWriteEnabled(); // those who are told of the change may change the list
    std::erase(m_data->reactors, entry);
    return Mx::eOk;
}

Mx::ErrorStatus MxDbObject::subOpen(Mx::OpenMode) {
    return Mx::eOk;
}
Mx::ErrorStatus MxDbObject::subCancel() {
    return Mx::eOk;
}
Mx::ErrorStatus MxDbObject::subClose() {
    return Mx::eOk;
}

void MxDbObject::openedForModify(const MxDbObject*) {}
void MxDbObject::cancelled(const MxDbObject*) {}
void MxDbObject::objectClosed(MxDbObjectId) {}
void MxDbObject::goodbye(const MxDbObject*) {}
void MxDbObject::copied(const MxDbObject*, const MxDbObject*) {}
void MxDbObject::erased(const MxDbObject*, bool) {}
void MxDbObject::modified(const MxDbObject*) {}
void MxDbObject::modifiedGraphics(const MxDbEntity*) {}
void MxDbObject::modifiedXData(const MxDbObject*) {}
void MxDbObject::subObjModified(const MxDbObject*, const MxDbObject*) {}
void MxDbObject::modifyUndone(const MxDbObject*) {}
void MxDbObject::reappended(const MxDbObject*) {}
void MxDbObject::unappended(const MxDbObject*) {}

MERIX_RX_CLASS(MxDbObjectReactor, "MxDbObjectReactor", MxRxObject, nullptr, "")

void MxDbObjectReactor::erased(const MxDbObject*, bool) {}
void MxDbObjectReactor::modified(const MxDbObject*) {}
void MxDbObjectReactor::goodbye(const MxDbObject*) {}

Mx::ErrorStatus mxdbOpenObject(MxDbObject*& object, MxDbObjectId id, Mx::OpenMode mode, bool openErased) {
    object = nullptr;
    ObjectStub* stub = id.stub();
    if (!stub)
        return Mx::eNullObjectId;
    if (!stub->object)
        return Mx::eNotResident;
    if (stub->erased && !openErased)
        return Mx::eWasErased;
    MxDbObject* found = stub->object;
    ObjectData& data = found->data();
    if (data.writer)
        return Mx::eOpenForWrite;
    const bool write = mode == Mx::kForWrite;
    if (data.readers > 0 && (write || data.readers == std::numeric_limits<std::uint16_t>::max()))
        return Mx::eOpenForRead;
    if (write && isOnLockedLayer(*found))
        return Mx::eOnLockedLayer;
    if (const auto status = found->subOpen(mode); status != Mx::eOk)
        return status;
    if (write) {
        beginWriting(*found);
        stub->database->markChanged(*found);
    } else {
        ++data.readers;
    }
    object = found;
    return Mx::eOk;
}

Mx::ErrorStatus mxdbMarkModified(MxDbObjectId id) {
    const ObjectStub* stub = id.stub();
    if (!stub)
        return Mx::eNullObjectId;
    if (!stub->object)
        return Mx::eNotResident;
    if (stub->erased)
        return Mx::eWasErased;
    stub->database->markChanged(*stub->object);
    stub->database->undo.noteUnrecorded();
    ++stub->object->data().graphicsVersion;
    const ReadAccess readable(*stub->object);
    stub->database->notifyModified(*stub->object);
    return Mx::eOk;
}
