// SPDX-License-Identifier: MIT
// What a hand does to an entity: transform, grips, snap points, highlight. The entity kinds say how.
#include "merix/db/entity_edit.h"

#include "merix/db/database_imp.h"
#include "merix/db/draw.h"
#include "merix/ge/planar_map.h"

using merix::db::ObjectStub;

Mx::ErrorStatus merix::db::DrawnEntity::subGetGeomExtents(MxDbExtents& extents) const {
    extents = drawnExtents(*this);
    return Mx::eOk;
}

Mx::ErrorStatus MxDbEntity::transformBy(const MxGeMatrix3d& map) {
    return merix::ge::isInvertible(map) ? subTransformBy(map) : Mx::eInvalidInput;
}

Mx::ErrorStatus MxDbEntity::getGripPoints(std::vector<MxGePoint3d>& grips) const {
    assertReadEnabled();
    return subGetGripPoints(grips);
}

Mx::ErrorStatus MxDbEntity::moveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    return subMoveGripPointsAt(indices, offset);
}

Mx::ErrorStatus MxDbEntity::getOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                           std::vector<MxGePoint3d>& points) const {
    assertReadEnabled();
    return subGetOsnapPoints(mode, pick, last, points);
}

Mx::ErrorStatus MxDbEntity::highlight() const {
    if (const ObjectStub* stub = objectId().stub())
        stub->database->notifyHighlighted(*stub->object, true);
    return Mx::eOk;
}

Mx::ErrorStatus MxDbEntity::unhighlight() const {
    if (const ObjectStub* stub = objectId().stub())
        stub->database->notifyHighlighted(*stub->object, false);
    return Mx::eOk;
}

void MxDbEntity::subViewportDraw(MxGiViewportDraw*) {}
std::uint32_t MxDbEntity::subViewportDrawLogicalFlags(MxGiViewportDraw*) {
    return 0;
}
std::uint32_t MxDbEntity::subSetAttributes(MxGiDrawableTraits*) {
    return 0;
}

Mx::ErrorStatus MxDbEntity::subTransformBy(const MxGeMatrix3d&) {
    return Mx::eNotApplicable;
}
Mx::ErrorStatus MxDbEntity::subGetGripPoints(std::vector<MxGePoint3d>&) const {
    return Mx::eNotApplicable;
}
Mx::ErrorStatus MxDbEntity::subGetGripPoints(std::vector<MxDbGripData>&, double, int, const MxGeVector3d&, int) const {
    return Mx::eNotApplicable;
}
Mx::ErrorStatus MxDbEntity::subMoveGripPointsAt(const std::vector<int>&, const MxGeVector3d&) {
    return Mx::eNotApplicable;
}
Mx::ErrorStatus MxDbEntity::subMoveGripPointsAt(const std::vector<void*>&, const MxGeVector3d&, int) {
    return Mx::eNotApplicable;
}
Mx::ErrorStatus MxDbEntity::subGetOsnapPoints(MxDbOsnapMode, const MxGePoint3d&, const MxGePoint3d&,
                                              std::vector<MxGePoint3d>&) const {
    return Mx::eNotApplicable;
}
Mx::ErrorStatus MxDbEntity::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                              std::vector<MxGePoint3d>& points, const MxGeMatrix3d& insertion) const {
    std::vector<MxGePoint3d> own;
    const auto status = subGetOsnapPoints(mode, pick, last, own);
    for (const MxGePoint3d& point : own)
        points.push_back(insertion * point);
    return status;
}
