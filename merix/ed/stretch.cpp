// SPDX-License-Identifier: MIT
#include "merix/ed/stretch.h"

#include "merix/db/entities.h"
#include "merix/ge/ocs.h"

#include <algorithm>
#include <cmath>

namespace merix::ed {

namespace {

using Points = std::vector<MxGePoint3d>;

bool isIn(const MxDbExtents& box, const MxGePoint3d& p) {
    return p.x >= box.minPoint().x && p.x <= box.maxPoint().x && p.y >= box.minPoint().y && p.y <= box.maxPoint().y;
}

bool isNear(const MxGePoint3d& a, const MxGePoint3d& b) {
    constexpr double kTolerance = 1e-9;
    return (a - b).length() <= kTolerance * (1.0 + std::fabs(a.x) + std::fabs(a.y));
}

/// The points that a stretch may move one by one: among an entity's grips there are others too, which follow these.
Points definingPoints(const MxDbEntity& entity, const Points& grips) {
    if (const auto* line = dynamic_cast<const db::Line*>(&entity))
        return {line->start, line->end};
    if (const auto* arc = dynamic_cast<const db::Arc*>(&entity)) {
        const auto at = [&](double angle) {
            const MxGeVector3d out(arc->radius * std::cos(angle), arc->radius * std::sin(angle), 0.0);
            return ge::ocsToWorld(arc->normal) * (arc->center + out);
        };
        return {at(arc->startAngle), at(arc->endAngle)};
    }
    if (const auto* polyline = dynamic_cast<const db::LwPolyline*>(&entity)) {
        Points points;
        for (const auto& vertex : polyline->vertices)
            points.push_back(ge::ocsToWorld(polyline->normal) *
                             MxGePoint3d(vertex.point.x, vertex.point.y, polyline->elevation));
        return points;
    }
    if (const auto* circle = dynamic_cast<const db::Circle*>(&entity))
        return {ge::ocsToWorld(circle->normal) * circle->center};
    return grips.empty() ? grips : Points{grips.front()};
}

} // namespace

Mx::ErrorStatus stretch(MxDbEntity& entity, const MxDbExtents& box, const MxGeVector3d& by) {
    Points grips;
    if (const auto status = entity.getGripPoints(grips); status != Mx::eOk)
        return status;
    const Points points = definingPoints(entity, grips);
    const auto inside = std::count_if(points.begin(), points.end(), [&](const auto& p) { return isIn(box, p); });
    if (inside == 0)
        return Mx::eOk;
    if (std::size_t(inside) == points.size())
        return entity.transformBy(MxGeMatrix3d::translation(by));
    std::vector<int> moved;
    for (std::size_t i = 0; i < grips.size(); ++i) {
        const auto isGrip = [&](const MxGePoint3d& p) { return isNear(p, grips[i]); };
        if (isIn(box, grips[i]) && std::any_of(points.begin(), points.end(), isGrip))
            moved.push_back(static_cast<int>(i));
    }
    return entity.moveGripPointsAt(moved, by);
}

} // namespace merix::ed
