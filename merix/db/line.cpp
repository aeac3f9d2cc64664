// SPDX-License-Identifier: MIT
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/db/entity_edit.h"
#include "merix/ge/planar_map.h"
#include "merix/rx/class_registry.h"

namespace merix::db {

MERIX_RX_CLASS(Line, "MxDbLine", MxDbEntity, rx::makeObject<Line>, "LINE")

bool Line::subWorldDraw(MxGiWorldDraw* draw) {
    const MxGePoint3d points[] = {start, end};
    draw->geometry().worldLine(points, 2);
    return true;
}

Mx::ErrorStatus Line::subTransformBy(const MxGeMatrix3d& map) {
    assertWriteEnabled();
    start = map * start;
    end = map * end;
    // The thickness is a way along the normal and goes where the map takes it.
    const MxGeVector3d up = map * normal;
    const double before = normal.length();
    if (before > 0.0)
        thickness *= up.length() / before;
    normal = ge::unit(up);
    return Mx::eOk;
}

Mx::ErrorStatus Line::subGetGripPoints(std::vector<MxGePoint3d>& grips) const {
    grips.insert(grips.end(), {start, end, middle(start, end)});
    return Mx::eOk;
}

Mx::ErrorStatus Line::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    assertWriteEnabled();
    const bool whole = movesGrip(indices, 2);
    if (whole || movesGrip(indices, 0))
        start = start + offset;
    if (whole || movesGrip(indices, 1))
        end = end + offset;
    return Mx::eOk;
}

Mx::ErrorStatus Line::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d&, const MxGePoint3d&,
                                        std::vector<MxGePoint3d>& points) const {
    const SnapPoints snap(mode, points);
    snap.add(MxDbOsnapMode::kEnd, start);
    snap.add(MxDbOsnapMode::kEnd, end);
    snap.add(MxDbOsnapMode::kMid, middle(start, end));
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
