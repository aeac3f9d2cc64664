// SPDX-License-Identifier: MIT
// What the entity kinds share when a hand takes them.
#pragma once

#include "host/db/entity.h"

#include <algorithm>
#include <vector>

namespace merix::db {

/// True when the grip of this index is among those that are moved.
inline bool movesGrip(const std::vector<int>& indices, int index) {
    return std::find(indices.begin(), indices.end(), index) != indices.end();
}

inline MxGePoint3d middle(const MxGePoint3d& a, const MxGePoint3d& b) {
    return {(a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2};
}

/// Takes the snap points of the kind that was asked for.
class SnapPoints {
public:
    SnapPoints(MxDbOsnapMode mode, std::vector<MxGePoint3d>& points)
        : m_mode(mode)
        , m_points(points) {}
    void add(MxDbOsnapMode kind, const MxGePoint3d& point) const {
        if (kind == m_mode)
            m_points.push_back(point);
    }

private:
    MxDbOsnapMode m_mode;
    std::vector<MxGePoint3d>& m_points;
};

} // namespace merix::db
