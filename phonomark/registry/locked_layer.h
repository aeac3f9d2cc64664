// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/entity.h"

/// Opens an entity, for write also when its layer is locked; the layer is locked again when this returns. When only the
/// step from read to write failed, `entity` is not null although the status is not eOk: it is open for read and must
/// be closed. Main thread only.
Mx::ErrorStatus openObjectIgnoreLockLayer(MxDbEntity*& entity, MxDbObjectId id, Mx::OpenMode mode);
