// SPDX-License-Identifier: MIT
#pragma once

#include <cstdarg>
#include <string>

namespace merix::ed {

/// Formats as the contract's printing does: like wprintf, but `%s` and `%c` take wide text (`%hs`, `%hc` narrow). No
/// limit of length. An argument that cannot be converted ends the text before it.
std::wstring formatWide(const wchar_t* format, std::va_list arguments);

} // namespace merix::ed
