// SPDX-License-Identifier: MIT
// Asking for a set of entities. Main thread only.
#pragma once

#include "host/db/object_id.h"
#include "host/ge/extents.h"

#include <QString>

#include <optional>
#include <vector>

class MxDbDatabase;

namespace merix::ed {

/// Asks for entities of the current space, which are highlighted meanwhile: clicks on entities, boxes (left to right a
/// window, right to left crossing) and the options Window, Crossing, All, Last, Previous, Add, Remove and Undo, until
/// Enter. What was selected before the command is taken instead, without asking, and is no longer selected then.
/// kInputNormal, kInputNone when nothing was chosen, or kInputCancel; `ids` is empty unless it is kInputNormal.
int getSelection(const QString& prompt, std::vector<MxDbObjectId>& ids);
/// The same; the last box that was drawn with crossing is what a stretch moves. Nothing when there was none.
int getSelection(const QString& prompt, std::vector<MxDbObjectId>& ids, std::optional<MxDbExtents>& crossing);

/// The same for commands that change entities: those on locked layers are left out, and the user is told how many.
/// False when nothing is left to work on.
bool getEditableSelection(std::vector<MxDbObjectId>& ids);
bool getEditableSelection(std::vector<MxDbObjectId>& ids, std::optional<MxDbExtents>& crossing);

/// What was selected last in a drawing that is closed.
void forgetSelection(const MxDbDatabase* database);

} // namespace merix::ed
