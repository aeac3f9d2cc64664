// SPDX-License-Identifier: MIT
#include "merix/ui/grips.h"

#include "merix/db/access.h"
#include "merix/db/database_imp.h"
#include "merix/ed/reactor_list.h"

#include <algorithm>

namespace merix::ui {

namespace {

/// With more entities selected grips would cover the drawing.
constexpr std::size_t kMostEntities = 100;
/// Of the coordinates: what ends of lines drawn onto each other differ by after being computed.
constexpr double kSamePlace = 1e-9;

bool samePlace(const MxGePoint3d& a, const MxGePoint3d& b) {
    const auto same = [](double p, double q) {
        return std::abs(p - q) <= kSamePlace * std::max({1.0, std::abs(p), std::abs(q)});
    };
    return same(a.x, b.x) && same(a.y, b.y);
}

} // namespace

void Grips::gather(const std::vector<MxDbObjectId>& ids) {
    const std::vector<Grip> before = std::exchange(m_grips, {});
    if (ids.size() > kMostEntities)
        return;
    const auto wasHot = [&](MxDbObjectId id, int index) {
        return std::any_of(before.begin(), before.end(),
                           [&](const Grip& grip) { return grip.hot && grip.id == id && grip.index == index; });
    };
    for (const MxDbObjectId id : ids) {
        MxDbObject* object = db::DatabaseImp::peek(id);
        if (!object || !object->isKindOf(MxDbEntity::desc()))
            continue;
        std::vector<MxGePoint3d> points;
        const db::ReadAccess readable(*object);
        ed::guarded("An entity's grips", [&] { static_cast<MxDbEntity*>(object)->getGripPoints(points); });
        for (std::size_t i = 0; i < points.size(); ++i) {
            const int index = static_cast<int>(i);
            m_grips.push_back({id, index, points[i], wasHot(id, index)});
        }
    }
}

std::vector<Grip> Grips::hot() const {
    std::vector<Grip> found;
    std::copy_if(m_grips.begin(), m_grips.end(), std::back_inserter(found), [](const Grip& grip) { return grip.hot; });
    return found;
}

const Grip* Grips::at(const MxGePoint3d& world, double reach) const {
    const Grip* nearest = nullptr;
    double best = reach;
    for (const Grip& grip : m_grips) {
        const double distance = std::max(std::abs(grip.point.x - world.x), std::abs(grip.point.y - world.y));
        if (distance > best || (nearest && distance == best))
            continue;
        nearest = &grip;
        best = distance;
    }
    return nearest;
}

void Grips::setHot(const MxGePoint3d& point, bool hot) {
    for (Grip& grip : m_grips)
        if (samePlace(grip.point, point))
            grip.hot = hot;
}

bool Grips::isHot(const MxGePoint3d& point) const {
    return std::any_of(m_grips.begin(), m_grips.end(),
                       [&](const Grip& grip) { return grip.hot && samePlace(grip.point, point); });
}

void Grips::coolDown() {
    for (Grip& grip : m_grips)
        grip.hot = false;
}

} // namespace merix::ui
