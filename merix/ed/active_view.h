// SPDX-License-Identifier: MIT
// The active drawing view as the editor knows it. The window sets it; without one (convert) it is null.
#pragma once

#include "merix/ge/view_transform.h"

#include "host/db/object_id.h"
#include "host/ge/extents.h"

#include <optional>
#include <vector>

namespace merix::ed {

class ActiveView {
public:
    virtual ~ActiveView() = default;
    virtual const ge::ViewTransform& transform() const = 0;
    /// Shows something else; tells the editor (Editor::notifyViewChanged) and paints soon.
    virtual void setTransform(const ge::ViewTransform& transform) = 0;
    /// What shows all that is visible in the current layout; nothing when there is nothing.
    virtual std::optional<ge::ViewTransform> showingAll() = 0;
    /// The entities of the current layout in the pick box at `world`, topmost first.
    virtual std::vector<MxDbObjectId> under(const MxGePoint3d& world) = 0;
    /// The topmost of them; null when there is none.
    MxDbObjectId pick(const MxGePoint3d& world);
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

/// Graphics are made for the view that is to show them, whichever is active: while this lives, viewport 0 is
/// `transform`.
class GraphicsFor {
public:
    explicit GraphicsFor(const ge::ViewTransform& transform);
    ~GraphicsFor();
    GraphicsFor(const GraphicsFor&) = delete;
    GraphicsFor& operator=(const GraphicsFor&) = delete;

private:
    const ge::ViewTransform* m_before;
};

/// What viewport 0 shows: the view that graphics are being made for, else the active one; null without either.
const ge::ViewTransform* viewport();

} // namespace merix::ed
