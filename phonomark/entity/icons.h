// SPDX-License-Identifier: MIT
#pragma once

#include "host/gi/world_draw.h"

#include <cstddef>

/// The two icons of a note, drawn into the marker square in its colour, with fill on. They are laid out in sixteenths
/// of the square's side, which is 32 pixels on the screen: what carries the meaning is a filled area at least two
/// pixels thick, so that it can be told on a light and on a dark ground.
class MarkerIcon {
public:
    /// The square's lower-left `corner` and `side`, drawing units.
    MarkerIcon(MxGiWorldGeometry& geometry, const MxGePoint3d& corner, double side)
        : m_geometry(geometry)
        , m_corner(corner)
        , m_side(side) {}

    /// A note still to be recorded.
    void drawMicrophone() const;
    /// A note that can be heard.
    void drawLoudspeaker() const;
    /// The square's outline, with the corners of a second one inside it while the note shows its region.
    void drawFrame(bool withCorners) const;

private:
    /// A place in the square, in sixteenths, and the bulge of the way on to the next one.
    struct Place {
        double x, y, bulge = 0.0;
    };
    void area(const Place* places, std::size_t count) const;
    void stroke(const Place* places, std::size_t count) const;
    void halfDisc(double x, double y, double radius, double startDirection) const;
    void wave(double inner) const;
    MxGePoint3d at(double x, double y) const;

    MxGiWorldGeometry& m_geometry;
    MxGePoint3d m_corner;
    double m_side;
};
