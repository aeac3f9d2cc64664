// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

/// Plays a note that VkAudioRecorder recorded, on ALSA's "default" device. The device's period has to be the one it was
/// recorded with, or the zero bytes behind each period are heard as silence in wrong places.
///
/// The sound is written by a worker thread that nobody waits for; that thread opens the device, too, and closes it.
/// Underruns and write errors are reported on standard error, each once until a write succeeds again, and passed over.
/// The player may be destroyed at any time; a running playback goes on. All members: user-interface thread.
class VkAudioPlayer {
public:
    VkAudioPlayer();

    /// Starts the worker and waits until it has opened the device. False if a step fails (one line on standard output
    /// or standard error says which) or the device does not answer within a second and a half (one line on standard
    /// error, as startSound() has it); but where the parameter block cannot be had or be put into effect, the process
    /// ends with status 1 through the host.
    ///
    /// The bytes are not copied. They live as long as `keepAlive`, which the worker holds and lets go on its own
    /// thread; without it the caller keeps them until the worker ends. Nothing past `size` is read.
    bool play(const char* data, std::uint32_t size, std::shared_ptr<const void> keepAlive = {});

    /// Ends the playback after the period being written, without waiting for it; what the device holds still sounds.
    /// Always true.
    bool stop();

    /// Whether the device stopped taking sound during the last playback, the one that runs or has ended. False again
    /// when a later write succeeds, and from the next play() on.
    bool hasFailed() const;

private:
    struct Playback;

    static void playInThread(Playback& sound);
    static void writePeriods(Playback& sound);
    static void report(Playback& sound, long result);

    // Relaxed throughout: they carry no data, the other side only has to see a change at some later test.
    std::shared_ptr<std::atomic<bool>> m_playing;
    std::shared_ptr<std::atomic<bool>> m_failed; ///< of the last playback; each has its own
};
