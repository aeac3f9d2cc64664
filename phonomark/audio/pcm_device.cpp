// SPDX-License-Identifier: MIT
#include "phonomark/audio/pcm_device.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

namespace phonomark {
namespace {

constexpr unsigned kRequestedRate = 40000;
constexpr snd_pcm_uframes_t kRequestedFrames = 32;

/// The report is told of a failure while errno still is that of the call.
bool succeeded(int result, const char* call, PcmReport& report) {
    if (result < 0)
        report.error("%s: %s\n", call, std::generic_category().message(errno).c_str());
    return result >= 0;
}

template <std::size_t Size> void append(char (&text)[Size], const char* format, va_list values) {
    const std::size_t used = std::strlen(text);
    std::vsnprintf(text + used, Size - used, format, values);
}

} // namespace

void PcmReport::output(const char* format, ...) {
    va_list values;
    va_start(values, format);
    append(m_output, format, values);
    va_end(values);
}

void PcmReport::error(const char* format, ...) {
    va_list values;
    va_start(values, format);
    append(m_error, format, values);
    va_end(values);
}

void PcmReport::print() const {
    std::fputs(m_output, stdout);
    std::fputs(m_error, stderr);
}

PcmHandle openDefaultPcm(snd_pcm_stream_t stream, PcmReport& report) {
    snd_pcm_t* pcm = nullptr;
    if (!succeeded(snd_pcm_open(&pcm, "default", stream, 0), "snd_pcm_open", report))
        return nullptr;
    return PcmHandle(pcm);
}

HwParams allocateHwParams(PcmReport& report) {
    snd_pcm_hw_params_t* params = nullptr;
    if (!succeeded(snd_pcm_hw_params_malloc(&params), "snd_pcm_hw_params_malloc", report))
        return nullptr;
    return HwParams(params);
}

bool requestSampleFormat(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, PcmReport& report) {
    unsigned rate = kRequestedRate;
    int direction = 0;
    return succeeded(snd_pcm_hw_params_any(pcm, params), "snd_pcm_hw_params_any", report) &&
           succeeded(snd_pcm_hw_params_set_access(pcm, params, SND_PCM_ACCESS_RW_INTERLEAVED),
                     "snd_pcm_hw_params_set_access", report) &&
           succeeded(snd_pcm_hw_params_set_format(pcm, params, SND_PCM_FORMAT_S16_LE), "snd_pcm_hw_params_set_format",
                     report) &&
           succeeded(snd_pcm_hw_params_set_rate_near(pcm, params, &rate, &direction), "snd_pcm_hw_params_set_rate_near",
                     report) &&
           succeeded(snd_pcm_hw_params_set_channels(pcm, params, 1), "snd_pcm_hw_params_set_channels", report);
}

bool requestBufferSize(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, snd_pcm_uframes_t& bufferFrames,
                       PcmReport& report) {
    bufferFrames = kRequestedFrames;
    const int result = snd_pcm_hw_params_set_buffer_size_near(pcm, params, &bufferFrames);
    if (result < 0)
        report.output("Unable to set buffer size %li : %s\n", static_cast<long>(kRequestedFrames * 2),
                      snd_strerror(result));
    return result >= 0;
}

void requestPeriodSize(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, snd_pcm_uframes_t bufferFrames, PcmReport& report) {
    const snd_pcm_uframes_t requested = bufferFrames / 2;
    snd_pcm_uframes_t periodFrames = requested;
    const int result = snd_pcm_hw_params_set_period_size_near(pcm, params, &periodFrames, nullptr);
    if (result < 0)
        report.output("Unable to set period size %li : %s\n", static_cast<long>(requested), snd_strerror(result));
}

bool applyHwParams(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, PcmReport& report) {
    return succeeded(snd_pcm_hw_params(pcm, params), "snd_pcm_hw_params", report);
}

int grantedPeriodFrames(const snd_pcm_hw_params_t* params, PcmReport& report) {
    snd_pcm_uframes_t periodFrames = 0;
    int direction = 0;
    if (!succeeded(snd_pcm_hw_params_get_period_size(params, &periodFrames, &direction),
                   "snd_pcm_hw_params_get_period_size", report))
        return 0;
    // With no frames in a period the workers would turn for ever, and a chunk's size has to fit an int.
    constexpr auto kMost = static_cast<snd_pcm_uframes_t>(std::numeric_limits<int>::max() / kChunkBytesPerFrame);
    if (periodFrames == 0 || periodFrames > kMost) {
        report.error("snd_pcm_hw_params_get_period_size: %lu frames\n", periodFrames);
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
