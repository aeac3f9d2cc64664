// SPDX-License-Identifier: MIT
#pragma once

#include "host/rx/shutdown.h"

namespace merix::rx {

using ShutdownHook = void (*)();

/// What mxrxShutdown does before the process ends: `hook` (writing recovery files) on the thread that asked first.
/// `meanwhile` on every other that asks while the first is at it: the first may need something of that thread, which
/// does not return from asking. Null: nothing.
void setShutdownHook(ShutdownHook hook, ShutdownHook meanwhile = nullptr);

} // namespace merix::rx
