// SPDX-License-Identifier: MIT
// The attachment reactors (PhonomarkPsReactor) that objects list. Main thread only.
#pragma once

#include "host/db/object.h"

/// True when `reactor` is listed by the object.
bool hasPersistentReactor(const MxDbObject* object, const MxDbObjectId& reactor);

/// True when a note is attached to the object: an attachment reactor on it leads to a note that names it.
bool IsAttachedVoice(MxDbObjectId object);

/// Takes the first attachment reactor from the object and erases it; others stay. No effect when the object cannot be
/// opened.
void CleanPhonomarkPsReactor(MxDbObjectId object);
