// SPDX-License-Identifier: MIT
#include "phonomark/audio/pcm_device.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace phonomark {
namespace {

constexpr unsigned kRequestedRate = 40000;
constexpr snd_pcm_uframes_t kRequestedFrames = 32;

bool succeeded(int result, const char* call) {
    if (result < 0)
        std::perror(call);
    return result >= 0;
}

} // namespace

PcmHandle openDefaultPcm(snd_pcm_stream_t stream) {
    snd_pcm_t* pcm = nullptr;
    if (!succeeded(snd_pcm_open(&pcm, "default", stream, 0), "snd_pcm_open"))
        return nullptr;
    return PcmHandle(pcm);
}

HwParams allocateHwParams() {
    snd_pcm_hw_params_t* params = nullptr;
    if (!succeeded(snd_pcm_hw_params_malloc(&params), "snd_pcm_hw_params_malloc"))
        return nullptr;
    return HwParams(params);
}

bool requestSampleFormat(snd_pcm_t* pcm, snd_pcm_hw_params_t* params) {
    unsigned rate = kRequestedRate;
    int direction = 0;
    return succeeded(snd_pcm_hw_params_any(pcm, params), "snd_pcm_hw_params_any") &&
           succeeded(snd_pcm_hw_params_set_access(pcm, params, SND_PCM_ACCESS_RW_INTERLEAVED),
                     "snd_pcm_hw_params_set_access") &&
           succeeded(snd_pcm_hw_params_set_format(pcm, params, SND_PCM_FORMAT_S16_LE),
                     "snd_pcm_hw_params_set_format") &&
           succeeded(snd_pcm_hw_params_set_rate_near(pcm, params, &rate, &direction),
                     "snd_pcm_hw_params_set_rate_near") &&
           succeeded(snd_pcm_hw_params_set_channels(pcm, params, 1), "snd_pcm_hw_params_set_channels");
}

bool requestBufferSize(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, snd_pcm_uframes_t& bufferFrames) {
    bufferFrames = kRequestedFrames;
    const int result = snd_pcm_hw_params_set_buffer_size_near(pcm, params, &bufferFrames);
    if (result < 0)
        std::printf("Unable to set buffer size %li : %s\n", static_cast<long>(kRequestedFrames * 2),
                    snd_strerror(result));
    return result >= 0;
}

void requestPeriodSize(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, snd_pcm_uframes_t bufferFrames) {
    const snd_pcm_uframes_t requested = bufferFrames / 2;
    snd_pcm_uframes_t periodFrames = requested;
    const int result = snd_pcm_hw_params_set_period_size_near(pcm, params, &periodFrames, nullptr);
    if (result < 0)
        std::printf("Unable to set period size %li : %s\n", static_cast<long>(requested), snd_strerror(result));
}

bool applyHwParams(snd_pcm_t* pcm, snd_pcm_hw_params_t* params) {
    return succeeded(snd_pcm_hw_params(pcm, params), "snd_pcm_hw_params");
}

int grantedPeriodFrames(const snd_pcm_hw_params_t* params) {
    snd_pcm_uframes_t periodFrames = 0;
    int direction = 0;
    if (!succeeded(snd_pcm_hw_params_get_period_size(params, &periodFrames, &direction),
                   "snd_pcm_hw_params_get_period_size"))
        return 0;
    // With no frames in a period the workers would turn for ever, and a chunk's size has to fit an int.
    constexpr auto kMost = static_cast<snd_pcm_uframes_t>(std::numeric_limits<int>::max() / kChunkBytesPerFrame);
    if (periodFrames == 0 || periodFrames > kMost) {
        std::fprintf(stderr, "snd_pcm_hw_params_get_period_size: %lu frames\n", periodFrames);
        return 0;
    }
    return static_cast<int>(periodFrames);
}

void logGranted(const char* direction, const snd_pcm_hw_params_t* params) {
    const char* path = std::getenv("PHONOMARK_AUDIO_LOG");
    if (path == nullptr || *path == '\0')
        return;
    unsigned rate = 0;
    int rounding = 0;
    snd_pcm_uframes_t periodFrames = 0;
    snd_pcm_uframes_t bufferFrames = 0;
    snd_pcm_hw_params_get_rate(params, &rate, &rounding);
    snd_pcm_hw_params_get_period_size(params, &periodFrames, &rounding);
    snd_pcm_hw_params_get_buffer_size(params, &bufferFrames);
    if (std::FILE* file = std::fopen(path, "ae")) {
        std::fprintf(file, "%s rate=%u period=%lu buffer=%lu\n", direction, rate, periodFrames, bufferFrames);
        std::fclose(file);
    }
}

} // namespace phonomark
