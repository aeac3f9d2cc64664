// SPDX-License-Identifier: MIT
// A module that holds the sound code and nothing else, to be unloaded while it sounds.
#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {
std::vector<char> g_buffer(VkAudioRecorder::kBufferBytes);
}

extern "C" __attribute__((visibility("default"))) bool startBoth() {
    // The recorder and the player go at once; what they started goes on.
    static std::uint32_t size = 0;
    return VkAudioPlayer().play(g_buffer.data(), VkAudioRecorder::kBufferBytes) &&
           VkAudioRecorder().record(g_buffer.data(), &size);
}
