// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// SETVAR.
void registerSetvarCommand(CommandStack& stack);

} // namespace merix::ed
