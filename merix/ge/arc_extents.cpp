// SPDX-License-Identifier: MIT
#include "merix/ge/arc_extents.h"

namespace merix::ge {

MxDbExtents arcExtents(const MxGePoint3d& center, const MxGeVector3d& u, const MxGeVector3d& v, double sweep) {
    constexpr double kPi = 3.14159265358979323846;
    const auto at = [&](double t) {
        const double c = std::cos(t), s = std::sin(t);
        return center + MxGeVector3d(u.x * c + v.x * s, u.y * c + v.y * s, u.z * c + v.z * s);
    };
    MxDbExtents box;
    if (std::fabs(sweep) >= 2 * kPi) {
        const MxGeVector3d half(std::hypot(u.x, v.x), std::hypot(u.y, v.y), std::hypot(u.z, v.z));
        box.set(center - half, center + half);
        return box;
    }
    box.addPoint(at(0.0));
    box.addPoint(at(sweep));
    // Along each axis the ellipse turns back at two angles, half a turn apart.
    const double low = std::fmin(0.0, sweep), high = std::fmax(0.0, sweep);
    for (const double angle : {std::atan2(v.x, u.x), std::atan2(v.y, u.y), std::atan2(v.z, u.z)}) {
        for (double t = angle + kPi * std::ceil((low - angle) / kPi); t < high; t += kPi)
            box.addPoint(at(t));
    }
    return box;
}

} // namespace merix::ge
