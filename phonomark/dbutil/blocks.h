// SPDX-License-Identifier: MIT
// The block table of the working database. Main thread only.
#pragma once

#include "host/db/database.h"

/// Opens the block table for read; the caller closes it. eNoDatabase when there is no working database.
Mx::ErrorStatus openBlockTable(MxDbSymbolTable*& table);

/// The block record of model space; null when the table lacks it.
MxDbObjectId modelSpaceOf(const MxDbSymbolTable& table);

/// The same for the working database; null also when its block table cannot be opened.
MxDbObjectId modelSpace();
