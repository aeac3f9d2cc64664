// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ap {

/// U, UNDO and REDO.
void registerUndoCommands(ed::CommandStack& stack);

} // namespace merix::ap
