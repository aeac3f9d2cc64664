// SPDX-License-Identifier: MIT
#include "merix/ge/planar_map.h"

#include "merix/ge/ocs.h"

namespace merix::ge {

namespace {

/// Lengths and angles that differ by less count as equal: what is left of a double after a few maps.
constexpr double kNear = 1e-9;

double determinant(const Affine& map) {
    return map.x.cross(map.y).dot(map.z);
}

bool isFinite(const MxGeVector3d& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

} // namespace

bool isInvertible(const Affine& map) {
    const double size = map.x.length() * map.y.length() * map.z.length();
    return isFinite(map.x) && isFinite(map.y) && isFinite(map.z) && isFinite(map.origin.asVector()) && size > 0.0 &&
           std::isfinite(size) && std::fabs(determinant(map)) > 1e-12 * size;
}

MxGeVector3d unit(const MxGeVector3d& v) {
    // Divided and not multiplied: an axis of the world stays exactly one.
    const double length = v.length();
    return length > 0.0 ? MxGeVector3d(v.x / length, v.y / length, v.z / length) : v;
}

std::optional<PlanarMap> PlanarMap::of(const Affine& map, const MxGeVector3d& normal) {
    const Affine from = ocsToWorld(normal);
    const MxGeVector3d u = map * from.x, v = map * from.y, up = map * from.z;
    MxGeVector3d across = u.cross(v);
    const double area = across.length(), size = u.length() * v.length();
    if (!(size > 0.0) || !(area > kNear * size) || !std::isfinite(area))
        return std::nullopt;
    // The normal goes with the map, so that a mirror line in a plan leaves it; the sense of turning shows that then.
    PlanarMap planar;
    planar.m_reversed = across.dot(up) < 0.0;
    if (planar.m_reversed)
        across *= -1.0;
    planar.m_normal = unit(across);
    const Affine to = ocsToWorld(planar.m_normal);
    const auto seen = [&to](const MxGeVector3d& w) { return MxGeVector3d(to.x.dot(w), to.y.dot(w), to.z.dot(w)); };
    const MxGeVector3d origin = seen(map.origin.asVector());
    planar.m_map = {seen(u), seen(v), seen(up), {origin.x, origin.y, origin.z}};
    planar.m_map.x.z = planar.m_map.y.z = 0.0;
    planar.m_similar =
        std::fabs(u.length() - v.length()) <= kNear * u.length() && std::fabs(u.dot(v)) <= kNear * u.dot(u);
    return planar;
}

bool PlanarMap::thicken(double& thickness) const {
    if (thickness == 0.0)
        return true;
    const MxGeVector3d& up = m_map.z;
    if (std::hypot(up.x, up.y) > kNear * up.length())
        return false;
    thickness *= up.z;
    return true;
}

} // namespace merix::ge
