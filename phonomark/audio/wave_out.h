// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>

/// The header that wave output takes: the layout of WAVEHDR of the Windows multimedia interface, 64-bit.
struct tWAVEHDR {
    const char* lpData;
    std::uint32_t dwBufferLength;
    std::uint32_t dwBytesRecorded;
    std::uint64_t dwUser;
    std::uint32_t dwFlags;
    std::uint32_t dwLoops;
    tWAVEHDR* lpNext;
    std::uint64_t reserved;
};
static_assert(sizeof(tWAVEHDR) == 48);

/// The output device; this module never opens one.
extern std::atomic<void*> hWaveOut;
/// The header that playSnd() built last. Headers stay valid until the module is unmapped.
extern std::atomic<tWAVEHDR*> pWaveHdr;

/// Builds the header for `length` bytes and plays nothing: nothing is sent to any device. The bytes are not touched.
/// Always true. Any thread.
bool playSnd(const char* data, std::uint32_t length);
