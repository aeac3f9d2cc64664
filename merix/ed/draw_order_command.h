// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// DRAWORDER.
void registerDrawOrderCommand(CommandStack& stack);

} // namespace merix::ed
