// SPDX-License-Identifier: MIT
// The graphics of one drawing: display lists of its entities, the spatial index over them, painting and picking.
#pragma once

#include "merix/db/database_imp.h"
#include "merix/ge/view_transform.h"

#include <QColor>

#include <memory>
#include <vector>

class QPainter;

namespace merix::gi {

struct PaintOptions {
    QColor background = QColor(33, 40, 48);
    /// For paper or a file that is a plot: entities may leave themselves out, layers that are not plotted are left out,
    /// and lines have their weights.
    bool plot = false;
    bool lineWeights = false; ///< on the screen too
    double pixelRatio = 1.0;  ///< of 96 pixels an inch, by which line weights in millimetres become pixels
    QColor halo;              ///< when valid, everything is painted in this colour ...
    double haloWidth = 0.0;   ///< ... and this much wider to each side, pixels of the view
};

class Scene : public db::DatabaseListener {
public:
    explicit Scene(MxDbDatabase& database);
    ~Scene() override;

    /// Paints the block `space` (model space, a paper space) as `view` shows it.
    void paint(QPainter& painter, const ge::ViewTransform& view, MxDbObjectId space, const PaintOptions& options);

    /// The same for these entities of `space` alone, in the order given: marks over what `paint` has painted.
    void paintOnly(QPainter& painter, const ge::ViewTransform& view, MxDbObjectId space,
                   const std::vector<MxDbObjectId>& ids, const PaintOptions& options);

    /// Entities of `space` that come within `aperture` (world units, half the side of the pick box) of `at`, topmost
    /// first: their graphics do, or for those of modules the extents that they tell. Entities on layers that are off or
    /// frozen are left out.
    std::vector<MxDbObjectId> pick(MxDbObjectId space, const MxGePoint3d& at, double aperture);

    /// Visible entities of `space` whose graphics lie inside `box` or, `crossing`, come into it, in drawing order.
    std::vector<MxDbObjectId> inBox(MxDbObjectId space, const MxDbExtents& box, bool crossing);

    /// The box of all that is visible in `space`, or in a plot of it; empty when there is nothing.
    MxDbExtents extents(MxDbObjectId space, bool plot = false);

    /// The same where the pixels that modules size their marks by are others than those of the pictures: what modules
    /// draw is made for this once. What is kept of it is made anew when it is next looked at.
    MxDbExtents extentsAnew(MxDbObjectId space);

    /// Draws or leaves out one entity until it is next made anew.
    void setDrawn(MxDbObjectId id, bool drawn);

    void objectAppended(MxDbObject& object) override;
    void objectModified(MxDbObject& object) override;
    void objectErased(MxDbObject& object, bool erasing) override;
    void headerChanged() override;

private:
    struct Private;
    std::unique_ptr<Private> m;
};

} // namespace merix::gi
