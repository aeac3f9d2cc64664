// SPDX-License-Identifier: MIT
#include "merix/ui/snap.h"

#include "merix/db/access.h"
#include "merix/db/database_imp.h"
#include "merix/ed/reactor_list.h"
#include "merix/ui/look.h"

#include <QPainter>

namespace merix::ui {

namespace {

constexpr double kHalf = 5.5; ///< half the side of a marker, pixels of the widget

std::vector<MxGePoint3d> pointsOf(MxDbObjectId id, MxDbOsnapMode mode, const MxGePoint3d& cursor,
                                  const MxGePoint3d& last) {
    std::vector<MxGePoint3d> points;
    MxDbObject* object = db::DatabaseImp::peek(id);
    if (!object || !object->isKindOf(MxDbEntity::desc()))
        return points;
    const db::ReadAccess readable(*object);
    ed::guarded("An entity's snap points",
                [&] { static_cast<MxDbEntity*>(object)->getOsnapPoints(mode, cursor, last, points); });
    return points;
}

} // namespace

std::optional<SnapPoint> findSnap(const std::vector<MxDbObjectId>& entities, const MxGePoint3d& cursor,
                                  const MxGePoint3d& last, double reach) {
    using Mode = MxDbOsnapMode;
    std::optional<SnapPoint> nearest, center;
    double best = reach;
    for (const MxDbObjectId id : entities)
        for (const Mode mode : {Mode::kEnd, Mode::kMid, Mode::kNode, Mode::kInsertion, Mode::kCenter})
            for (const MxGePoint3d& point : pointsOf(id, mode, cursor, last)) {
                if (mode == Mode::kCenter && !center)
                    center = SnapPoint{point, mode};
                const double distance = std::hypot(point.x - cursor.x, point.y - cursor.y);
                if (distance > best || (nearest && distance == best))
                    continue;
                best = distance;
                nearest = SnapPoint{point, mode};
            }
    return nearest ? nearest : center;
}

void paintSnap(QPainter& painter, MxDbOsnapMode mode, const QPointF& at) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kSnapMarker, 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.setBrush(Qt::NoBrush);
    painter.translate(at);
    const QRectF square(-kHalf, -kHalf, 2 * kHalf, 2 * kHalf);
    switch (mode) {
    case MxDbOsnapMode::kEnd:
        painter.drawRect(square);
        break;
    case MxDbOsnapMode::kMid:
        painter.drawPolygon(QPolygonF({{-kHalf, kHalf}, {kHalf, kHalf}, {0.0, -kHalf}}));
        break;
    case MxDbOsnapMode::kCenter:
        painter.drawEllipse(square);
        break;
    case MxDbOsnapMode::kNode:
        painter.drawEllipse(square);
        painter.drawLine(square.topLeft(), square.bottomRight());
        painter.drawLine(square.bottomLeft(), square.topRight());
        break;
    case MxDbOsnapMode::kInsertion:
        painter.drawRect(QRectF(-kHalf, -kHalf, 1.3 * kHalf, 1.3 * kHalf));
        painter.drawRect(QRectF(-0.3 * kHalf, -0.3 * kHalf, 1.3 * kHalf, 1.3 * kHalf));
        break;
    }
    painter.restore();
}

MxGePoint3d squared(const MxGePoint3d& base, const MxGePoint3d& point) {
    return std::abs(point.x - base.x) >= std::abs(point.y - base.y) ? MxGePoint3d(point.x, base.y, point.z)
                                                                    : MxGePoint3d(base.x, point.y, point.z);
}

} // namespace merix::ui
