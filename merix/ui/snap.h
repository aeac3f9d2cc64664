// SPDX-License-Identifier: MIT
// The points of entities that the hand aims at when a point is asked for.
#pragma once

#include "host/db/entity.h"

#include <optional>

class QPainter;
class QPointF;

namespace merix::ui {

struct SnapPoint {
    MxGePoint3d point;
    MxDbOsnapMode mode = MxDbOsnapMode::kEnd;
};

/// The snap point of these entities nearest to `cursor`, not farther than `reach` (drawing units). Where there is none
/// the centre of the first entity that has one, which may be farther. `last` is the point before.
std::optional<SnapPoint> findSnap(const std::vector<MxDbObjectId>& entities, const MxGePoint3d& cursor,
                                  const MxGePoint3d& last, double reach);

/// A square for an end, a triangle for a middle, a circle for a centre, a cross in a circle for a node, two squares for
/// an insertion.
void paintSnap(QPainter& painter, MxDbOsnapMode mode, const QPointF& at);

/// `point` moved onto the horizontal or vertical through `base`, whichever is farther along.
MxGePoint3d squared(const MxGePoint3d& base, const MxGePoint3d& point);

} // namespace merix::ui
