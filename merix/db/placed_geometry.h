// SPDX-License-Identifier: MIT
#pragma once

#include "host/gi/world_draw.h"
#include "merix/ge/affine.h"

#include <vector>

namespace merix::db {

/// Places geometry and hands it on. A map that keeps circles circles hands curves on as curves; any other flattens
/// them.
class PlacedGeometry final : public MxGiWorldGeometry {
public:
    PlacedGeometry(MxGiWorldGeometry& target, const ge::Affine& map);

    void circle(const MxGePoint3d& center, double radius, const MxGeVector3d& normal) override;
    void circularArc(const MxGePoint3d& center, double radius, const MxGeVector3d& normal, const MxGeVector3d& start,
                     double sweep) override;
    void worldLine(const MxGePoint3d* points, std::size_t count) override;
    void polyline(const MxGePoint3d* points, std::size_t count) override;
    void polygon(const MxGePoint3d* points, std::size_t count) override;
    void pline(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) override;
    void text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction, double height,
              double widthFactor, double oblique, const wchar_t* text) override;

private:
    std::vector<MxGePoint3d> place(const MxGePoint3d* points, std::size_t count) const;
    MxGiPolylineVertex place(const MxGiPolylineVertex& vertex) const;
    void flattenBulge(const MxGiPolylineVertex& from, const MxGePoint2d& to,
                      std::vector<MxGiPolylineVertex>& placed) const;
    void flat(const MxGePoint3d& center, double radius, const MxGeVector3d& normal, MxGeVector3d start, double sweep,
              bool closed);

    MxGiWorldGeometry& m_target;
    const ge::Affine m_map;
    const double m_scale;
    const bool m_mirrored, m_similar;
};

} // namespace merix::db
