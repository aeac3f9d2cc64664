// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ap {

/// LAYOUT (-LAYOUT) and LAYOUTSWITCH.
void registerLayoutCommands(ed::CommandStack& stack);

} // namespace merix::ap
