// SPDX-License-Identifier: MIT
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/ge/ocs.h"
#include "merix/rx/class_registry.h"

namespace merix::db {

MERIX_RX_CLASS(Arc, "MxDbArc", MxDbEntity, rx::makeObject<Arc>, "ARC")

bool Arc::subWorldDraw(MxGiWorldDraw* draw) {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    double sweep = std::fmod(endAngle - startAngle, 2 * kPi);
    if (sweep <= 0.0)
        sweep += 2 * kPi;
    const MxGeVector3d from(std::cos(startAngle), std::sin(startAngle), 0.0);
    draw->geometry().circularArc(ocs * center, radius, normal, ocs * from, sweep);
    return true;
}

Mx::ErrorStatus Arc::subGetGeomExtents(MxDbExtents& extents) const {
    extents = drawnExtents(*this);
    return Mx::eOk;
}

Mx::ErrorStatus Arc::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
        return status;
    filer->readPoint3d(center);
    filer->readDouble(radius);
    filer->readDouble(thickness);
    filer->readDouble(startAngle);
    filer->readDouble(endAngle);
    return readVector(*filer, normal);
}

Mx::ErrorStatus Arc::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writePoint3d(center);
    filer->writeDouble(radius);
    filer->writeDouble(thickness);
    filer->writeDouble(startAngle);
    filer->writeDouble(endAngle);
    return writeVector(*filer, normal);
}

Mx::ErrorStatus Arc::dxfInFields(MxDbDxfFiler* filer) {
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
        case 50:
            startAngle = radians(filer->itemDouble());
            return true;
        case 51:
            endAngle = radians(filer->itemDouble());
            return true;
        case 210:
            normal = itemVector(filer);
            return true;
        default:
            return false;
        }
    });
}

Mx::ErrorStatus Arc::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbCircle");
    writeUnlessZero(filer, 39, thickness);
    filer->writePoint3d(10, center);
    filer->writeDouble(40, radius);
    writeNormal(filer, normal);
    filer->writeString(100, L"AcDbArc");
    filer->writeDouble(50, degrees(startAngle));
    return filer->writeDouble(51, degrees(endAngle));
}

} // namespace merix::db
