// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/database.h"
#include "host/db/sortents_table.h"

#include <vector>

namespace merix::db {

/// The key of a block's sort-entities table in the block's extension dictionary, fixed by the DXF format.
inline constexpr const wchar_t* kSortentsKey = L"ACAD_SORTENTS";

/// The table of a block, null when it has none.
const MxDbSortentsTable* sortentsTable(const MxDbBlockTableRecord& block);

/// The entities of a block in the order in which they are painted, erased ones too. Gives the block's own list when
/// nothing is sorted, else fills `sorted` and gives that.
const std::vector<MxDbObjectId>& drawOrder(const MxDbBlockTableRecord& block, std::vector<MxDbObjectId>& sorted);

} // namespace merix::db
