// SPDX-License-Identifier: MIT
#pragma once

#include "phonomark/audio/pcm_device.h"
#include "phonomark/audio/worker_census.h"

#include <chrono>
#include <memory>

namespace phonomark {

/// How the opening of a device came out.
enum class Opened { Yes, No, EndProcess };

/// One recording or playback. All of it is of its worker, from the opening of the device to the closing: any call of
/// the sound library may hang for as long as the sound server does not answer.
class Sound {
public:
    virtual ~Sound() = default;

    /// Opens the device and puts it into `pcm`. Must not throw.
    virtual Opened open(PcmReport& report) = 0;
    /// Moves the sound and closes the device. Must not throw.
    virtual void run() = 0;

    PcmHandle pcm;
};

/// How long the user waits for a device to open.
constexpr std::chrono::milliseconds kOpeningPatience{1500};

/// Starts the worker of `sound` and waits until it has opened the device. True: the worker runs, and `running`, the
/// flag whose clearing ends it, was set before this returns, so that no stop can be undone.
///
/// False if the device does not open, after its report was printed, or when the system gives no thread. Where the
/// failure demands it, the process ends with status 1 through the host. Also false, with a line on standard error, if
/// the opening takes longer than `kOpeningPatience`: it is left to itself, and what it opens after all is closed
/// again. Until that has happened further starts in the direction of `stream` fail at once, so that no threads pile up.
/// User-interface thread.
bool startSound(snd_pcm_stream_t stream, const std::shared_ptr<WorkerCensus::Flag>& running,
                std::shared_ptr<Sound> sound);

} // namespace phonomark
