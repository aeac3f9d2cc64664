// SPDX-License-Identifier: MIT
// The draw order of blocks. What fails is said on the command line. Main thread only.
#pragma once

#include "host/db/sortents_table.h"

/// Opens the sort-entities table of the block record for write, made when there is none; the caller closes it. False,
/// with `table` null, when the record or the table cannot be had.
bool getSortentsTable(MxDbSortentsTable*& table, MxDbObjectId blockRecord);

/// The same for the model space of the working database, whose document is locked for write first and stays locked: the
/// command that calls this ends the lock.
bool getOrCreateSortEntsDictionary(MxDbSortentsTable*& table);
