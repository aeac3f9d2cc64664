// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <cstdint>
#include <memory>

/// Records one spoken note from ALSA's "default" device into memory of the caller: signed 16-bit little-endian mono
/// samples at about 40000 frames a second, each period of them followed by as many zero bytes (VkAudioPlayer skips
/// these).
///
/// A recording runs on a worker thread that nobody waits for; that thread opens the device, too, and closes it. It ends
/// after stop(), after 30,000 ms, or when the next chunk would take it past 5,000,000 bytes ("buff is not enough!" on
/// standard output). An overrun or a short read is reported on standard error and passed over; another read error ends
/// the process with status 1 through the host. The recorder may be destroyed at any time; a running recording goes on.
/// All members: user-interface thread.
class VkAudioRecorder {
public:
    /// Milliseconds of a clock that never goes back.
    using Clock = std::int64_t (*)();

    /// The most bytes a recording holds; record() needs a buffer of this size.
    static constexpr std::uint32_t kBufferBytes = 5'000'000;
    static constexpr std::int64_t kLongestMs = 30'000;

    /// Stops whatever is being recorded by any recorder of the process.
    VkAudioRecorder();
    explicit VkAudioRecorder(Clock clock);

    /// Starts the worker and waits until it has opened the device. False if the system lists no sound device
    /// (silently), a step fails (one line on standard output or standard error says which) or the device does not
    /// answer within a second and a half (one line on standard error, as startSound() has it); nothing is recorded
    /// then.
    ///
    /// `buffer` holds kBufferBytes. `size` is the number of valid bytes, written by the worker alone, first 0 when it
    /// starts; it grows after the bytes it counts have been written. Read it as
    /// std::atomic_ref<std::uint32_t>(*size).load(): the bytes below it are then safe to read while the worker runs.
    /// Both live as long as `keepAlive`, which the worker holds and lets go on its own thread; without it the caller
    /// keeps them until the worker ends.
    bool record(char* buffer, std::uint32_t* size, std::shared_ptr<void> keepAlive = {});

    /// Waits until the last recording holds what the device had taken up to this call, for at most about 250 ms: sound
    /// is under way between the device and its reader, and what was said last would be missing. Returns at once when
    /// nothing is being recorded. Call it before getTimeMs() and stop(): the recording goes on meanwhile.
    void catchUp();

    /// Whether the worker of the last recording takes no more sound: it was stopped, ran into a bound or failed. False
    /// before the first recording.
    bool hasEnded() const;

    /// Ends the recordings of all recorders within about a period, without waiting for it. Always true.
    bool stop();

    /// The elapsed time in seconds with one decimal, "12.3".
    QString getTime() const;

    /// Milliseconds recorded: 0 once record() has found a device listed, then brought up to date after each period.
    std::uint32_t getTimeMs() const;

private:
    struct Progress;
    struct Take;
    class Link;

    static void recordInThread(Take& take);
    static void readPeriod(Take& take);
    static bool keepPeriod(Take& take);
    static void answer(Take& take);
    static std::int64_t outstandingFrames(Take& take);
    [[noreturn]] static void giveUp(Take& take);

    std::shared_ptr<Progress> m_progress;
    std::shared_ptr<Link> m_link; ///< null before the first recording
};
