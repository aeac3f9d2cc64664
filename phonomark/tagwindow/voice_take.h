// SPDX-License-Identifier: MIT
#pragma once

#include "phonomark/audio/recorder.h"
#include "phonomark/entity/wave_format.h"
#include "phonomark/tagwindow/capture_buffer.h"
#include "phonomark/tagwindow/held_note.h"

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
    std::uint32_t elapsedMs() const { return m_recorder.getTimeMs(); }
    /// Seconds and the inch sign: "2.4".
    std::wstring duration() const;
    bool isKept() const { return elapsedMs() > kShortestMs; }
    /// Too short to be kept, too long to have been a slip.
    bool isTooShort() const { return elapsedMs() > kAccidentalMs && elapsedMs() < kShortestMs; }
    /// No more is captured: the longest time, or the most bytes, have been reached.
    bool hasReachedLimit() const;
    /// The note is in the state that this take left it in, but for what the window did: no undo, no redo has come over
    /// it. A save would take that back.
    bool isLatest() const;

    /// Shows the growing duration in the note.
    void showTime();
    /// Puts what has been said so far into the note, for a file that is about to be written; the take goes on.
    void keepSoFar();
    /// The end of the take: puts it into its note, or empties the note of a take that was too short, as one step of
    /// undo. Called again it does the same again, unless the note is another by undo. False: nothing was done.
    bool finish(const tWAVEFORMATEX& format);

    /// True once: for lines that are said once a take.
    bool sayOnceTooShort() { return !std::exchange(m_saidTooShort, true); }
    bool sayOnceLimit() { return !std::exchange(m_saidLimit, true); }

private:
    void keep(MxDbPhonomark& note, const tWAVEFORMATEX& format);
    void putBack(MxDbPhonomark& note) const;
    static void empty(MxDbPhonomark& note);

    HeldNote m_note;
    std::shared_ptr<CaptureBuffer> m_buffer;
    VkAudioRecorder m_recorder;
    std::wstring m_durationBefore;
    tWAVEFORMATEX m_format;
    bool m_running = false;
    bool m_finished = false;  ///< finish() has been called
    bool m_keptSoFar = false; ///< the note holds what keepSoFar() put there
    unsigned m_filedIn = 0;   ///< MxDbPhonomark::timesFiledIn() at the last finish()
    bool m_saidTooShort = false;
    bool m_saidLimit = false;
};
