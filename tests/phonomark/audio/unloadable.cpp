// SPDX-License-Identifier: MIT
// A module that holds the sound code and nothing else, to be unloaded while it sounds.
#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"
#include "phonomark/audio/worker_census.h"

#include <memory>
#include <vector>

namespace {

struct Memory {
    std::vector<char> buffer = std::vector<char>(VkAudioRecorder::kBufferBytes);
    std::uint32_t size = 0;
};

} // namespace

/// The recorder, the player and the last pointer to the memory go at once; what they started goes on.
extern "C" __attribute__((visibility("default"))) bool startBoth() {
    const auto recorded = std::make_shared<Memory>();
    const auto played = std::make_shared<Memory>();
    return VkAudioPlayer().play(played->buffer.data(), VkAudioRecorder::kBufferBytes, played) &&
           VkAudioRecorder().record(recorded->buffer.data(), &recorded->size, recorded);
}

/// Stops what startBoth() started; true when no worker is left.
extern "C" __attribute__((visibility("default"))) bool stopBoth(int patienceMs) {
    return phonomark::workerCensus().stopAll(std::chrono::milliseconds(patienceMs));
}
