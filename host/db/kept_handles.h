// SPDX-License-Identifier: MIT
// What a module leaves with an open drawing while it is away. Main thread only.
#pragma once

#include "host/db/handle.h"

#include <vector>

class MxDbDatabase;

/// Keeps `handles` with the drawing under the module's `key`, in the place of those kept there before. They are in the
/// host's memory alone: no file holds them, undo leaves them alone, and they go with the database.
void mxdbKeepHandles(MxDbDatabase& database, const wchar_t* key, const std::vector<MxDbHandle>& handles);

/// The handles that are kept under `key`, in their order; they stay kept. Empty when there are none.
std::vector<MxDbHandle> mxdbKeptHandles(const MxDbDatabase& database, const wchar_t* key);
