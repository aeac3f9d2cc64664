// SPDX-License-Identifier: MIT
// A walk through a whole drawing that tells what does not hold together. Damage that came with a file and damage done
// since look the same to it. Main thread; nothing is changed and no object may be open for write.
#pragma once

#include "host/db/database.h"

#include <string>
#include <vector>

namespace merix::db {

struct AuditFinding {
    enum class Kind {
        kBroken, ///< the drawing's structure is not sound
        kLoose,  ///< a reference that may lead nowhere does: its object is erased, or was when the drawing was saved
    };
    Kind kind;
    MxDbHandle handle;  ///< of the object that is not as it should be; null for the drawing itself
    std::wstring what;  ///< "its layer 2A is erased"
    std::wstring where; ///< "LINE in *Model_Space"
};

/// Looks at every object that is not erased:
/// - an owner that does not exist, is erased, or does not know the object; an entity in no block or in two;
/// - entries of tables and dictionaries that name nothing, are there twice or belong elsewhere;
/// - layers, line types, blocks and all other references that name nothing, something erased or of another kind;
/// - reactors that do not exist, extension dictionaries of which their owner knows nothing;
/// - draw orders of other blocks, or of entities that are not in the block;
/// - a current layer that there is not.
/// In the order of the objects.
std::vector<AuditFinding> audit(MxDbDatabase& database);

} // namespace merix::db
