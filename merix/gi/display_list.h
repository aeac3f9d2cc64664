// SPDX-License-Identifier: MIT
// What one entity looks like: strokes, curves, fills and texts in world coordinates with their styles resolved.
// Curves stay curves and line types stay patterns until they are painted at some scale.
#pragma once

#include "merix/ge/curve.h"
#include "merix/gi/text_outline.h"

#include <QTransform>

#include <cstdint>
#include <memory>
#include <vector>

namespace merix::gi {

using DashPattern = std::vector<double>; ///< lengths: positive pen down, negative pen up, 0 a dot

struct Style {
    std::uint32_t rgb = 0xffffffff;
    bool contrast = false;                     ///< colour 7: white or black, whichever the background calls for
    std::int16_t weight = 0;                   ///< hundredths of a millimetre; 0 the thinnest
    std::shared_ptr<const DashPattern> dashes; ///< null: continuous
    double dashScale = 1.0;                    ///< world units in one unit of the pattern
    bool operator==(const Style&) const = default;
};

struct Primitive {
    enum class Kind : std::uint8_t { kStroke, kCurve, kFill, kText, kBand };
    Kind kind;
    std::uint16_t style;
    std::uint32_t first;     ///< in points (stroke, fill), curves, texts or bands
    std::uint32_t count = 1; ///< of points
};

/// A line with a width of its own, world units. Where it is thinner than a pixel it is drawn as a thin line.
struct Band {
    std::uint32_t outline, outlineCount; ///< in points: a ring
    std::uint32_t middle, middleCount;   ///< in points: a chain
    double width;                        ///< the largest
};

struct PlacedText {
    TextOutline outline;
    QTransform toWorld;
};

struct DisplayList {
    std::vector<Style> styles;
    std::vector<Primitive> primitives;
    std::vector<MxGePoint2d> points;
    std::vector<ge::Curve> curves;
    std::vector<PlacedText> texts;
    std::vector<Band> bands;
    MxDbExtents box; ///< of everything, z 0
};

/// True when something of the list comes into the square of `aperture` to each side of `at`: a stroke crosses it, a
/// fill or a text's box covers it.
bool touches(const DisplayList& list, const MxGePoint3d& at, double aperture);
/// The same for any box; curves are followed to within `tolerance`.
bool touches(const DisplayList& list, const MxDbExtents& box, double tolerance);

} // namespace merix::gi
