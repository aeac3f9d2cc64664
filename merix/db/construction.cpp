// SPDX-License-Identifier: MIT
#include "host/db/construction.h"

#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entity_edit.h"
#include "merix/ge/planar_map.h"
#include "merix/rx/class_registry.h"

using namespace merix::db;

MERIX_RX_CLASS(MxDbRay, "MxDbRay", MxDbEntity, merix::rx::makeObject<MxDbRay>, "RAY")
MERIX_RX_CLASS(MxDbXline, "MxDbXline", MxDbEntity, merix::rx::makeObject<MxDbXline>, "XLINE")

namespace {

Mx::ErrorStatus readDwg(MxDbDwgFiler* filer, MxGePoint3d& base, MxGeVector3d& direction) {
    filer->readPoint3d(base);
    return readVector(*filer, direction);
}

Mx::ErrorStatus writeDwg(MxDbDwgFiler* filer, const MxGePoint3d& base, const MxGeVector3d& direction) {
    filer->writePoint3d(base);
    return writeVector(*filer, direction);
}

Mx::ErrorStatus readDxf(MxDbDxfFiler* filer, MxDbEntity& entity, MxGePoint3d& base, MxGeVector3d& direction) {
    return readItems(filer, &entity, [&](int code) {
        if (code == 10)
            base = filer->itemPoint3d();
        else if (code == 11)
            direction = itemVector(filer);
        else
            return false;
        return true;
    });
}

Mx::ErrorStatus writeDxf(MxDbDxfFiler* filer, const wchar_t* marker, const MxGePoint3d& base,
                         const MxGeVector3d& direction) {
    filer->writeString(100, marker);
    filer->writePoint3d(10, base);
    return filer->writePoint3d(11, {direction.x, direction.y, direction.z});
}

bool place(const MxGeMatrix3d& map, MxGePoint3d& base, MxGeVector3d& direction) {
    const MxGeVector3d moved = merix::ge::unit(map * direction);
    if (!(moved.length() > 0.0))
        return false;
    base = map * base;
    direction = moved;
    return true;
}

/// What the grips make of it: the first takes all along, the second turns it about its base point.
bool moveGrips(const std::vector<int>& indices, const MxGeVector3d& offset, MxGePoint3d& base,
               MxGeVector3d& direction) {
    if (movesGrip(indices, 0)) {
        base = base + offset;
        return true;
    }
    return !movesGrip(indices, 1) || [&] {
        const MxGePoint3d ahead = MxGePoint3d(direction.x, direction.y, direction.z) + offset;
        const MxGeVector3d turned = merix::ge::unit(ahead.asVector());
        if (!(turned.length() > 0.0))
            return false;
        direction = turned;
        return true;
    }();
}

} // namespace

Mx::ErrorStatus MxDbRay::dwgInFields(MxDbDwgFiler* filer) {
    const auto status = MxDbEntity::dwgInFields(filer);
    return status == Mx::eOk ? readDwg(filer, m_basePoint, m_direction) : status;
}
Mx::ErrorStatus MxDbRay::dwgOutFields(MxDbDwgFiler* filer) const {
    const auto status = MxDbEntity::dwgOutFields(filer);
    return status == Mx::eOk ? writeDwg(filer, m_basePoint, m_direction) : status;
}
Mx::ErrorStatus MxDbRay::dxfInFields(MxDbDxfFiler* filer) {
    const auto status = MxDbEntity::dxfInFields(filer);
    return status == Mx::eOk ? readDxf(filer, *this, m_basePoint, m_direction) : status;
}
Mx::ErrorStatus MxDbRay::dxfOutFields(MxDbDxfFiler* filer) const {
    const auto status = MxDbEntity::dxfOutFields(filer);
    return status == Mx::eOk ? writeDxf(filer, L"AcDbRay", m_basePoint, m_direction) : status;
}
Mx::ErrorStatus MxDbXline::dwgInFields(MxDbDwgFiler* filer) {
    const auto status = MxDbEntity::dwgInFields(filer);
    return status == Mx::eOk ? readDwg(filer, m_basePoint, m_direction) : status;
}
Mx::ErrorStatus MxDbXline::dwgOutFields(MxDbDwgFiler* filer) const {
    const auto status = MxDbEntity::dwgOutFields(filer);
    return status == Mx::eOk ? writeDwg(filer, m_basePoint, m_direction) : status;
}
Mx::ErrorStatus MxDbXline::dxfInFields(MxDbDxfFiler* filer) {
    const auto status = MxDbEntity::dxfInFields(filer);
    return status == Mx::eOk ? readDxf(filer, *this, m_basePoint, m_direction) : status;
}
Mx::ErrorStatus MxDbXline::dxfOutFields(MxDbDxfFiler* filer) const {
    const auto status = MxDbEntity::dxfOutFields(filer);
    return status == Mx::eOk ? writeDxf(filer, L"AcDbXline", m_basePoint, m_direction) : status;
}

Mx::ErrorStatus MxDbRay::subTransformBy(const MxGeMatrix3d& map) {
    MxGePoint3d base = m_basePoint;
    MxGeVector3d direction = m_direction;
    if (!place(map, base, direction))
        return Mx::eCannotScaleNonUniformly;
    assertWriteEnabled();
    m_basePoint = base;
    m_direction = direction;
    return Mx::eOk;
}
Mx::ErrorStatus MxDbRay::subGetGripPoints(std::vector<MxGePoint3d>& grips) const {
    grips.insert(grips.end(), {m_basePoint, m_basePoint + m_direction});
    return Mx::eOk;
}
Mx::ErrorStatus MxDbRay::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    MxGePoint3d base = m_basePoint;
    MxGeVector3d direction = m_direction;
    if (!moveGrips(indices, offset, base, direction))
        return Mx::eInvalidInput;
    assertWriteEnabled();
    m_basePoint = base;
    m_direction = direction;
    return Mx::eOk;
}
Mx::ErrorStatus MxDbRay::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d&, const MxGePoint3d&,
                                           std::vector<MxGePoint3d>& points) const {
    SnapPoints(mode, points).add(MxDbOsnapMode::kEnd, m_basePoint);
    return Mx::eOk;
}

Mx::ErrorStatus MxDbXline::subTransformBy(const MxGeMatrix3d& map) {
    MxGePoint3d base = m_basePoint;
    MxGeVector3d direction = m_direction;
    if (!place(map, base, direction))
        return Mx::eCannotScaleNonUniformly;
    assertWriteEnabled();
    m_basePoint = base;
    m_direction = direction;
    return Mx::eOk;
}
Mx::ErrorStatus MxDbXline::subGetGripPoints(std::vector<MxGePoint3d>& grips) const {
    grips.insert(grips.end(), {m_basePoint, m_basePoint + m_direction});
    return Mx::eOk;
}
Mx::ErrorStatus MxDbXline::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    MxGePoint3d base = m_basePoint;
    MxGeVector3d direction = m_direction;
    if (!moveGrips(indices, offset, base, direction))
        return Mx::eInvalidInput;
    assertWriteEnabled();
    m_basePoint = base;
    m_direction = direction;
    return Mx::eOk;
}
Mx::ErrorStatus MxDbXline::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d&, const MxGePoint3d&,
                                             std::vector<MxGePoint3d>& points) const {
    SnapPoints(mode, points).add(MxDbOsnapMode::kNode, m_basePoint);
    return Mx::eOk;
}
