// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

/// A scripted libasound: it has the same functions, each does what the script says and is written down with its
/// arguments. So a test provokes any status of any call, gives samples and takes them.
///
/// Write the script before the sound code starts its thread. `read` and `write` run on that thread and may block, or
/// stop the recording they belong to, to put things into a certain order.
class AlsaScript {
public:
    using Read = std::function<long(std::int16_t* samples, unsigned long frames)>;
    using Write = std::function<long(const std::int16_t* samples, unsigned long frames)>;

    static AlsaScript& instance();

    /// Everything succeeds, the device grants what it is asked for, captures silence and plays into nothing.
    void reset();

    /// The next call named so does not return before answer(): a sound server that does not answer.
    void hang(const std::string& call);
    /// Waits until a call hangs.
    void waitUntilItHangs();
    void answer();

    /// What a call returns from now on. A negative status also sets errno, as the real ones mostly do.
    void setStatus(const std::string& call, int status);

    /// What the device grants whatever it is asked for; 0 grants the request.
    unsigned grantedRate = 0;
    unsigned long grantedBuffer = 0;
    unsigned long grantedPeriod = 0;

    /// Frames that the device has taken and not handed over.
    std::atomic<long> delay = 0;

    Read read;
    Write write;

    /// Every call so far with its arguments, in order: "snd_pcm_open default capture 0".
    std::vector<std::string> calls() const;
    /// How many of the calls begin with `prefix`.
    int count(const std::string& prefix) const;

    int openDevices() const;     ///< opened and not closed
    int parameterBlocks() const; ///< allocated and not freed

    // For the functions of the stand-in.
    int note(const std::string& call, const std::string& arguments = "");
    void countDevices(int change);
    void countBlocks(int change);

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_hanging;
    bool m_hangs = false;
    std::map<std::string, int> m_statuses;
    std::vector<std::string> m_calls;
    int m_devices = 0;
    int m_blocks = 0;
};
