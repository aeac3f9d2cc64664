// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/geometry.h"

#include <QString>

#include <optional>

namespace merix::ed {

/// A point as it is typed: `x,y[,z]`, `distance<angle` (degrees, counter-clockwise from the x axis), with a leading `@`
/// either of them counted from `last`, and `@` alone for `last` itself. Decimal points only; nothing for what is no
/// point, infinite or not a number.
std::optional<MxGePoint3d> parseTypedPoint(const QString& text, const MxGePoint3d& last);

/// False for coordinates that are no numbers, or so large that what is reckoned from them would be none.
bool isInReach(const MxGePoint3d& point);

/// An angle as typed in the unit that all is computed in.
double degreesToRadians(double degrees);

/// A point for the history: `x,y`, at most ten digits each.
QString formatPoint(const MxGePoint3d& point);

} // namespace merix::ed
