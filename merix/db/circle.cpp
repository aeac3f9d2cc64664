// SPDX-License-Identifier: MIT
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/db/entity_edit.h"
#include "merix/ge/ocs.h"
#include "merix/ge/planar_map.h"
#include "merix/rx/class_registry.h"

namespace merix::db {

MERIX_RX_CLASS(Circle, "MxDbCircle", MxDbEntity, rx::makeObject<Circle>, "CIRCLE")

bool Circle::subWorldDraw(MxGiWorldDraw* draw) {
    draw->geometry().circle(ge::ocsToWorld(normal) * center, radius, normal);
    return true;
}

Mx::ErrorStatus Circle::subTransformBy(const MxGeMatrix3d& map) {
    const auto planar = ge::PlanarMap::of(map, normal);
    double thick = thickness;
    if (!planar || !planar->isSimilar() || !planar->thicken(thick))
        return Mx::eCannotScaleNonUniformly;
    assertWriteEnabled();
    center = *planar * center;
    radius *= planar->scale();
    thickness = thick;
    normal = planar->normal();
    return Mx::eOk;
}

/// The centre, then the four ends of the axes.
Mx::ErrorStatus Circle::subGetGripPoints(std::vector<MxGePoint3d>& grips) const {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    grips.push_back(ocs * center);
    for (const auto& [x, y] : {std::pair{radius, 0.0}, {0.0, radius}, {-radius, 0.0}, {0.0, -radius}})
        grips.push_back(ocs * MxGePoint3d(center.x + x, center.y + y, center.z));
    return Mx::eOk;
}

Mx::ErrorStatus Circle::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    if (movesGrip(indices, 0))
        return subTransformBy(MxGeMatrix3d::translation(offset));
    std::vector<MxGePoint3d> grips;
    subGetGripPoints(grips);
    for (int i = 1; i < static_cast<int>(grips.size()); ++i) {
        if (!movesGrip(indices, i))
            continue;
        MxGeVector3d reach = grips[static_cast<std::size_t>(i)] + offset - grips[0];
        // What is off the plane does not count.
        MxGeVector3d off = ge::unit(normal);
        off *= off.dot(reach);
        const double size = (MxGePoint3d(reach.x, reach.y, reach.z) - off).asVector().length();
        if (!(size > 0.0) || !std::isfinite(size))
            return Mx::eInvalidInput;
        assertWriteEnabled();
        radius = size;
        return Mx::eOk;
    }
    return Mx::eOk;
}

Mx::ErrorStatus Circle::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d&, const MxGePoint3d&,
                                          std::vector<MxGePoint3d>& points) const {
    SnapPoints(mode, points).add(MxDbOsnapMode::kCenter, ge::ocsToWorld(normal) * center);
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
