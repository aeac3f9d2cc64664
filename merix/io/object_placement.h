// SPDX-License-Identifier: MIT
// Finds a place in the skeleton for every object that is not in the file yet.
#pragma once

#include "merix/io/drawing_parts.h"

#include <memory>

namespace merix::io {

/// A copy of the drawing's parts (those of an empty AC1021 drawing when it has none) in which every object that is to
/// be saved stands in a run. Blocks, tables and sections are added where objects need them. The drawing itself does not
/// change, except that handles may be given out and that what lists reactors which were erased or came back since the
/// last save is marked changed: files hold no erased reactors.
std::unique_ptr<DrawingParts> placedParts(db::DatabaseImp& database);

/// Inserts an empty section in its usual place unless the drawing has it.
void ensureSection(DrawingParts& parts, std::string_view name);

} // namespace merix::io
