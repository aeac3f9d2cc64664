// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// PLINE.
void registerPolylineCommand(CommandStack& stack);

} // namespace merix::ed
