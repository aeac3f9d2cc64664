// SPDX-License-Identifier: MIT
#include "merix/db/database_imp.h"
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/ge/ocs.h"
#include "merix/rx/class_registry.h"

#include <algorithm>

namespace merix::db {

MERIX_RX_CLASS(Insert, "MxDbBlockReference", MxDbEntity, rx::makeObject<Insert>, "INSERT")

bool Insert::subWorldDraw(MxGiWorldDraw* draw) {
    const auto* record = static_cast<const MxDbBlockTableRecord*>(DatabaseImp::peek(block));
    if (!record || !record->isKindOf(MxDbBlockTableRecord::desc()))
        return true;
    const MxGePoint3d& base = record->origin();
    const ge::Affine turned =
        ge::ocsToWorld(normal) * ge::Affine::translation(position.asVector()) * ge::Affine::rotation(rotation);
    const ge::Affine inner =
        ge::Affine::scaling(scaleX, scaleY, scaleZ) * ge::Affine::translation({-base.x, -base.y, -base.z});
    const int across = std::max<int>(columns, 1), up = std::max<int>(rows, 1);
    DrawBudget budget;
    for (int row = 0; row < up; ++row) {
        for (int column = 0; column < across; ++column) {
            const auto cell = ge::Affine::translation({column * columnSpacing, row * rowSpacing, 0.0});
            // Cut off once is cut off for all: what is missing then is too much to draw.
            if (!drawBlock(*draw, block, turned * cell * inner, traits(*this), budget))
                return false;
        }
    }
    return true;
}

Mx::ErrorStatus Insert::subGetGeomExtents(MxDbExtents& extents) const {
    extents = drawnExtents(*this);
    return Mx::eOk;
}

Mx::ErrorStatus Insert::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
        return status;
    filer->readHardPointerId(block);
    filer->readPoint3d(position);
    for (double* value : {&scaleX, &scaleY, &scaleZ, &rotation, &columnSpacing, &rowSpacing})
        filer->readDouble(*value);
    filer->readInt16(columns);
    filer->readInt16(rows);
    return readVector(*filer, normal);
}

Mx::ErrorStatus Insert::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeHardPointerId(block);
    filer->writePoint3d(position);
    for (const double value : {scaleX, scaleY, scaleZ, rotation, columnSpacing, rowSpacing})
        filer->writeDouble(value);
    filer->writeInt16(columns);
    filer->writeInt16(rows);
    return writeVector(*filer, normal);
}

Mx::ErrorStatus Insert::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dxfInFields(filer); status != Mx::eOk)
        return status;
    return readItems(filer, this, [&](int code) {
        switch (code) {
        case 2:
            if (filer->database())
                block = filer->database()->imp().blockNamed(filer->itemString().str());
            return true;
        case 10:
            position = filer->itemPoint3d();
            return true;
        case 41:
            scaleX = filer->itemDouble();
            return true;
        case 42:
            scaleY = filer->itemDouble();
            return true;
        case 43:
            scaleZ = filer->itemDouble();
            return true;
        case 44:
            columnSpacing = filer->itemDouble();
            return true;
        case 45:
            rowSpacing = filer->itemDouble();
            return true;
        case 50:
            rotation = radians(filer->itemDouble());
            return true;
        case 70:
            columns = filer->itemInt16();
            return true;
        case 71:
            rows = filer->itemInt16();
            return true;
        case 210:
            normal = itemVector(filer);
            return true;
        default:
            return false;
        }
    });
}

Mx::ErrorStatus Insert::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbBlockReference");
    if (const std::wstring name = recordName(block); !name.empty())
        filer->writeString(2, name.c_str());
    filer->writePoint3d(10, position);
    for (const auto& [code, scale] : {std::pair{41, scaleX}, std::pair{42, scaleY}, std::pair{43, scaleZ}}) {
        if (scale != 1.0)
            filer->writeDouble(code, scale);
    }
    writeUnlessZero(filer, 50, degrees(rotation));
    if (columns > 1)
        filer->writeInt16(70, columns);
    if (rows > 1)
        filer->writeInt16(71, rows);
    writeUnlessZero(filer, 44, columnSpacing);
    writeUnlessZero(filer, 45, rowSpacing);
    return writeNormal(filer, normal);
}

} // namespace merix::db
