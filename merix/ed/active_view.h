// SPDX-License-Identifier: MIT
// The active drawing view as the editor knows it. The window sets it; without one (convert) it is null.
#pragma once

#include "merix/ge/view_transform.h"

#include "host/db/object_id.h"
#include "host/ge/extents.h"

#include <vector>

namespace merix::ed {

class ActiveView {
public:
    virtual ~ActiveView() = default;
    virtual const ge::ViewTransform& transform() const = 0;
    /// Shows something else; tells the editor (Editor::notifyViewChanged) and paints soon.
    virtual void setTransform(const ge::ViewTransform& transform) = 0;
    /// The box of all that is visible in the current layout; empty when there is nothing.
    virtual MxDbExtents extents() = 0;
    /// The topmost entity of the current layout in the pick box at `world`; null when there is none.
    virtual MxDbObjectId pick(const MxGePoint3d& world) = 0;
    /// The entities of the current layout whose graphics lie inside `box` or, `crossing`, come into it, in drawing
    /// order.
    virtual std::vector<MxDbObjectId> inBox(const MxDbExtents& box, bool crossing) = 0;
    /// Makes all graphics of the drawing anew (REGEN).
    virtual void regenerate() = 0;
    /// Paints soon.
    virtual void update() = 0;
    /// Draws or leaves out one entity until its graphics are next made anew; ids of other drawings are ignored.
    virtual void drawEntity(MxDbObjectId id, bool draw) = 0;
};

ActiveView* activeView();
/// Null when the view goes. The editor does not own it.
void setActiveView(ActiveView* view);

} // namespace merix::ed
