// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace soundcheck {

/// Mono sound, signed 16-bit samples.
struct Sound {
    std::uint32_t rate = 0; ///< samples a second
    std::vector<std::int16_t> samples;
};

/// Reads a mono 16-bit PCM wav file, or, where the name ends in ".raw", bare little-endian samples at `rawRate`.
/// Throws std::runtime_error with the file's name and the reason. A data chunk that claims more than the file holds
/// (a recorder that was stopped leaves such) is read as far as it goes.
Sound readSound(const std::string& path, std::uint32_t rawRate = 40000);

/// Writes a mono 16-bit PCM wav file. Throws std::runtime_error.
void writeWav(const std::string& path, const Sound& sound);

/// The whole file, at most 1 GiB of it. Throws std::runtime_error.
std::vector<unsigned char> readBytes(const std::string& path);

} // namespace soundcheck
