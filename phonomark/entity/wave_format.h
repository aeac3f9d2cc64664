// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// The published WAVEFORMATEX record: 18 bytes, packed to 2, little-endian.
#pragma pack(push, 2)
struct tWAVEFORMATEX {
    std::uint16_t wFormatTag = 0; ///< 1 is PCM
    std::uint16_t nChannels = 0;
    std::uint32_t nSamplesPerSec = 0;
    std::uint32_t nAvgBytesPerSec = 0;
    std::uint16_t nBlockAlign = 0;
    std::uint16_t wBitsPerSample = 0;
    std::uint16_t cbSize = 0; ///< bytes of further format data; none are kept
};
#pragma pack(pop)
static_assert(sizeof(tWAVEFORMATEX) == 18);
