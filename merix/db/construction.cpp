// SPDX-License-Identifier: MIT
#include "host/db/construction.h"

#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
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
