// SPDX-License-Identifier: MIT
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/db/entity_edit.h"
#include "merix/db/placed_geometry.h"
#include "merix/ge/curve.h"
#include "merix/ge/ocs.h"
#include "merix/ge/planar_map.h"
#include "merix/rx/class_registry.h"

namespace merix::db {

MERIX_RX_CLASS(LwPolyline, "MxDbPolyline", MxDbEntity, rx::makeObject<LwPolyline>, "LWPOLYLINE")

namespace {
/// A point and three numbers.
constexpr std::size_t kVertexSize = 25 + 3 * 9;
constexpr std::int16_t kClosed = 1;
} // namespace

bool LwPolyline::subWorldDraw(MxGiWorldDraw* draw) {
    std::vector<MxGiPolylineVertex> drawn = vertices;
    for (MxGiPolylineVertex& vertex : drawn) {
        if (vertex.startWidth < 0.0)
            vertex.startWidth = constantWidth;
        if (vertex.endWidth < 0.0)
            vertex.endWidth = constantWidth;
    }
    // Bands with a width are filled; the rest of the polyline is not touched by it.
    bool wide = false;
    for (const MxGiPolylineVertex& vertex : drawn)
        wide = wide || vertex.startWidth > 0.0 || vertex.endWidth > 0.0;
    draw->subEntityTraits().setFill(wide);
    if (ge::isWorldZ(normal)) {
        draw->geometry().pline(drawn.data(), drawn.size(), closed);
    } else {
        ge::Affine ocs = ge::ocsToWorld(normal);
        ocs.origin = ocs * MxGePoint3d(0.0, 0.0, elevation);
        PlacedGeometry placed(draw->geometry(), ocs);
        placed.pline(drawn.data(), drawn.size(), closed);
    }
    return true;
}

namespace {

bool hasArcsOrWidths(const LwPolyline& polyline) {
    return polyline.constantWidth != 0.0 ||
           std::any_of(polyline.vertices.begin(), polyline.vertices.end(), [](const MxGiPolylineVertex& vertex) {
               return vertex.bulge != 0.0 || vertex.startWidth > 0.0 || vertex.endWidth > 0.0;
           });
}

} // namespace

Mx::ErrorStatus LwPolyline::subTransformBy(const MxGeMatrix3d& map) {
    const auto planar = ge::PlanarMap::of(map, normal);
    double thick = thickness;
    if (!planar || !planar->thicken(thick) || (!planar->isSimilar() && hasArcsOrWidths(*this)))
        return Mx::eCannotScaleNonUniformly;
    assertWriteEnabled();
    for (MxGiPolylineVertex& vertex : vertices) {
        const MxGePoint3d moved = *planar * MxGePoint3d(vertex.point.x, vertex.point.y, elevation);
        vertex.point = {moved.x, moved.y};
        if (planar->isReversed())
            vertex.bulge = -vertex.bulge;
        for (double* width : {&vertex.startWidth, &vertex.endWidth}) {
            if (*width > 0.0)
                *width *= planar->scale();
        }
    }
    constantWidth *= planar->scale();
    elevation = (*planar * MxGePoint3d(0.0, 0.0, elevation)).z;
    thickness = thick;
    normal = planar->normal();
    return Mx::eOk;
}

Mx::ErrorStatus LwPolyline::subGetGripPoints(std::vector<MxGePoint3d>& grips) const {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    for (const MxGiPolylineVertex& vertex : vertices)
        grips.push_back(ocs * MxGePoint3d(vertex.point.x, vertex.point.y, elevation));
    return Mx::eOk;
}

Mx::ErrorStatus LwPolyline::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    const double x = ocs.x.dot(offset), y = ocs.y.dot(offset);
    assertWriteEnabled();
    std::vector<char> moved(vertices.size(), 0);
    for (const int index : indices) {
        if (index < 0 || static_cast<std::size_t>(index) >= vertices.size() || moved[static_cast<std::size_t>(index)])
            continue;
        moved[static_cast<std::size_t>(index)] = 1;
        MxGePoint2d& point = vertices[static_cast<std::size_t>(index)].point;
        point = {point.x + x, point.y + y};
    }
    // The vertices share one elevation, so off its plane the polyline moves as a whole or not at all.
    if (!vertices.empty() && std::find(moved.begin(), moved.end(), 0) == moved.end())
        elevation += ocs.z.dot(offset);
    return Mx::eOk;
}

