// SPDX-License-Identifier: MIT
#include "merix/ge/ocs.h"

namespace merix::ge {

Affine ocsToWorld(const MxGeVector3d& normal) {
    const double length = normal.length();
    if (isWorldZ(normal) || !(length > 0.0) || !std::isfinite(length))
        return {};
    // 1/64: below it the normal counts as close to the world's z axis. Fixed by the DXF format.
    constexpr double kClose = 1.0 / 64.0;
    MxGeVector3d z = normal;
    z *= 1.0 / length;
    const bool close = std::fabs(z.x) < kClose && std::fabs(z.y) < kClose;
    MxGeVector3d x = (close ? MxGeVector3d::kYAxis : MxGeVector3d::kZAxis).cross(z);
    x *= 1.0 / x.length();
    return {x, z.cross(x), z, {}};
}

} // namespace merix::ge
