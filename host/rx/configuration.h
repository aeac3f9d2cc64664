// SPDX-License-Identifier: MIT
// How the host was started, as far as modules ask. Main thread only.
#pragma once

#include "host/rx/text.h"

class MxRxConfiguration {
public:
    virtual ~MxRxConfiguration() = default;
    /// The path of the present profile in the per-user settings, its parts separated by slashes or backslashes.
    virtual CStdStr<wchar_t> profileKey() const = 0;
};

/// The host's configuration, owned by the host; null when it has none.
const MxRxConfiguration* mxrxConfiguration();
