// SPDX-License-Identifier: MIT
#pragma once

#include "host/rx/registry.h"

namespace merix::rx {

/// Names a service; null takes the name away. The registry does not own the object.
void setSystemRegistryEntry(const wchar_t* key, MxRxObject* object);

} // namespace merix::rx
