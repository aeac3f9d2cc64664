// SPDX-License-Identifier: MIT
#include "phonomark/audio/player.h"

#include "phonomark/audio/sound_start.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

/// All that one playback needs, owned by its worker.
struct VkAudioPlayer::Playback : phonomark::Sound {
    Playback(const char* bytes, std::uint32_t count, std::shared_ptr<const void> alive,
             std::shared_ptr<std::atomic<bool>> run, std::shared_ptr<std::atomic<bool>> lost)
        : data(bytes)
        , size(count)
        , keepAlive(std::move(alive))
        , playing(std::move(run))
        , failed(std::move(lost)) {}

    phonomark::Opened open(phonomark::PcmReport& report) override;
    void run() override { playInThread(*this); }

    const char* const data;
    const std::uint32_t size;
    const std::shared_ptr<const void> keepAlive;
    const std::shared_ptr<std::atomic<bool>> playing;
    const std::shared_ptr<std::atomic<bool>> failed;
    int periodFrames = 0;
    std::vector<char> lastPeriod = {};            ///< the period that reaches past the data, filled up with zeros
    std::vector<snd_pcm_sframes_t> reported = {}; ///< the errors since a write last succeeded, each once

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
    : m_playing(new std::atomic<bool>(false))
    , m_failed(new std::atomic<bool>(false)) {}

bool VkAudioPlayer::play(const char* data, std::uint32_t size, std::shared_ptr<const void> keepAlive) {
    m_failed.reset(new std::atomic<bool>(false));
    return phonomark::startSound(
        SND_PCM_STREAM_PLAYBACK, m_playing,
        std::shared_ptr<phonomark::Sound>(new Playback(data, size, std::move(keepAlive), m_playing, m_failed)));
}

phonomark::Opened VkAudioPlayer::Playback::open(phonomark::PcmReport& report) {
    using namespace phonomark;
    pcm = openDefaultPcm(SND_PCM_STREAM_PLAYBACK, report);
    if (!pcm)
        return Opened::No;
    const HwParams params = allocateHwParams(report);
    if (!params)
        return Opened::EndProcess;
    if (!requestSampleFormat(pcm.get(), params.get(), report))
        return Opened::No;
    snd_pcm_uframes_t bufferFrames = 0;
    if (!requestBufferSize(pcm.get(), params.get(), bufferFrames, report))
        return Opened::No;
    requestPeriodSize(pcm.get(), params.get(), bufferFrames, report);
    if (!applyHwParams(pcm.get(), params.get(), report))
        return Opened::EndProcess;
    periodFrames = grantedPeriodFrames(params.get(), report);
    if (periodFrames == 0)
        return Opened::No;
    logGranted("playback", params.get());
    report.error("size = %d\n", periodFrames * kChunkBytesPerFrame);
    try {
        lastPeriod.resize(static_cast<std::size_t>(periodFrames) * kSampleBytes);
    } catch (const std::bad_alloc&) {
        report.error("no memory for playing with a period of %d frames\n", periodFrames);
        return Opened::No;
    }
    return Opened::Yes;
}

void VkAudioPlayer::playInThread(Playback& sound) {
    writePeriods(sound);
    std::puts("start close play pcm");
    std::fflush(stdout);
    const int result = snd_pcm_drain(sound.pcm.get());
    if (result < 0) {
        sound.failed->store(true, std::memory_order_relaxed);
        std::fprintf(stderr, "snd_pcm_drain: %s\n", snd_strerror(result));
    }
    sound.pcm.reset();
    std::puts("end close play pcm");
    std::fflush(stdout);
}

/// Writes until the chunks written pass the size; a size of whole chunks is therefore followed by a period of silence.
void VkAudioPlayer::writePeriods(Playback& sound) {
    const auto frames = static_cast<snd_pcm_uframes_t>(sound.periodFrames);
    const std::uint64_t chunkBytes = frames * phonomark::kChunkBytesPerFrame;
    std::uint64_t position = 0;
    do {
        const snd_pcm_sframes_t result = snd_pcm_writei(sound.pcm.get(), sound.periodAt(position), frames);
        position += chunkBytes;
        report(sound, result);
        if (result == -EPIPE)
            snd_pcm_prepare(sound.pcm.get());
    } while (position <= sound.size && sound.playing->load(std::memory_order_relaxed));
}

/// A device that is lost fails at every write of a note's ten thousands: an error is told once until a write succeeds.
/// One underrun is no loss; that the next write fails, too, is one.
void VkAudioPlayer::report(Playback& sound, snd_pcm_sframes_t result) {
    auto& reported = sound.reported;
    if (result >= 0) {
        reported.clear();
        sound.failed->store(false, std::memory_order_relaxed);
        return;
    }
    if (result != -EPIPE || !reported.empty())
        sound.failed->store(true, std::memory_order_relaxed);
    if (std::find(reported.begin(), reported.end(), result) != reported.end())
        return;
    reported.push_back(result);
    if (result == -EPIPE)
        std::fputs("underrun occurred\n", stderr);
    else
        std::fprintf(stderr, "error from writei: %s\n", snd_strerror(static_cast<int>(result)));
}

bool VkAudioPlayer::hasFailed() const {
    return m_failed->load(std::memory_order_relaxed);
}

bool VkAudioPlayer::stop() {
    m_playing->store(false, std::memory_order_relaxed);
    return true;
}
