// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ap/session_list.h"
#include "merix/ed/command_stack.h"

namespace merix::ap {

/// RECOVER: lists the copies that programs left behind and opens or deletes them. AUTOSAVE: makes copies now.
void registerRecoverCommands(ed::CommandStack& stack);

/// What a copy holds that its drawing does not, in one line: "plan.dxf, 2026-11-20 17:03: 2 LINE added". Reads both
/// files.
QString describe(const Recovery& recovery);

} // namespace merix::ap
