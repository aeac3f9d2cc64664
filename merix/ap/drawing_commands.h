// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ap {

/// NEW, OPEN, SAVE, SAVEAS, CLOSE and QUIT.
void registerDrawingCommands(ed::CommandStack& stack);

} // namespace merix::ap
