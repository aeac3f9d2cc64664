// SPDX-License-Identifier: MIT
#pragma once

#include "host/rx/configuration.h"

namespace merix::rx {

/// What mxrxConfiguration() gives from now on: an object that outlives its use, or null, as at first. Main thread only.
void setConfiguration(const MxRxConfiguration* configuration);

} // namespace merix::rx
