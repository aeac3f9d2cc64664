// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/geometry.h"

#include <vector>

namespace merix::gi {

struct BandPoint {
    MxGePoint2d point;
    double width = 0.0;
};

/// The outline of a band along a chain of points: mitred at the corners, its full width at each point. One ring, to be
/// filled by the winding rule; empty when fewer than two points differ.
std::vector<MxGePoint2d> bandOutline(std::vector<BandPoint> chain, bool closed);

} // namespace merix::gi
