// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ap {

/// WBLOCK.
void registerWblockCommand(ed::CommandStack& stack);

} // namespace merix::ap
