// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace merix::io {

/// How tags are laid down in a DXF file.
enum class DxfForm : std::uint8_t {
    kText,
    kBinary,      ///< group codes of two bytes, from AC1012 on
    kShortBinary, ///< group codes of one byte, three behind the byte 255; earlier versions
};

} // namespace merix::io
