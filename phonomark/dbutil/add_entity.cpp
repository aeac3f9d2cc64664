// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/add_entity.h"

#include "phonomark/dbutil/blocks.h"

namespace {

/// The extension dictionary of `record` open for write, made when there is none; null when that fails.
MxDbDictionary* openExtensionDictionary(MxDbObjectId record) {
    MxDbBlockTableRecord* block = nullptr;
    if (mxdbOpenObject(block, record, Mx::kForRead) != Mx::eOk)
        return nullptr;
    if (block->extensionDictionary().isNull() && block->upgradeOpen() == Mx::eOk)
        block->createExtensionDictionary();
    const MxDbObjectId id = block->extensionDictionary();
    block->close();
    MxDbDictionary* dictionary = nullptr;
    return mxdbOpenObject(dictionary, id, Mx::kForWrite) == Mx::eOk ? dictionary : nullptr;
}

} // namespace

bool addEntityToDb(MxDbObjectId& id, MxDbEntity* entity) {
    return addEntityToOwnerSpace(id, entity, modelSpace());
}

bool addEntityToCurrentSpace(MxDbObjectId& id, MxDbEntity* entity) {
    const MxDbDatabase* database = mxdbHostApplicationServices()->workingDatabase();
    return database && addEntityToOwnerSpace(id, entity, database->currentSpaceId());
}

bool addEntityToOwnerSpace(MxDbObjectId& id, MxDbEntity* entity, MxDbObjectId owner) {
    MxDbBlockTableRecord* space = nullptr;
    if (!entity || !mxdbHostApplicationServices()->workingDatabase() ||
        mxdbOpenObject(space, owner, Mx::kForWrite) != Mx::eOk)
        return false;
    const Mx::ErrorStatus status = space->appendMxDbEntity(id, entity);
    space->close();
    if (status != Mx::eOk)
        return false;
    entity->close();
    return true;
}

bool addObjectToDb(MxDbObjectId& id, MxDbObject* object) {
    MxDbDictionary* const dictionary = object ? openExtensionDictionary(modelSpace()) : nullptr;
    if (!dictionary)
        return false;
    const Mx::ErrorStatus status = dictionary->setAt(L"*U", object, id);
    dictionary->close();
    if (status != Mx::eOk)
        return false;
    object->close();
    return true;
}
