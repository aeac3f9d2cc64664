// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// ERASE, STRETCH and CHPROP.
void registerEditCommands(CommandStack& stack);

} // namespace merix::ed
