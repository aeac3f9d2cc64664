// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/entity.h"

/// The geometric extents of an entity, its base point alone for rays and construction lines, which have no bounds.
/// eNullEntity for null; `extents` is left alone whenever the status is not eOk. Main thread only.
Mx::ErrorStatus getGeomExtentsEx(MxDbExtents& extents, const MxDbEntity* entity);
