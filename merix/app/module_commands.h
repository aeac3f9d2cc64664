// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::app {

/// MODULES, MODLOAD and MODUNLOAD: the modules of this run listed, loaded and unloaded while drawings are open.
void registerModuleCommands(ed::CommandStack& stack);

} // namespace merix::app
