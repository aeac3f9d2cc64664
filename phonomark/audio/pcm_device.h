// SPDX-License-Identifier: MIT
#pragma once

#include <alsa/asoundlib.h>
#include <memory>

namespace phonomark {

struct PcmCloser {
    void operator()(snd_pcm_t* pcm) const { snd_pcm_close(pcm); }
};
struct HwParamsFreer {
    void operator()(snd_pcm_hw_params_t* params) const { snd_pcm_hw_params_free(params); }
};

/// An open device; closed when it goes.
using PcmHandle = std::unique_ptr<snd_pcm_t, PcmCloser>;
/// A parameter block; freed when it goes.
using HwParams = std::unique_ptr<snd_pcm_hw_params_t, HwParamsFreer>;

/// Each period of samples is kept in a chunk of four bytes a frame: the two bytes of every frame's sample, then as
/// many zero bytes. Recorder and player agree on that.
constexpr int kSampleBytes = 2;
constexpr int kChunkBytesPerFrame = 2 * kSampleBytes;

/// What the steps of opening a device have to say. It is kept until somebody still wants to know it: an opening may
/// take longer than anybody waits for. Past a page of text the rest is cut off.
class PcmReport {
public:
    /// For standard output.
    [[gnu::format(printf, 2, 3)]] void output(const char* format, ...);
    /// For standard error.
    [[gnu::format(printf, 2, 3)]] void error(const char* format, ...);
    void print() const;

private:
    char m_output[2048] = "";
    char m_error[2048] = "";
};

// The steps of opening a device that recording and playback share. Each reports what failed for standard error (as
// perror does, named after the call) or standard output. What follows from a failure is the caller's affair.

/// Opens "default"; null if that fails.
PcmHandle openDefaultPcm(snd_pcm_stream_t stream, PcmReport& report);

/// Null if that fails.
HwParams allocateHwParams(PcmReport& report);

/// Interleaved access, signed 16-bit little-endian samples, a rate near 40000 frames a second, one channel. The rate
/// that the device grants is not looked at.
bool requestSampleFormat(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, PcmReport& report);

/// Asks for a ring of 32 frames. `bufferFrames` is what the device made of it, or 32 if it refused.
bool requestBufferSize(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, snd_pcm_uframes_t& bufferFrames, PcmReport& report);

/// Asks for a period of half the ring. A refusal is reported and goes no further.
void requestPeriodSize(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, snd_pcm_uframes_t bufferFrames, PcmReport& report);

/// Puts the parameters into effect.
bool applyHwParams(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, PcmReport& report);

/// Frames of the period that the device granted, or 0 if it names none with which sound could be moved.
int grantedPeriodFrames(const snd_pcm_hw_params_t* params, PcmReport& report);

/// Appends "<direction> rate=... period=... buffer=..." (frames a second, frames, frames) to the file named by the
/// environment variable PHONOMARK_AUDIO_LOG; does nothing if there is none.
void logGranted(const char* direction, const snd_pcm_hw_params_t* params);

} // namespace phonomark
