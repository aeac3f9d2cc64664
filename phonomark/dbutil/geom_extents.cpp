// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/geom_extents.h"

#include "host/db/construction.h"

Mx::ErrorStatus getGeomExtentsEx(MxDbExtents& extents, const MxDbEntity* entity) {
    if (!entity)
        return Mx::eNullEntity;
    if (entity->isKindOf(MxDbRay::desc())) {
        const MxGePoint3d base = static_cast<const MxDbRay*>(entity)->basePoint();
        extents.set(base, base);
        return Mx::eOk;
    }
    if (entity->isKindOf(MxDbXline::desc())) {
        const MxGePoint3d base = static_cast<const MxDbXline*>(entity)->basePoint();
        extents.set(base, base);
        return Mx::eOk;
    }
    return entity->getGeomExtents(extents);
}
