// SPDX-License-Identifier: MIT
// Boxes of what is drawn, found by drawing it.
#include "merix/db/access.h"
#include "merix/db/draw.h"
#include "merix/ge/arc_extents.h"
#include "merix/ge/curve.h"
#include "merix/ge/ocs.h"

#include <cwchar>

namespace merix::db {

namespace {

TextMeasure g_measure = nullptr;

class IgnoredTraits final : public EntityTraitsSink {
public:
    void setEntityTraits(const EntityTraits&) override {}
};

class ExtentsGeometry final : public MxGiWorldGeometry {
public:
    MxDbExtents box;

    void circle(const MxGePoint3d& center, double radius, const MxGeVector3d& normal) override {
        constexpr double kTurns = 7.0; // more than a full turn
        circularArc(center, radius, normal, ge::ocsToWorld(normal).x, kTurns);
    }
    void circularArc(const MxGePoint3d& center, double radius, const MxGeVector3d& normal, const MxGeVector3d& start,
                     double sweep) override {
        MxGeVector3d u = start, axis = normal;
        if (!(u.length() > 0.0) || !(axis.length() > 0.0))
            return;
        u *= radius / u.length();
        axis *= 1.0 / axis.length();
        box.addExt(ge::arcExtents(center, u, axis.cross(u), sweep));
    }
    void worldLine(const MxGePoint3d* points, std::size_t count) override {
        for (std::size_t i = 0; i < count; ++i)
            box.addPoint(points[i]);
    }
    void polyline(const MxGePoint3d* points, std::size_t count) override { worldLine(points, count); }
    void polygon(const MxGePoint3d* points, std::size_t count) override { worldLine(points, count); }
    void pline(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) override {
        for (std::size_t i = 0; i < count; ++i) {
            const MxGiPolylineVertex& from = vertices[i];
            MxDbExtents segment;
            segment.addPoint({from.point.x, from.point.y, 0.0});
            if (closed || i + 1 < count) {
                const MxGePoint2d& to = vertices[(i + 1) % count].point;
                segment.addPoint({to.x, to.y, 0.0});
                if (from.bulge != 0.0 && from.point != to)
                    segment.addExt(ge::extents(ge::curveOfBulge(from.point, to, from.bulge)));
            }
            const double half = std::max({from.startWidth, from.endWidth, 0.0}) / 2;
            const MxGeVector3d margin(half, half, 0.0);
            box.addPoint(segment.minPoint() - margin);
            box.addPoint(segment.maxPoint() + margin);
        }
    }
    void text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction, double height,
              double widthFactor, double, const wchar_t* text) override {
        MxGeVector3d along = direction, up = normal.cross(direction);
        if (!(along.length() > 0.0) || !(up.length() > 0.0))
            return;
        along *= textAdvance(text) * height * widthFactor / along.length();
        up *= height / up.length();
        for (const MxGePoint3d& corner : {position, position + along, position + up, position + along + up})
            box.addPoint(corner);
    }
};

class ExtentsDraw final : public MxGiWorldDraw {
public:
    MxGiContext* context() const override { return nullptr; }
    MxGiSubEntityTraits& subEntityTraits() const override { return m_traits; }
    ExtentsGeometry& geometry() const override { return m_geometry; }

private:
    mutable IgnoredTraits m_traits;
    mutable ExtentsGeometry m_geometry;
};

} // namespace

MxDbExtents drawnExtents(const MxDbEntity& entity) {
    ExtentsDraw draw;
    const ReadAccess readable(entity);
    // Drawing into a box changes nothing; the operation is not const because entities may keep what they draw.
    const_cast<MxDbEntity&>(entity).subWorldDraw(&draw);
    return draw.geometry().box;
}

void setTextMeasure(TextMeasure measure) {
    g_measure = measure;
}

double textAdvance(const wchar_t* text) {
    // Without a font: the mean advance of a plain drawing font.
    constexpr double kMeanAdvance = 0.9;
    return g_measure ? g_measure(text) : kMeanAdvance * static_cast<double>(std::wcslen(text));
}

} // namespace merix::db
