// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ed/command_stack.h"

namespace merix::ed {

/// AUDIT.
void registerAuditCommand(CommandStack& stack);

} // namespace merix::ed
