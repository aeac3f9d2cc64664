// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/geometry.h"

#include <algorithm>

/// An axis-parallel box. The empty box has its minimum above its maximum, so no point lies inside it.
class MxDbExtents {
public:
    constexpr MxDbExtents() = default;
    constexpr MxDbExtents(const MxGePoint3d& minimum, const MxGePoint3d& maximum)
        : m_min(minimum)
        , m_max(maximum) {}

    const MxGePoint3d& minPoint() const { return m_min; }
    const MxGePoint3d& maxPoint() const { return m_max; }
    bool isEmpty() const { return m_min.x > m_max.x || m_min.y > m_max.y; }

    void set(const MxGePoint3d& minimum, const MxGePoint3d& maximum) { m_min = minimum, m_max = maximum; }
    void addPoint(const MxGePoint3d& p) {
        m_min = {std::min(m_min.x, p.x), std::min(m_min.y, p.y), std::min(m_min.z, p.z)};
        m_max = {std::max(m_max.x, p.x), std::max(m_max.y, p.y), std::max(m_max.z, p.z)};
    }
    void addExt(const MxDbExtents& other) {
        if (other.isEmpty())
            return;
        addPoint(other.m_min);
        addPoint(other.m_max);
    }

private:
    /// Beyond any coordinate of a drawing, and still finite when two are subtracted.
    static constexpr double kFar = 1.0e20;
    MxGePoint3d m_min{kFar, kFar, kFar};
    MxGePoint3d m_max{-kFar, -kFar, -kFar};
};
