// SPDX-License-Identifier: MIT
#include "phonomark/audio/wave_out.h"

#include <list>
#include <mutex>

std::atomic<void*> hWaveOut = nullptr;
std::atomic<tWAVEHDR*> pWaveHdr = nullptr;

namespace {

constexpr std::uint32_t kBeginLoop = 4;
constexpr std::uint32_t kEndLoop = 8;

std::mutex g_mutex;
std::list<tWAVEHDR> g_headers;

} // namespace

bool playSnd(const char* data, std::uint32_t length) {
    const std::lock_guard lock(g_mutex);
    if (hWaveOut.load() != nullptr) {
        pWaveHdr.store(nullptr);
        hWaveOut.store(nullptr);
    }
    pWaveHdr.store(&g_headers.emplace_back(tWAVEHDR{data, length, 0, 0, kBeginLoop | kEndLoop, 1, nullptr, 0}));
    return true;
}
