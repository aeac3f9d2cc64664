// SPDX-License-Identifier: MIT
// The interface through which entities draw themselves: attributes first, then geometry that takes them on.
// Coordinates are world drawing units. Main thread only.
#pragma once

#include "host/db/object_id.h"
#include "host/ge/geometry.h"

#include <cstddef>
#include <cstdint>

/// A colour and how it is meant. The method byColor takes the three parts, 0 to 255 each.
struct MxCmEntityColor {
    enum class Method : std::uint8_t { kByLayer, kByBlock, kByColor };
    Method method = Method::kByLayer;
    std::uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const MxCmEntityColor&) const = default;
};

/// Circumstances of a drawing pass.
class MxGiContext {
public:
    virtual ~MxGiContext() = default;
    /// True while the drawing is made for paper or a file and not for the screen.
    virtual bool isPlotGeneration() const = 0;
};

/// The attributes of the geometry that follows. The defaults do nothing: an interface that ignores attributes need
/// not implement them and says so.
class MxGiSubEntityTraits {
public:
    virtual ~MxGiSubEntityTraits() = default;
    /// True when the operations below have an effect.
    virtual bool implementsTraits() const { return false; }
    /// 0 by block, 1 to 255 an index of the colour table, 256 by layer.
    virtual void setColor(std::uint16_t) {}
    virtual void setTrueColor(const MxCmEntityColor&) {}
    /// A record of the drawing's line type table; null: by layer.
    virtual void setLineType(MxDbObjectId) {}
    virtual MxDbObjectId lineType() const { return {}; }
    virtual void setFill(bool) {}
    /// Hundredths of a millimetre; -1 by layer, -2 by block, -3 default.
    virtual void setLineWeight(int) {}
    virtual int lineWeight() const { return 0; }
};

/// A vertex of a lightweight polyline; bulge is the tangent of a quarter of the arc's angle to the next vertex,
/// positive counter-clockwise. Width -1 is the polyline's default width.
struct MxGiPolylineVertex {
    MxGePoint2d point;
    double bulge = 0.0;
    double startWidth = -1.0;
    double endWidth = -1.0;
};

class MxGiWorldGeometry {
public:
    virtual ~MxGiWorldGeometry() = default;
    virtual void circle(const MxGePoint3d& center, double radius, const MxGeVector3d& normal) = 0;
    /// From `startVector` (its length is ignored) by `sweep` radians counter-clockwise; filled as a segment when fill
    /// is on.
    virtual void circularArc(const MxGePoint3d& center, double radius, const MxGeVector3d& normal,
                             const MxGeVector3d& startVector, double sweep) = 0;
    /// Lines through `count` points.
    virtual void worldLine(const MxGePoint3d* points, std::size_t count) = 0;
    /// The same as one figure: line types run on around its corners.
    virtual void polyline(const MxGePoint3d* points, std::size_t count) = 0;
    /// The closed area with these corners: filled when fill is on, else its outline.
    virtual void polygon(const MxGePoint3d* points, std::size_t count) = 0;
    /// A lightweight polyline. With fill on, segments with width are filled bands; without width, a closed one
    /// is a filled area.
    virtual void pline(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) = 0;
    /// One line of text from its lower-left `position` along `direction`; `height` of capital letters in drawing
    /// units, `widthFactor` of the letters, `oblique` angle in radians.
    virtual void text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction,
                      double height, double widthFactor, double oblique, const wchar_t* text) = 0;
};

class MxGiWorldDraw {
public:
    virtual ~MxGiWorldDraw() = default;
    /// May be null.
    virtual MxGiContext* context() const = 0;
    virtual MxGiSubEntityTraits& subEntityTraits() const = 0;
    virtual MxGiWorldGeometry& geometry() const = 0;
};
