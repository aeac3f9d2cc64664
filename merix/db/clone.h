// SPDX-License-Identifier: MIT
// Copies of entities, inside a drawing and into another one: what the commands Copy, Wblock and Paste do. Main thread.
#pragma once

#include "host/db/database.h"
#include "host/ge/matrix.h"

#include <vector>

class MxDbIdMapping;

namespace merix::db {

/// Copies entities to the end of the block `ownerBlock`, in the order given, each placed by `map`. The block may belong
/// to another drawing than the entities: what they refer to by name (layers, line types, text styles, block
/// definitions) is then copied along, unless that drawing has a record of the name, which wins.
///
/// Copies come with copies of their extension dictionaries; references between entities copied together become
/// references between the copies; a copy lists only reactors that were copied with it. Left out, without a trace, is
/// what is never copied (a kind may refuse), is erased, cannot be opened for read or cannot take `map`.
///
/// One undo unit of the drawing that receives the copies, or part of the unit that is open. The copies are closed.
/// Empty when the block cannot be opened for write.
std::vector<MxDbObjectId> cloneEntities(const std::vector<MxDbObjectId>& entities, MxDbObjectId ownerBlock,
                                        const MxGeMatrix3d& map);

/// Copies entities into the model space of `target`, which has been given its defaults, so that the point `base` of
/// theirs lies in its origin.
std::vector<MxDbObjectId> wblockEntities(const std::vector<MxDbObjectId>& entities, MxDbDatabase& target,
                                         const MxGePoint3d& base);

/// For callers of deepClone and wblockClone: when all objects of one copy are made, fills the block definitions that
/// came along and turns what the clones refer to.
void finishClones(MxDbIdMapping& map, DatabaseImp& target);

/// Adds a new record to one of the symbol tables, with undo; it is open for write afterwards. Its name must be free.
/// Null, and the record deleted, when the table is not there or is open elsewhere.
MxDbObject* appendRecord(DatabaseImp& database, MxDbObjectId table, std::unique_ptr<MxDbObject> record);

} // namespace merix::db
