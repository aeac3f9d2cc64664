// SPDX-License-Identifier: MIT
#pragma once

#include "phonomark/audio/recorder.h"
#include "phonomark/entity/wave_format.h"
#include "phonomark/tagwindow/capture_buffer.h"
#include "phonomark/tagwindow/held_note.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

/// The one recording of a tag window, and the note that it was begun for: whatever note the window serves by the time
/// it ends, its sound goes to that one. Main thread only.
class VoiceTake {
public:
    /// Longer is kept; up to kAccidentalMs it was no attempt to speak.
    static constexpr std::uint32_t kShortestMs = 1000;
    static constexpr std::uint32_t kAccidentalMs = 300;

    /// `clock`: null for the recorder's own. `buffer` holds VkAudioRecorder::kBufferBytes.
    VoiceTake(MxDbPhonomark& note, std::shared_ptr<CaptureBuffer> buffer, VkAudioRecorder::Clock clock);

    /// Opens the microphone; false when there is none.
    bool start();
    /// From start() to the first stop().
    bool isRunning() const { return m_running; }
    /// Closes the microphone, with what was said before the call in the buffer. No effect after the first time.
    void stop();

    const HeldNote& note() const { return m_note; }
    /// Of what is recorded; from stop() on it stays what it was then.
    std::uint32_t elapsedMs() const { return m_running ? m_recorder.getTimeMs() : m_elapsedMs; }
    /// Seconds and the inch sign: "2.4".
    std::wstring duration() const;
    bool isKept() const { return elapsedMs() > kShortestMs; }
    /// Too short to be kept, too long to have been a slip.
    bool isTooShort() const { return elapsedMs() > kAccidentalMs && elapsedMs() < kShortestMs; }
    /// No more is captured: the longest time, or the most bytes, have been reached.
    bool hasReachedLimit() const;
    /// Shows the growing duration in the note.
    void showTime();
    /// Puts what has been said so far into the note, for a file that is about to be written; the take goes on.
    void keepSoFar(const tWAVEFORMATEX& format);
    /// The end of the take: puts it into its note, or empties the note of a take that was too short, as one step of
    /// undo. Called again it does the same again, unless undo or redo has come over the note. A recording that they
    /// brought back in mid-take is left alone by a take that is too short, and stays to be had by undo from a longer
    /// one. False: nothing was done.
    bool finish(const tWAVEFORMATEX& format);

    /// True once: for lines that are said once a take.
    bool sayOnceTooShort() { return !std::exchange(m_saidTooShort, true); }
    bool sayOnceLimit() { return !std::exchange(m_saidLimit, true); }

private:
    bool isFinishedAs(const MxDbPhonomark& note) const;
    void follow(const MxDbPhonomark& note);
    struct Free {
        void operator()(unsigned char* block) const { std::free(block); }
    };
    using Bytes = std::unique_ptr<unsigned char, Free>;
    Bytes copySound(std::uint32_t& size) const;
    static void putSound(MxDbPhonomark& note, Bytes sound, std::uint32_t size);
    void putBack(MxDbPhonomark& note) const;
    static void empty(MxDbPhonomark& note);

    HeldNote m_note;
    std::shared_ptr<CaptureBuffer> m_buffer;
    VkAudioRecorder m_recorder;
    std::uint32_t m_elapsedMs = 0;
    std::wstring m_duration;
    tWAVEFORMATEX m_format;
    bool m_running = false;
    bool m_finished = false; ///< finish() has been called
    // The note without this take, as it was at its start, or as undo or redo left it since.
    std::wstring m_durationBefore;
    bool m_isOverAnother = false; ///< they brought a recording back
    bool m_keptSoFar = false;     ///< the note holds what keepSoFar() put there
    unsigned m_filedIn = 0;       ///< MxDbPhonomark::timesFiledIn() by then, or at the last finish()
    bool m_saidTooShort = false;
    bool m_saidLimit = false;
};
