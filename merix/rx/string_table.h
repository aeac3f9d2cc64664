// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace merix::rx {

/// The texts that modules have remembered (mxutUpdateStringTable), the one used last first.
const std::vector<std::wstring>& stringTable();

} // namespace merix::rx
