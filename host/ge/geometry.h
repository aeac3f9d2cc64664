// SPDX-License-Identifier: MIT
// Points and vectors of drawing space, in drawing units; angles in radians, counter-clockwise seen against the axis.
#pragma once

#include <cmath>

struct MxGeVector3d {
    double x = 0.0, y = 0.0, z = 0.0;

    constexpr MxGeVector3d() = default;
    constexpr MxGeVector3d(double ax, double ay, double az)
        : x(ax)
        , y(ay)
        , z(az) {}

    static const MxGeVector3d kXAxis, kYAxis, kZAxis;

    MxGeVector3d& operator*=(double scale) {
        x *= scale, y *= scale, z *= scale;
        return *this;
    }
    double length() const { return std::sqrt(x * x + y * y + z * z); }
    double dot(const MxGeVector3d& v) const { return x * v.x + y * v.y + z * v.z; }
    MxGeVector3d cross(const MxGeVector3d& v) const {
        return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x};
    }
    /// Turns the vector by `angle` about `axis` (any length but zero).
    MxGeVector3d& rotateBy(double angle, const MxGeVector3d& axis) {
        const double n = axis.length();
        const MxGeVector3d k{axis.x / n, axis.y / n, axis.z / n};
        const MxGeVector3d perpendicular = k.cross(*this);
        const double along = k.dot(*this) * (1.0 - std::cos(angle)), c = std::cos(angle), s = std::sin(angle);
        *this = {x * c + perpendicular.x * s + k.x * along, y * c + perpendicular.y * s + k.y * along,
                 z * c + perpendicular.z * s + k.z * along};
        return *this;
    }
    bool operator==(const MxGeVector3d&) const = default;
};

inline constexpr MxGeVector3d MxGeVector3d::kXAxis{1.0, 0.0, 0.0};
inline constexpr MxGeVector3d MxGeVector3d::kYAxis{0.0, 1.0, 0.0};
inline constexpr MxGeVector3d MxGeVector3d::kZAxis{0.0, 0.0, 1.0};

struct MxGePoint3d {
    double x = 0.0, y = 0.0, z = 0.0;

    constexpr MxGePoint3d() = default;
    constexpr MxGePoint3d(double ax, double ay, double az)
        : x(ax)
        , y(ay)
        , z(az) {}
    constexpr MxGePoint3d operator+(const MxGeVector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
    constexpr MxGePoint3d operator-(const MxGeVector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
    constexpr MxGeVector3d operator-(const MxGePoint3d& p) const { return {x - p.x, y - p.y, z - p.z}; }
    constexpr MxGeVector3d asVector() const { return {x, y, z}; }
    bool operator==(const MxGePoint3d&) const = default;
};

struct MxGePoint2d {
    double x = 0.0, y = 0.0;
    bool operator==(const MxGePoint2d&) const = default;
};
