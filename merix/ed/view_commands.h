// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

class MxDbDatabase;

namespace merix::ed {

/// The group of the host's own commands.
inline constexpr const wchar_t* kHostGroup = L"MERIX";

/// The views to go back to of a drawing that is closed.
void forgetViews(const MxDbDatabase* database);

/// ZOOM, PAN (-PAN), REGEN and REDRAW.
void registerViewCommands(CommandStack& stack);

} // namespace merix::ed
