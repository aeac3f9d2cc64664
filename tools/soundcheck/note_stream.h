// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace soundcheck {

/// The samples of a stored note: every period of `periodFrames` 16-bit little-endian samples is followed by as many
/// zero bytes, which are left out. A last period that is cut short is taken as far as it goes.
/// Throws std::runtime_error where a byte of the padding is not zero: the note has another period then.
std::vector<std::int16_t> samplesOfNote(const std::vector<unsigned char>& bytes, std::size_t periodFrames);

} // namespace soundcheck
