// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// The group of the host's own commands.
inline constexpr const wchar_t* kHostGroup = L"MERIX";

/// ZOOM and REGEN.
void registerViewCommands(CommandStack& stack);

} // namespace merix::ed
