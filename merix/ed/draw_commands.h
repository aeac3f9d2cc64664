// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// LINE, CIRCLE, ARC, RECTANG and TEXT.
void registerDrawCommands(CommandStack& stack);

} // namespace merix::ed
