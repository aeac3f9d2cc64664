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

MERIX_RX_CLASS(Arc, "MxDbArc", MxDbEntity, rx::makeObject<Arc>, "ARC")

bool Arc::subWorldDraw(MxGiWorldDraw* draw) {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    const MxGeVector3d from(std::cos(startAngle), std::sin(startAngle), 0.0);
    draw->geometry().circularArc(ocs * center, radius, normal, ocs * from, sweep());
    return true;
}

namespace {

/// Points of an arc in its own plane.
struct ArcPoints {
    MxGePoint3d start, end, middle;
};

MxGePoint3d pointAt(const Arc& arc, double angle) {
    return {arc.center.x + arc.radius * std::cos(angle), arc.center.y + arc.radius * std::sin(angle), arc.center.z};
}

ArcPoints pointsOf(const Arc& arc) {
    return {pointAt(arc, arc.startAngle), pointAt(arc, arc.endAngle), pointAt(arc, arc.startAngle + arc.sweep() / 2)};
}

double angleTo(const MxGePoint3d& from, const MxGePoint3d& to) {
    return std::atan2(to.y - from.y, to.x - from.x);
}

/// The arc through three points of its plane; false when they lie on one line.
bool setThrough(Arc& arc, const ArcPoints& p) {
    const double ax = p.end.x - p.start.x, ay = p.end.y - p.start.y;
    const double bx = p.middle.x - p.start.x, by = p.middle.y - p.start.y;
    const double turn = ax * by - ay * bx, aa = ax * ax + ay * ay, bb = bx * bx + by * by;
    if (!(std::fabs(turn) > 1e-12 * std::sqrt(aa * bb)))
        return false;
    const double x = (by * aa - ay * bb) / (2 * turn), y = (ax * bb - bx * aa) / (2 * turn);
    if (!std::isfinite(x) || !std::isfinite(y))
        return false;
    arc.assertWriteEnabled();
    arc.center = {p.start.x + x, p.start.y + y, arc.center.z};
    arc.radius = std::hypot(x, y);
    // The middle lies to the right of the chord of an arc that runs counter-clockwise.
    const bool forward = turn < 0.0;
    arc.startAngle = angleTo(arc.center, forward ? p.start : p.end);
    arc.endAngle = angleTo(arc.center, forward ? p.end : p.start);
    return true;
}

} // namespace

double Arc::sweep() const {
    // Ends that are the same but for the last digits of their angles are a full turn and not a point.
    constexpr double kNone = 1e-12;
    const double turn = std::fmod(endAngle - startAngle, 2 * kPi);
    return turn <= kNone ? turn + 2 * kPi : turn;
}

Mx::ErrorStatus Arc::subTransformBy(const MxGeMatrix3d& map) {
    const auto planar = ge::PlanarMap::of(map, normal);
    double thick = thickness;
    if (!planar || !planar->isSimilar() || !planar->thicken(thick))
        return Mx::eCannotScaleNonUniformly;
    assertWriteEnabled();
    center = *planar * center;
    radius *= planar->scale();
    thickness = thick;
    normal = planar->normal();
    const double length = endAngle - startAngle;
    startAngle = std::fmod(planar->isReversed() ? planar->turn() - endAngle : planar->turn() + startAngle, 2 * kPi);
    if (startAngle < 0.0)
        startAngle += 2 * kPi;
    endAngle = startAngle + length;
    return Mx::eOk;
}

Mx::ErrorStatus Arc::subGetGripPoints(std::vector<MxGePoint3d>& grips) const {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    const ArcPoints own = pointsOf(*this);
    for (const MxGePoint3d& point : {own.start, own.end, own.middle, center})
        grips.push_back(ocs * point);
    return Mx::eOk;
}

Mx::ErrorStatus Arc::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    const bool moved[] = {movesGrip(indices, 0), movesGrip(indices, 1), movesGrip(indices, 2)};
    if (movesGrip(indices, 3) || (moved[0] && moved[1] && moved[2]))
        return subTransformBy(MxGeMatrix3d::translation(offset));
    if (!moved[0] && !moved[1] && !moved[2])
        return Mx::eOk;
    const ge::Affine ocs = ge::ocsToWorld(normal);
    const MxGeVector3d inPlane(ocs.x.dot(offset), ocs.y.dot(offset), 0.0);
    ArcPoints points = pointsOf(*this);
    MxGePoint3d* const all[] = {&points.start, &points.end, &points.middle};
    for (int i = 0; i < 3; ++i) {
        if (moved[i])
            *all[i] = *all[i] + inPlane;
    }
    return setThrough(*this, points) ? Mx::eOk : Mx::eInvalidInput;
}

Mx::ErrorStatus Arc::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d&, const MxGePoint3d&,
                                       std::vector<MxGePoint3d>& points) const {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    const ArcPoints own = pointsOf(*this);
    const SnapPoints snap(mode, points);
    snap.add(MxDbOsnapMode::kEnd, ocs * own.start);
    snap.add(MxDbOsnapMode::kEnd, ocs * own.end);
    snap.add(MxDbOsnapMode::kMid, ocs * own.middle);
    snap.add(MxDbOsnapMode::kCenter, ocs * center);
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
