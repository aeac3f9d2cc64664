// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/add_entity.h"

#include "phonomark/dbutil/blocks.h"
#include "phonomark/dbutil/opened.h"

namespace {

/// The extension dictionary of `record` open for write, made when there is none; empty when that fails.
Opened<MxDbDictionary> openExtensionDictionary(MxDbObjectId record) {
    Opened<MxDbBlockTableRecord> block(record, Mx::kForRead);
    if (!block)
        return {};
    if (block->extensionDictionary().isNull() && block->upgradeOpen() == Mx::eOk)
        block->createExtensionDictionary();
    const MxDbObjectId id = block->extensionDictionary();
    block.close();
    return Opened<MxDbDictionary>(id, Mx::kForWrite);
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
    if (!entity || !mxdbHostApplicationServices()->workingDatabase())
        return false;
    Opened<MxDbBlockTableRecord> space(owner, Mx::kForWrite);
    if (!space)
        return false;
    const Mx::ErrorStatus status = space->appendMxDbEntity(id, entity);
    space.close();
    if (status != Mx::eOk)
        return false;
    entity->close();
    return true;
}

bool addObjectToDb(MxDbObjectId& id, MxDbObject* object) {
    if (!object)
        return false;
    Opened<MxDbDictionary> dictionary = openExtensionDictionary(modelSpace());
    if (!dictionary)
        return false;
    const Mx::ErrorStatus status = dictionary->setAt(L"*U", object, id);
    dictionary.close();
    if (status != Mx::eOk)
        return false;
    object->close();
    return true;
}
