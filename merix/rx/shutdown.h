// SPDX-License-Identifier: MIT
#pragma once

#include "host/rx/shutdown.h"

namespace merix::rx {

/// What mxrxShutdown does before the process ends: writing recovery files. Runs on the thread that asked. Null:
/// nothing.
using ShutdownHook = void (*)();
void setShutdownHook(ShutdownHook hook);

} // namespace merix::rx
