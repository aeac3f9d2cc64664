// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/voice_take.h"

#include "host/db/direct_change.h"
#include "host/ed/input.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/text_conversion.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"

#include <cstring>
#include <utility>

namespace {

constexpr unsigned kRecordNoteText = 295;

} // namespace

VoiceTake::VoiceTake(MxDbPhonomark& note, std::shared_ptr<CaptureBuffer> buffer, VkAudioRecorder::Clock clock)
    : m_note(&note)
    , m_buffer(std::move(buffer))
    , m_recorder(clock ? VkAudioRecorder(clock) : VkAudioRecorder()) {
    m_filedIn = note.timesFiledIn() - 1;
    follow(note);
    m_isOverAnother = false; // who begins a recording means it
}

bool VoiceTake::start() {
    m_running = m_buffer && m_recorder.record(m_buffer->bytes(), m_buffer->counter(), m_buffer);
    return m_running;
}

void VoiceTake::stop() {
    if (m_running) {
        m_recorder.catchUp(); // the last word is still on its way
        m_elapsedMs = m_recorder.getTimeMs();
        m_duration = duration();
        m_running = false;
    }
    m_recorder.stop();
}

std::wstring VoiceTake::duration() const {
    return m_running || m_duration.empty() ? toWide(m_recorder.getTime()) + L'"' : m_duration;
}

bool VoiceTake::hasReachedLimit() const {
    return m_running && m_recorder.hasEnded();
}

/// Undo or redo may have come over the note.
void VoiceTake::follow(const MxDbPhonomark& note) {
    if (note.timesFiledIn() == m_filedIn)
        return;
    m_filedIn = note.timesFiledIn();
    CStdStr<wchar_t> duration;
    note.getDuration(duration);
    m_durationBefore = duration;
    m_isOverAnother = note.isRecord();
    m_keptSoFar = false;
}

void VoiceTake::showTime() {
    MxDbPhonomark* note = m_note.present();
    if (!note || (m_finished && note->timesFiledIn() != m_filedIn))
        return;
    follow(*note);
    if (m_isOverAnother)
        return;
    note->setDuration(duration());
    note->ShowRegion(false);
    mxdbEntUpd(note->objectId());
    mxdbMarkModified(note->objectId());
}

/// The first bytes of the buffer, as many as it counts; null when there is no memory for them.
VoiceTake::Bytes VoiceTake::copySound(std::uint32_t& size) const {
    size = m_buffer ? m_buffer->count() : 0;
    Bytes copy(static_cast<unsigned char*>(std::calloc(std::size_t(size) + 1, 1)));
    if (copy && size > 0)
        std::memcpy(copy.get(), m_buffer->bytes(), size);
    return copy;
}

void VoiceTake::putSound(MxDbPhonomark& note, Bytes sound, std::uint32_t size) {
    note.delAudioData();
    note.setAudioData(sound.get());
    [[maybe_unused]] const unsigned char* const given = sound.release();
    note.setAudioDataSize(size);
}

void VoiceTake::keepSoFar(const tWAVEFORMATEX& format) {
    MxDbPhonomark* note = m_note.present();
    if (!m_running || !note || !isKept())
        return;
    follow(*note);
    std::uint32_t size = 0;
    Bytes sound = m_isOverAnother ? nullptr : copySound(size);
    if (!sound)
        return;
    putSound(*note, std::move(sound), size);
    note->setWaveFormat(&format);
    note->setDuration(duration());
    m_keptSoFar = true;
    mxdbMarkModified(note->objectId());
}

/// The step of undo goes back to the note as it was before the take.
void VoiceTake::putBack(MxDbPhonomark& note) const {
    if (m_keptSoFar) {
        empty(note);
        note.setAudioDataSize(0);
    }
    note.setDuration(m_durationBefore);
}

void VoiceTake::empty(MxDbPhonomark& note) {
    note.setDuration(kEmptyDuration);
    note.setRecord(false);
    mxdbEntUpd(note.objectId());
    note.delAudioData();
}

/// A repeated save would change nothing.
bool VoiceTake::isFinishedAs(const MxDbPhonomark& note) const {
    CStdStr<wchar_t> duration;
    note.getDuration(duration);
    if (!isKept())
        return !note.isRecord() && !note.getAudioData() && duration == kEmptyDuration;
    tWAVEFORMATEX format;
    note.getWaveFormat(format);
    return note.isRecord() && note.getAudioData() && note.getAudioDataSize() == m_buffer->count() &&
           std::memcmp(note.getAudioData(), m_buffer->bytes(), m_buffer->count()) == 0 && duration == m_duration &&
           std::memcmp(&format, &m_format, sizeof format) == 0;
}

bool VoiceTake::finish(const tWAVEFORMATEX& format) {
    MxDbPhonomark* note = m_note.present();
    if (!note || (m_finished && note->timesFiledIn() != m_filedIn))
        return false;
    follow(*note);
    if (m_finished ? isFinishedAs(*note) : m_isOverAnother && !isKept())
        return m_finished;
    std::uint32_t size = 0;
    Bytes sound = isKept() ? copySound(size) : nullptr;
    if (isKept() && !sound)
        return failed("keeping a recording, for want of memory", false); // a later release tries again
    if (!m_finished) {
        m_format = format;
        putBack(*note);
    }
    {
        const MxDbDirectChange step(note->objectId(), LocalStr(kRecordNoteText, L"Record note").c_str());
        if (isKept()) {
            putSound(*note, std::move(sound), size);
            note->setWaveFormat(&m_format);
            note->setDuration(duration());
            mxdbEntUpd(note->objectId());
            note->setRecord(true);
        } else {
            empty(*note);
        }
    }
    m_finished = true;
    m_filedIn = note->timesFiledIn();
    return true;
}
