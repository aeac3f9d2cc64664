// SPDX-License-Identifier: MIT
#include "phonomark/audio/player.h"

#include "phonomark/audio/pcm_device.h"
#include "phonomark/audio/worker_census.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

/// All that one playback needs, owned by its worker.
struct VkAudioPlayer::Sound {
    phonomark::PcmHandle pcm;
    const char* data = nullptr;
    std::uint32_t size = 0;
    std::shared_ptr<const void> keepAlive;
    std::shared_ptr<std::atomic<bool>> playing;
    int periodFrames = 0;
    std::vector<char> lastPeriod = {}; ///< the period that reaches past the data, filled up with zeros

    /// The bytes of one period, from `position` in the data.
    const char* periodAt(std::uint64_t position) {
        if (position + lastPeriod.size() <= size)
            return data + position;
        std::fill(lastPeriod.begin(), lastPeriod.end(), '\0');
        if (position < size)
            std::memcpy(lastPeriod.data(), data + position, static_cast<std::size_t>(size - position));
        return lastPeriod.data();
    }
};

VkAudioPlayer::VkAudioPlayer()
    : m_playing(new std::atomic<bool>(false)) {}

bool VkAudioPlayer::play(const char* data, std::uint32_t size, std::shared_ptr<const void> keepAlive) {
    using namespace phonomark;
    PcmHandle pcm = openDefaultPcm(SND_PCM_STREAM_PLAYBACK);
    if (!pcm)
        return false;
    const HwParams params = allocateHwParams();
    if (!params)
        endProcess();
    if (!requestSampleFormat(pcm.get(), params.get()))
        return false;
    snd_pcm_uframes_t bufferFrames = 0;
    if (!requestBufferSize(pcm.get(), params.get(), bufferFrames))
        return false;
    requestPeriodSize(pcm.get(), params.get(), bufferFrames);
    if (!applyHwParams(pcm.get(), params.get()))
        endProcess();
    const int periodFrames = grantedPeriodFrames(params.get());
    if (periodFrames == 0)
        return false;
    logGranted("playback", params.get());
    std::fprintf(stderr, "size = %d\n", periodFrames * kChunkBytesPerFrame);

    try {
        const std::shared_ptr<Sound> sound(
            new Sound{std::move(pcm), data, size, std::move(keepAlive), m_playing, periodFrames});
        sound->lastPeriod.resize(static_cast<std::size_t>(periodFrames) * kSampleBytes);
        return workerCensus().start(m_playing, [sound] { playInThread(*sound); });
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "no memory for playing with a period of %d frames\n", periodFrames);
        return false;
    }
}

void VkAudioPlayer::playInThread(Sound& sound) {
    writePeriods(sound);
    std::puts("start close play pcm");
    std::fflush(stdout);
    const int result = snd_pcm_drain(sound.pcm.get());
    if (result < 0)
        std::fprintf(stderr, "snd_pcm_drain: %s\n", snd_strerror(result));
    sound.pcm.reset();
    std::puts("end close play pcm");
    std::fflush(stdout);
}

/// Writes until the chunks written pass the size; a size of whole chunks is therefore followed by a period of silence.
void VkAudioPlayer::writePeriods(Sound& sound) {
    const auto frames = static_cast<snd_pcm_uframes_t>(sound.periodFrames);
    const std::uint64_t chunkBytes = frames * phonomark::kChunkBytesPerFrame;
    std::uint64_t position = 0;
    do {
        const snd_pcm_sframes_t result = snd_pcm_writei(sound.pcm.get(), sound.periodAt(position), frames);
        position += chunkBytes;
        if (result == -EPIPE) {
            std::fputs("underrun occurred\n", stderr);
            snd_pcm_prepare(sound.pcm.get());
        } else if (result < 0) {
            std::fprintf(stderr, "error from writei: %s\n", snd_strerror(static_cast<int>(result)));
        }
    } while (position <= sound.size && sound.playing->load(std::memory_order_relaxed));
}

bool VkAudioPlayer::stop() {
    m_playing->store(false, std::memory_order_relaxed);
    return true;
}
