// SPDX-License-Identifier: MIT
#include "tools/soundcheck/note_stream.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace soundcheck {

std::vector<std::int16_t> samplesOfNote(const std::vector<unsigned char>& bytes, std::size_t periodFrames) {
    if (periodFrames == 0 || periodFrames > bytes.max_size() / 4)
        throw std::runtime_error("a period has at least one frame");
    const std::size_t periodBytes = periodFrames * 2;
    std::vector<std::int16_t> samples;
    samples.reserve(bytes.size() / 4 + periodFrames);
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t soundEnd = std::min(at + periodBytes, bytes.size());
        for (; at + 1 < soundEnd; at += 2)
            samples.push_back(static_cast<std::int16_t>(bytes[at] | bytes[at + 1] << 8));
        at = soundEnd;
        for (const std::size_t padEnd = std::min(at + periodBytes, bytes.size()); at < padEnd; ++at) {
            if (bytes[at] != 0)
                throw std::runtime_error("byte " + std::to_string(at) + " should be padding but is not zero");
        }
    }
    return samples;
}

} // namespace soundcheck
