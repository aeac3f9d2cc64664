// SPDX-License-Identifier: MIT
#include "merix/db/placed_geometry.h"

#include "merix/ge/curve.h"
#include "merix/ge/ocs.h"

namespace merix::db {

namespace {

constexpr double kFullTurn = 6.28318530717958647692;
/// Chords of flattened curves stay within this part of the curve's size.
constexpr double kFineness = 1.0 / 4000.0;

bool isSimilarity(const ge::Affine& map) {
    const double x = map.x.length(), y = map.y.length(), near = 1e-9 * (x + y);
    return std::fabs(x - y) <= near && std::fabs(map.x.dot(map.y)) <= near * x;
}

} // namespace

PlacedGeometry::PlacedGeometry(MxGiWorldGeometry& target, const ge::Affine& map)
    : m_target(target)
    , m_map(map)
    , m_scale(map.x.length())
    , m_mirrored(map.x.cross(map.y).dot(map.z) < 0.0)
    , m_similar(isSimilarity(map)) {}

void PlacedGeometry::circle(const MxGePoint3d& center, double radius, const MxGeVector3d& normal) {
    if (m_similar)
        m_target.circle(m_map * center, radius * m_scale, m_map * normal);
    else
        flat(center, radius, normal, ge::ocsToWorld(normal).x, kFullTurn, true);
}

void PlacedGeometry::circularArc(const MxGePoint3d& center, double radius, const MxGeVector3d& normal,
                                 const MxGeVector3d& start, double sweep) {
    if (!m_similar) {
        flat(center, radius, normal, start, sweep, false);
        return;
    }
    // Seen against a mirrored axis the arc would run the other way.
    MxGeVector3d axis = m_map * normal;
    if (m_mirrored)
        axis *= -1.0;
    m_target.circularArc(m_map * center, radius * m_scale, axis, m_map * start, sweep);
}

std::vector<MxGePoint3d> PlacedGeometry::place(const MxGePoint3d* points, std::size_t count) const {
    std::vector<MxGePoint3d> placed;
    placed.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        placed.push_back(m_map * points[i]);
    return placed;
}

void PlacedGeometry::worldLine(const MxGePoint3d* points, std::size_t count) {
    m_target.worldLine(place(points, count).data(), count);
}

void PlacedGeometry::polyline(const MxGePoint3d* points, std::size_t count) {
    m_target.polyline(place(points, count).data(), count);
}

void PlacedGeometry::polygon(const MxGePoint3d* points, std::size_t count) {
    m_target.polygon(place(points, count).data(), count);
}

void PlacedGeometry::pline(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) {
    std::vector<MxGiPolylineVertex> placed;
    placed.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        placed.push_back(place(vertices[i]));
        if (!m_similar && vertices[i].bulge != 0.0 && (closed || i + 1 < count))
            flattenBulge(vertices[i], vertices[(i + 1) % count].point, placed);
    }
    m_target.pline(placed.data(), placed.size(), closed);
}

void PlacedGeometry::text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction,
                          double height, double widthFactor, double oblique, const wchar_t* text) {
    MxGeVector3d along = direction, up = normal.cross(direction);
    if (!(along.length() > 0.0) || !(up.length() > 0.0))
        return;
    along *= 1.0 / along.length();
    up *= 1.0 / up.length();
    const MxGeVector3d newAlong = m_map * along, newUp = m_map * up;
    MxGeVector3d axis = newAlong.cross(newUp);
    const double width = newAlong.length();
    if (!(width > 0.0) || !(axis.length() > 0.0))
        return;
    // Height is measured square to the base line; what is left of the upright leans.
    const double rise = axis.length() / width;
    const double lean = std::atan2(newUp.dot(newAlong) / width, rise);
    axis *= 1.0 / axis.length();
    m_target.text(m_map * position, axis, newAlong, height * rise, widthFactor * width / rise, oblique + lean, text);
}

MxGiPolylineVertex PlacedGeometry::place(const MxGiPolylineVertex& vertex) const {
    MxGiPolylineVertex placed = vertex;
    const MxGePoint3d p = m_map * MxGePoint3d(vertex.point.x, vertex.point.y, 0.0);
    placed.point = {p.x, p.y};
    placed.bulge = !m_similar ? 0.0 : m_mirrored ? -vertex.bulge : vertex.bulge;
    if (placed.startWidth > 0.0)
        placed.startWidth *= m_scale;
    if (placed.endWidth > 0.0)
        placed.endWidth *= m_scale;
    return placed;
}

/// Adds the inner points of an arc segment whose first vertex is the last one placed.
void PlacedGeometry::flattenBulge(const MxGiPolylineVertex& from, const MxGePoint2d& to,
                                  std::vector<MxGiPolylineVertex>& placed) const {
    if (from.point == to)
        return;
    const ge::Curve arc = ge::curveOfBulge(from.point, to, from.bulge);
    std::vector<MxGePoint2d> points;
    ge::flatten(arc, arc.reach() * kFineness, nullptr, points);
    const MxGiPolylineVertex first = placed.back();
    const double step =
        points.size() > 1 ? (first.endWidth - first.startWidth) / static_cast<double>(points.size() - 1) : 0.0;
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        placed.back().endWidth = placed.back().startWidth + step;
        MxGiPolylineVertex next = first;
        next.startWidth = placed.back().endWidth;
        const MxGePoint3d p = m_map * MxGePoint3d(points[i].x, points[i].y, 0.0);
        next.point = {p.x, p.y};
        placed.push_back(next);
    }
}

void PlacedGeometry::flat(const MxGePoint3d& center, double radius, const MxGeVector3d& normal, MxGeVector3d start,
                          double sweep, bool closed) {
    MxGeVector3d axis = normal;
    if (!(start.length() > 0.0) || !(axis.length() > 0.0))
        return;
    start *= radius / start.length();
    axis *= 1.0 / axis.length();
    const MxGeVector3d across = axis.cross(start);
    const MxGePoint3d middle = m_map * center;
    const MxGeVector3d u = m_map * start, v = m_map * across;
    const ge::Curve curve{{middle.x, middle.y}, {u.x, u.y}, {v.x, v.y}, 0.0, sweep};
    std::vector<MxGePoint2d> points;
    if (!(curve.reach() > 0.0))
        return;
    ge::flatten(curve, curve.reach() * kFineness, nullptr, points);
    // As a polyline, so that a fill shows.
    std::vector<MxGiPolylineVertex> vertices;
    for (const MxGePoint2d& p : points)
        vertices.push_back({p, 0.0, 0.0, 0.0});
    if (closed && vertices.size() > 1)
        vertices.pop_back();
    m_target.pline(vertices.data(), vertices.size(), closed);
}

} // namespace merix::db
