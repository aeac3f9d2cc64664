// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object_id.h"
#include "host/rx/status.h"

/// The line type `name` of the working database (an erased one too), loaded from the file "merix.lin" when the drawing
/// has none of that name. The status says why there is none: eNoDatabase, or what reading the file gave. Main thread
/// only.
Mx::ErrorStatus getLinetypeIdFromString(const wchar_t* name, MxDbObjectId& id);
