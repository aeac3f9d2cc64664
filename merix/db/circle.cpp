// SPDX-License-Identifier: MIT
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/ge/ocs.h"
#include "merix/rx/class_registry.h"

namespace merix::db {

MERIX_RX_CLASS(Circle, "MxDbCircle", MxDbEntity, rx::makeObject<Circle>, "CIRCLE")

bool Circle::subWorldDraw(MxGiWorldDraw* draw) {
    draw->geometry().circle(ge::ocsToWorld(normal) * center, radius, normal);
    return true;
}

Mx::ErrorStatus Circle::subGetGeomExtents(MxDbExtents& extents) const {
    extents = drawnExtents(*this);
    return Mx::eOk;
}

Mx::ErrorStatus Circle::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
        return status;
    filer->readPoint3d(center);
    filer->readDouble(radius);
    filer->readDouble(thickness);
    return readVector(*filer, normal);
}

Mx::ErrorStatus Circle::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writePoint3d(center);
    filer->writeDouble(radius);
    filer->writeDouble(thickness);
    return writeVector(*filer, normal);
}

Mx::ErrorStatus Circle::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dxfInFields(filer); status != Mx::eOk)
        return status;
    return readItems(filer, this, [&](int code) {
        switch (code) {
        case 10:
            center = filer->itemPoint3d();
            return true;
        case 39:
            thickness = filer->itemDouble();
            return true;
        case 40:
            radius = filer->itemDouble();
            return true;
        case 210:
            normal = itemVector(filer);
            return true;
        default:
            return false;
        }
    });
}

Mx::ErrorStatus Circle::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbCircle");
    writeUnlessZero(filer, 39, thickness);
    filer->writePoint3d(10, center);
    filer->writeDouble(40, radius);
    return writeNormal(filer, normal);
}

} // namespace merix::db
