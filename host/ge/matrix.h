// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/geometry.h"

/// An affine map of space: the images of the three axes and of the origin.
struct MxGeMatrix3d {
    MxGeVector3d x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};
    MxGePoint3d origin;

    MxGeVector3d operator*(const MxGeVector3d& v) const {
        return {x.x * v.x + y.x * v.y + z.x * v.z, x.y * v.x + y.y * v.y + z.y * v.z,
                x.z * v.x + y.z * v.y + z.z * v.z};
    }
    MxGePoint3d operator*(const MxGePoint3d& p) const { return origin + *this * p.asVector(); }
    /// First `other`, then this.
    MxGeMatrix3d operator*(const MxGeMatrix3d& other) const {
        return {*this * other.x, *this * other.y, *this * other.z, *this * other.origin};
    }
    bool operator==(const MxGeMatrix3d&) const = default;

    static MxGeMatrix3d translation(const MxGeVector3d& by) {
        return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {by.x, by.y, by.z}};
    }
    static MxGeMatrix3d scaling(double sx, double sy, double sz) { return {{sx, 0, 0}, {0, sy, 0}, {0, 0, sz}, {}}; }
    /// About the z axis, radians.
    static MxGeMatrix3d rotation(double angle) {
        const double c = std::cos(angle), s = std::sin(angle);
        return {{c, s, 0}, {-s, c, 0}, {0, 0, 1}, {}};
    }
    /// `map` with `center` for its origin: a rotation or scaling about that point.
    static MxGeMatrix3d about(const MxGePoint3d& center, const MxGeMatrix3d& map) {
        return translation(center.asVector()) * map * translation({-center.x, -center.y, -center.z});
    }
};
