// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/add_entity.h"

bool addEntityToCurrentSpace(MxDbObjectId& id, MxDbEntity* entity) {
    const MxDbDatabase* database = mxdbHostApplicationServices()->workingDatabase();
    return database && addEntityToOwnerSpace(id, entity, database->currentSpaceId());
}

bool addEntityToOwnerSpace(MxDbObjectId& id, MxDbEntity* entity, MxDbObjectId owner) {
    MxDbBlockTableRecord* space = nullptr;
    if (!entity || mxdbOpenObject(space, owner, Mx::kForWrite) != Mx::eOk)
        return false;
    const Mx::ErrorStatus status = space->appendMxDbEntity(id, entity);
    space->close();
    if (status != Mx::eOk)
        return false;
    entity->close();
    return true;
}
