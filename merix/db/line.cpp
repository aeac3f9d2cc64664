// SPDX-License-Identifier: MIT
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/rx/class_registry.h"

namespace merix::db {

MERIX_RX_CLASS(Line, "MxDbLine", MxDbEntity, rx::makeObject<Line>, "LINE")

bool Line::subWorldDraw(MxGiWorldDraw* draw) {
    const MxGePoint3d points[] = {start, end};
    draw->geometry().worldLine(points, 2);
    return true;
}

Mx::ErrorStatus Line::subGetGeomExtents(MxDbExtents& extents) const {
    extents = drawnExtents(*this);
    return Mx::eOk;
}

Mx::ErrorStatus Line::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
        return status;
    filer->readPoint3d(start);
    filer->readPoint3d(end);
    filer->readDouble(thickness);
    return readVector(*filer, normal);
}

Mx::ErrorStatus Line::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writePoint3d(start);
    filer->writePoint3d(end);
    filer->writeDouble(thickness);
    return writeVector(*filer, normal);
}

Mx::ErrorStatus Line::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dxfInFields(filer); status != Mx::eOk)
        return status;
    return readItems(filer, this, [&](int code) {
        switch (code) {
        case 10:
            start = filer->itemPoint3d();
            return true;
        case 11:
            end = filer->itemPoint3d();
            return true;
        case 39:
            thickness = filer->itemDouble();
            return true;
        case 210:
            normal = itemVector(filer);
            return true;
        default:
            return false;
        }
    });
}

Mx::ErrorStatus Line::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbLine");
    writeUnlessZero(filer, 39, thickness);
    filer->writePoint3d(10, start);
    filer->writePoint3d(11, end);
    return writeNormal(filer, normal);
}

} // namespace merix::db
