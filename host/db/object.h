// SPDX-License-Identifier: MIT
// MxDbObject, the base of everything that lives in a drawing database. Main thread only.
#pragma once

#include "host/db/filer.h"
#include "host/rx/rx_class.h"

#include <vector>

class MxDbEntity;
class MxDbIdMapping;
class MxDbObject;

namespace merix::db {
struct ObjectData;
}

/// A transient reactor: told of the fate of the objects it was added to, for the life of the process only.
class MxDbObjectReactor : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    /// The object was erased, or un-erased (also by undo and redo of its insertion).
    virtual void erased(const MxDbObject* object, bool erasing);
    virtual void modified(const MxDbObject* object);
    /// The object is about to be deleted from memory; the reactor must forget it.
    virtual void goodbye(const MxDbObject* object);
};

/// One entry of an object's reactor list: a transient reactor, or the id of a persistent one.
struct MxDbReactorEntry {
    MxDbObjectReactor* transient = nullptr;
    MxDbObjectId persistent;
    bool operator==(const MxDbReactorEntry&) const = default;
};

inline bool mxdbIsPersistentReactor(const MxDbReactorEntry& entry) {
    return !entry.persistent.isNull();
}

/// Base of all database objects. An object is made by `new`, then handed to a container of a database, which owns it
/// from then on and leaves it open for write. An object opened with mxdbOpenObject must be closed by the opener.
class MxDbObject : public MxRxObject {
public:
    MxDbObject();
    ~MxDbObject() override;
    MxDbObject(const MxDbObject&) = delete;
    MxDbObject& operator=(const MxDbObject&) = delete;

    static MxRxClass* desc();
    MxRxClass* isA() const override;

    /// Null until the object is in a database.
    MxDbObjectId objectId() const;
    MxDbObjectId ownerId() const;
    MxDbDatabase* database() const;
    bool isErased() const;

    /// Asserts that the object may be read: open in any mode, or not in a database yet. A violation stops the host.
    void assertReadEnabled() const;
    /// Asserts that the object may be changed, takes its before-image for undo at the first call in an open, and
    /// marks it changed.
    void assertWriteEnabled();

    /// From read to write: eOpenForRead when there are other readers, eOnLockedLayer for an entity on a locked layer.
    /// Unlike an open for write it does not mark the object for the next save; its first change does.
    Mx::ErrorStatus upgradeOpen();
    virtual Mx::ErrorStatus close();
    /// Closes and takes back what was changed since the object was opened for write.
    virtual Mx::ErrorStatus cancel();
    /// Erases the object (open for write) or, with false, takes the erasure back.
    Mx::ErrorStatus erase(bool erasing = true);

    /// The id of the extension dictionary, null when there is none.
    MxDbObjectId extensionDictionary() const;
    Mx::ErrorStatus createExtensionDictionary();
    /// Drops the extension dictionary when nothing is left in it; undo brings it back. The object must be open for
    /// write. eNotOpen, eNotEmpty; eKeyNotFound when there is none.
    Mx::ErrorStatus releaseExtensionDictionary();

    /// Reactor lists may be changed from inside a notification.
    std::vector<MxDbReactorEntry> reactors() const;
    /// Transient reactors can be added to and removed from an object open for read.
    Mx::ErrorStatus addReactor(MxDbObjectReactor* reactor) const;
    Mx::ErrorStatus removeReactor(MxDbObjectReactor* reactor) const;
    /// Persistent reactors are objects of the same drawing that are told of this object's changes for as long as they
    /// are listed; the list is filed with the object and follows undo. The object must be open for write. Adding one
    /// twice has no effect. eNotOpen, eNullObjectId, eWrongDatabase; eKeyNotFound when it is not listed.
    Mx::ErrorStatus addPersistentReactor(MxDbObjectId reactor);
    Mx::ErrorStatus removePersistentReactor(MxDbObjectId reactor);

    /// Filing: an override files its base first and stops at a status that is not eOk.
    virtual Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer);
    virtual Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const;
    virtual Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer);
    virtual Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const;

    /// A copy of the object in `owner` (a block, a dictionary) of the same drawing, with what it owns. `clone` is then
    /// open for write and noted in `map`; null, with eOk, for an object that is never copied. The object must be open
    /// for read.
    Mx::ErrorStatus deepClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map, bool isPrimary = true) const;
    /// The same into `owner` of another drawing, with the layers and other records it refers to.
    Mx::ErrorStatus wblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map, bool isPrimary = true) const;
    virtual Mx::ErrorStatus subDeepClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                         bool isPrimary = true) const;
    virtual Mx::ErrorStatus subWblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                           bool isPrimary = true) const;

    /// Called while the object itself is opened, cancelled and closed.
    virtual Mx::ErrorStatus subOpen(Mx::OpenMode mode);
    virtual Mx::ErrorStatus subCancel();
    virtual Mx::ErrorStatus subClose();

    /// Notifications that a persistent reactor receives from the objects that list it.
    virtual void openedForModify(const MxDbObject* object);
    virtual void cancelled(const MxDbObject* object);
    virtual void objectClosed(MxDbObjectId id);
    virtual void goodbye(const MxDbObject* object);
    virtual void copied(const MxDbObject* object, const MxDbObject* copy);
    virtual void erased(const MxDbObject* object, bool erasing);
    virtual void modified(const MxDbObject* object);
    virtual void modifiedGraphics(const MxDbEntity* entity);
    virtual void modifiedXData(const MxDbObject* object);
    virtual void subObjModified(const MxDbObject* object, const MxDbObject* part);
    virtual void modifyUndone(const MxDbObject* object);
    virtual void reappended(const MxDbObject* object);
    virtual void unappended(const MxDbObject* object);

    /// The host's own record of the object.
    merix::db::ObjectData& data() const { return *m_data; }

protected:
    /// Takes the record over; entities have a larger one.
    explicit MxDbObject(merix::db::ObjectData* data)
        : m_data(data) {}

private:
    merix::db::ObjectData* m_data;
};

/// Opens the object behind `id`. On success `object` is the resident object and must be closed; on failure it is
/// null. Statuses: eNullObjectId, eNotResident, eWasErased, eOpenForRead, eOpenForWrite, eOnLockedLayer.
Mx::ErrorStatus mxdbOpenObject(MxDbObject*& object, MxDbObjectId id, Mx::OpenMode mode, bool openErased = false);

/// For data changed through a pointer that was kept after the object was closed: marks the object for the next save and
/// tells the drawing's listeners (its document, its views) that it changed. Works whatever the object is open for, and
/// on a locked layer; takes no before-image, so undo does not bring the data back. Statuses: eNullObjectId,
/// eNotResident, eWasErased.
Mx::ErrorStatus mxdbMarkModified(MxDbObjectId id);

/// The same for a class: eWrongClass when the object is of another one.
template <class T>
Mx::ErrorStatus mxdbOpenObject(T*& object, MxDbObjectId id, Mx::OpenMode mode, bool openErased = false) {
    object = nullptr;
    MxDbObject* any = nullptr;
    if (const auto status = mxdbOpenObject(any, id, mode, openErased); status != Mx::eOk)
        return status;
    if (!any->isKindOf(T::desc())) {
        any->close();
        return Mx::eWrongClass;
    }
    object = static_cast<T*>(any);
    return Mx::eOk;
}
