// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

/// Plays a note that VkAudioRecorder recorded, on ALSA's "default" device. The device's period has to be the one it was
/// recorded with, or the zero bytes behind each period are heard as silence in wrong places.
///
/// The sound is written by a worker thread that nobody waits for. Underruns and write errors are reported on standard
/// error and passed over. The player may be destroyed at any time; a running playback goes on.
/// All members: user-interface thread.
class VkAudioPlayer {
public:
    VkAudioPlayer();

    /// Opens the device and starts the worker. False if a step fails (one line on standard output or standard error
    /// says which); but where the parameter block cannot be had or be put into effect, the process ends with status 1
    /// through the host.
    ///
    /// The bytes are not copied. They live as long as `keepAlive`, which the worker holds and lets go on its own
    /// thread; without it the caller keeps them until the worker ends. Nothing past `size` is read.
    bool play(const char* data, std::uint32_t size, std::shared_ptr<const void> keepAlive = {});

    /// Ends the playback after the period being written, without waiting for it; what the device holds still sounds.
    /// Always true.
    bool stop();

private:
    struct Sound;

    static void playInThread(Sound& sound);
    static void writePeriods(Sound& sound);

    /// Relaxed throughout: it carries no data, the worker only has to see a clear at some later test.
    std::shared_ptr<std::atomic<bool>> m_playing;
};
