// SPDX-License-Identifier: MIT
// Adding entities to the working database. Main thread only.
#pragma once

#include "host/db/database.h"

/// Appends the entity to the working database's current space and closes it. False when there is no working database
/// or the space cannot be written; the entity then stays open and the caller's.
bool addEntityToCurrentSpace(MxDbObjectId& id, MxDbEntity* entity);

/// The same for the block table record `owner`.
bool addEntityToOwnerSpace(MxDbObjectId& id, MxDbEntity* entity, MxDbObjectId owner);
