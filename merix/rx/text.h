// SPDX-License-Identifier: MIT
// Wide text to and from UTF-8, and the comparison of names.
#pragma once

#include <string>
#include <string_view>

namespace merix::rx {

/// UTF-8 of a wide text. A lone surrogate is written as its three bytes, so that fromUtf8 gives it back; what is no
/// code point at all becomes U+FFFD.
std::string toUtf8(std::wstring_view text);

/// The wide text of UTF-8; every malformed sequence becomes one U+FFFD.
std::wstring fromUtf8(std::string_view bytes);

/// The form in which names (of layers, blocks, dictionary keys, commands) are compared: case folded, whatever the
/// locale of the process.
std::wstring foldCase(std::wstring_view name);

} // namespace merix::rx
