// SPDX-License-Identifier: MIT
// Views that show a drawing whole, marks of modules counted as large as they are then.
#pragma once

#include "merix/ed/active_view.h"
#include "merix/gi/scene.h"

namespace merix::ui {

/// Graphics are made for the view that shows them, whichever is active: modules size their marks by its pixels and look
/// for line types in its drawing.
class MadeFor {
public:
    MadeFor(MxDbDatabase& database, const ge::ViewTransform& view)
        : m_database(&database)
        , m_view(view) {}

private:
    db::WorkingDatabaseScope m_database;
    ed::GraphicsFor m_view;
};

/// What shows all of `space` in a view of the size of `view`; nothing when it is empty.
std::optional<ge::ViewTransform> showingAll(MxDbDatabase& database, gi::Scene& scene, MxDbObjectId space,
                                            const ge::ViewTransform& view);

/// The same for a first look: where nothing has a size, or nothing is there, what a sheet of paper takes.
ge::ViewTransform firstView(MxDbDatabase& database, gi::Scene& scene, MxDbObjectId space, ge::ViewTransform view);

/// What is shown of a drawing that holds nothing.
inline const MxDbExtents kEmptySheet{{0, 0, 0}, {420, 297, 0}};

} // namespace merix::ui
