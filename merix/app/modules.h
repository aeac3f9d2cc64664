// SPDX-License-Identifier: MIT
#pragma once

#include "merix/app/options.h"

namespace merix::app {

/// Loads the module that the options name. Empty, or one line that says why it cannot be loaded.
QString loadModule(const Options& options);

/// Closes every drawing without asking, then unloads all modules: nothing of them is left in the process.
void closeAll();

} // namespace merix::app
