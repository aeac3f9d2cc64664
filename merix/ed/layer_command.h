// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// LAYER (-LAYER).
void registerLayerCommand(CommandStack& stack);

} // namespace merix::ed
