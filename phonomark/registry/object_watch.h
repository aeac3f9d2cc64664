// SPDX-License-Identifier: MIT
// Watching objects for erasure with the one shared object reactor. A note that is erased leaves its document's list but
// stays watched, so that undoing the erasure lists it again. What is watched is therefore remembered here: no reactor
// of the module may stay behind in a drawing when the module goes. Main thread only.
#pragma once

#include "host/db/object.h"

/// The one object reactor.
MxDbObjectReactor* phObjRectPtr();

/// True when the object carries an object reactor of this module.
bool HasPhonomarkObReactor(const MxDbObject* object);

/// Watches the object, once; no effect when it cannot be opened for read.
void watchObject(MxDbObjectId id);

/// The same for an object that is erased. `isListed`: its document lists it all the same.
void watchErasedObject(MxDbObjectId id, bool isListed);

/// True, once, when the object was listed while it was erased and nobody took it off the list: coming back it is not
/// listed a second time.
bool takeListedWhileErased(MxDbObjectId id);

/// Stops watching; no effect when the object cannot be opened for read.
void unwatchObject(MxDbObjectId id);

/// The object goes from memory and its reactors with it.
void forgetObject(MxDbObjectId id);

/// The objects of the database that are watched, by handle; erased ones too.
std::vector<MxDbHandle> watchedHandles(const MxDbDatabase* database);

/// Stops watching every object of the database, erased ones too. One that cannot be opened now stays watched.
void unwatchDatabase(const MxDbDatabase* database);
