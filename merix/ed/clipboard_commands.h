// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// COPYCLIP, CUTCLIP and PASTECLIP.
void registerClipboardCommands(CommandStack& stack);

} // namespace merix::ed