Mx::ErrorStatus LwPolyline::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d&, const MxGePoint3d&,
                                              std::vector<MxGePoint3d>& points) const {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    const auto placed = [&](const MxGePoint2d& p) { return ocs * MxGePoint3d(p.x, p.y, elevation); };
    const SnapPoints snap(mode, points);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const MxGiPolylineVertex& from = vertices[i];
        snap.add(MxDbOsnapMode::kEnd, placed(from.point));
        if (!closed && i + 1 == vertices.size())
            break;
        const MxGePoint2d& to = vertices[(i + 1) % vertices.size()].point;
        if (from.bulge == 0.0 || from.point == to) {
            snap.add(MxDbOsnapMode::kMid, placed({(from.point.x + to.x) / 2, (from.point.y + to.y) / 2}));
            continue;
        }
        const ge::Curve arc = ge::curveOfBulge(from.point, to, from.bulge);
        snap.add(MxDbOsnapMode::kMid, placed(arc.at(arc.start + arc.sweep / 2)));
        snap.add(MxDbOsnapMode::kCenter, placed(arc.center));
    }
    return Mx::eOk;
}

Mx::ErrorStatus LwPolyline::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
        return status;
    filer->readBool(closed);
    filer->readInt16(flags);
    filer->readDouble(constantWidth);
    filer->readDouble(elevation);
    filer->readDouble(thickness);
    readVector(*filer, normal);
    std::uint32_t count = 0;
    if (const auto status = readCount(*filer, count, kVertexSize); status != Mx::eOk)
        return status;
    vertices.assign(count, {});
    for (MxGiPolylineVertex& vertex : vertices) {
        MxGePoint3d point;
        filer->readPoint3d(point);
        vertex.point = {point.x, point.y};
        filer->readDouble(vertex.bulge);
        filer->readDouble(vertex.startWidth);
        filer->readDouble(vertex.endWidth);
    }
    return filer->filerStatus();
}

Mx::ErrorStatus LwPolyline::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeBool(closed);
    filer->writeInt16(flags);
    filer->writeDouble(constantWidth);
    filer->writeDouble(elevation);
    filer->writeDouble(thickness);
    writeVector(*filer, normal);
    filer->writeUInt32(static_cast<std::uint32_t>(vertices.size()));
    for (const MxGiPolylineVertex& vertex : vertices) {
        filer->writePoint3d({vertex.point.x, vertex.point.y, 0.0});
        filer->writeDouble(vertex.bulge);
        filer->writeDouble(vertex.startWidth);
        filer->writeDouble(vertex.endWidth);
    }
    return filer->filerStatus();
}

Mx::ErrorStatus LwPolyline::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dxfInFields(filer); status != Mx::eOk)
        return status;
    vertices.clear();
    return readItems(filer, this, [&](int code) {
        // Widths and bulge belong to the vertex before them.
        if ((code == 40 || code == 41 || code == 42) && !vertices.empty()) {
            MxGiPolylineVertex& vertex = vertices.back();
            (code == 40 ? vertex.startWidth : code == 41 ? vertex.endWidth : vertex.bulge) = filer->itemDouble();
            return true;
        }
        switch (code) {
        case 10: {
            const MxGePoint3d point = filer->itemPoint3d();
            vertices.push_back({{point.x, point.y}});
            return true;
        }
        case 38:
            elevation = filer->itemDouble();
            return true;
        case 39:
            thickness = filer->itemDouble();
            return true;
        case 43:
            constantWidth = filer->itemDouble();
            return true;
        case 70:
            closed = filer->itemInt16() & kClosed;
            flags = static_cast<std::int16_t>(filer->itemInt16() & ~kClosed);
            return true;
        case 210:
            normal = itemVector(filer);
            return true;
        default:
            return false;
        }
    });
}

Mx::ErrorStatus LwPolyline::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbPolyline");
    filer->writeInt32(90, static_cast<std::int32_t>(vertices.size()));
    filer->writeInt16(70, static_cast<std::int16_t>(flags | (closed ? kClosed : 0)));
    writeUnlessZero(filer, 43, constantWidth);
    writeUnlessZero(filer, 38, elevation);
    writeUnlessZero(filer, 39, thickness);
    for (const MxGiPolylineVertex& vertex : vertices) {
        filer->writePoint2d(10, vertex.point);
        if (vertex.startWidth >= 0.0)
            filer->writeDouble(40, vertex.startWidth);
        if (vertex.endWidth >= 0.0)
            filer->writeDouble(41, vertex.endWidth);
        writeUnlessZero(filer, 42, vertex.bulge);
    }
    return writeNormal(filer, normal);
}

} // namespace merix::db
