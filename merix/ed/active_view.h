// SPDX-License-Identifier: MIT
// The active drawing view as the editor knows it. The window sets it; without one (convert, render) it is null.
#pragma once

#include "merix/ge/view_transform.h"

#include "host/db/object_id.h"

namespace merix::ed {

class ActiveView {
public:
    virtual ~ActiveView() = default;
    virtual const ge::ViewTransform& transform() const = 0;
    /// Paints soon.
    virtual void update() = 0;
    virtual void drawEntity(MxDbObjectId id, bool draw) = 0;
};

ActiveView* activeView();
/// Null when the view goes. The editor does not own it.
void setActiveView(ActiveView* view);

} // namespace merix::ed
