// SPDX-License-Identifier: MIT
#include "merix/db/database_imp.h"
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/db/entity_edit.h"
#include "merix/ge/ocs.h"
#include "merix/ge/planar_map.h"
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

Mx::ErrorStatus Insert::subTransformBy(const MxGeMatrix3d& map) {
    const auto planar = ge::PlanarMap::of(map, normal);
    if (!planar)
        return Mx::eCannotScaleNonUniformly;
    const MxGeVector3d before(std::cos(rotation), std::sin(rotation), 0.0);
    MxGeVector3d along = *planar * before;
    const MxGeVector3d across = *planar * MxGeVector3d(-before.y, before.x, 0.0), up = *planar * MxGeVector3d::kZAxis;
    // The three axes of the block must stay square to each other; their scales take up the rest.
    constexpr double kNear = 1e-9;
    if (std::fabs(along.dot(across)) > kNear * along.length() * across.length() ||
        std::hypot(up.x, up.y) > kNear * up.length())
        return Mx::eCannotScaleNonUniformly;
    assertWriteEnabled();
    position = *planar * position;
    normal = planar->normal();
    double stretch = along.length();
    if (planar->isReversed() && along.dot(before) < -kNear * stretch) {
        // Mirrored in its own x axis, the block need not be turned over.
        along *= -1.0;
        stretch = -stretch;
    }
    const double rise = (along.x * across.y - along.y * across.x) / along.length();
    rotation = std::atan2(along.y, along.x);
    if (rotation < 0.0)
        rotation += 2 * kPi;
    scaleX *= stretch;
    columnSpacing *= stretch;
    scaleY *= rise;
    rowSpacing *= rise;
    scaleZ *= up.z;
    return Mx::eOk;
}

Mx::ErrorStatus Insert::subGetGripPoints(std::vector<MxGePoint3d>& grips) const {
    grips.push_back(ge::ocsToWorld(normal) * position);
    return Mx::eOk;
}

Mx::ErrorStatus Insert::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    return movesGrip(indices, 0) ? subTransformBy(MxGeMatrix3d::translation(offset)) : Mx::eOk;
}

Mx::ErrorStatus Insert::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d&, const MxGePoint3d&,
                                          std::vector<MxGePoint3d>& points) const {
    SnapPoints(mode, points).add(MxDbOsnapMode::kInsertion, ge::ocsToWorld(normal) * position);
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
