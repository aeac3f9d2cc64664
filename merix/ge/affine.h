// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/geometry.h"

namespace merix::ge {

/// An affine map of space: the images of the three axes and of the origin.
struct Affine {
    MxGeVector3d x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};
    MxGePoint3d origin;

    MxGeVector3d operator*(const MxGeVector3d& v) const {
        return {x.x * v.x + y.x * v.y + z.x * v.z, x.y * v.x + y.y * v.y + z.y * v.z,
                x.z * v.x + y.z * v.y + z.z * v.z};
    }
    MxGePoint3d operator*(const MxGePoint3d& p) const { return origin + *this * p.asVector(); }
    /// First `other`, then this.
    Affine operator*(const Affine& other) const {
        return {*this * other.x, *this * other.y, *this * other.z, *this * other.origin};
    }

    static Affine translation(const MxGeVector3d& by) { return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {by.x, by.y, by.z}}; }
    static Affine scaling(double sx, double sy, double sz) { return {{sx, 0, 0}, {0, sy, 0}, {0, 0, sz}, {}}; }
    /// About the z axis.
    static Affine rotation(double angle) {
        const double c = std::cos(angle), s = std::sin(angle);
        return {{c, s, 0}, {-s, c, 0}, {0, 0, 1}, {}};
    }
};

} // namespace merix::ge
