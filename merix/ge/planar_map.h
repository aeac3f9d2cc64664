// SPDX-License-Identifier: MIT
// What an affine map of the world does to a figure that lies in a plane of its own.
#pragma once

#include "merix/ge/affine.h"

#include <optional>

namespace merix::ge {

/// True for a map that neither has a part that is no finite number nor brings all of space into one plane.
bool isInvertible(const Affine& map);

/// `v` with the length 1; the zero vector stays.
MxGeVector3d unit(const MxGeVector3d& v);

/// A world map seen from the object coordinate system of a figure's normal: where the figure's points lie afterwards in
/// the object coordinate system of its new normal. Points of one elevation stay points of one elevation.
class PlanarMap {
public:
    /// None when the map brings the figure's plane into a line.
    static std::optional<PlanarMap> of(const Affine& map, const MxGeVector3d& normal);

    MxGePoint3d operator*(const MxGePoint3d& point) const { return m_map * point; }
    MxGeVector3d operator*(const MxGeVector3d& vector) const { return m_map * vector; }
    const MxGeVector3d& normal() const { return m_normal; }

    /// True when figures keep their shape in the plane; the three below have a meaning only then.
    bool isSimilar() const { return m_similar; }
    double scale() const { return m_map.x.length(); }
    /// The angle of the image of the figure's x axis, radians.
    double turn() const { return std::atan2(m_map.x.y, m_map.x.x); }
    /// True when what ran counter-clockwise runs clockwise afterwards.
    bool isReversed() const { return m_reversed; }

    /// Puts in `thickness` what it is afterwards; false when a figure of that thickness would lean, or has none to be.
    bool thicken(double& thickness) const;

private:
    Affine m_map;
    MxGeVector3d m_normal;
    bool m_similar = false, m_reversed = false;
};

} // namespace merix::ge
