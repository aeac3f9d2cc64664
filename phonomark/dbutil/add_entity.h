// SPDX-License-Identifier: MIT
// Adding entities to the working database. Main thread only.
#pragma once

#include "host/db/database.h"

/// Appends the entity to the model space of the working database and closes it. False when there is no working
/// database or the space cannot be written; the entity then stays open and the caller's.
bool addEntityToDb(MxDbObjectId& id, MxDbEntity* entity);

/// The same for the current space.
bool addEntityToCurrentSpace(MxDbObjectId& id, MxDbEntity* entity);

/// The same for the block table record `owner`.
bool addEntityToOwnerSpace(MxDbObjectId& id, MxDbEntity* entity, MxDbObjectId owner);

/// Puts an object that is no entity into the extension dictionary of model space, under a name that the dictionary
/// makes up, and closes it. False as above.
bool addObjectToDb(MxDbObjectId& id, MxDbObject* object);
