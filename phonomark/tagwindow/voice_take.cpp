// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/voice_take.h"

#include "host/db/direct_change.h"
#include "host/ed/input.h"
#include "phonomark/dbutil/text_conversion.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr unsigned kRecordNoteText = 295;

/// Puts the first bytes of the buffer, as many as it counts, into the note; false when there is no memory.
bool putSound(MxDbPhonomark& note, CaptureBuffer& buffer) {
    const std::uint32_t size = buffer.count();
    auto* copy = static_cast<unsigned char*>(std::calloc(std::size_t(size) + 1, 1));
    if (!copy)
        return false;
    if (size > 0)
        std::memcpy(copy, buffer.bytes(), size);
    note.delAudioData();
    note.setAudioData(copy);
    note.setAudioDataSize(size);
    return true;
}

} // namespace

VoiceTake::VoiceTake(MxDbPhonomark& note, std::shared_ptr<CaptureBuffer> buffer, VkAudioRecorder::Clock clock)
    : m_note(&note)
    , m_buffer(std::move(buffer))
    , m_recorder(clock ? VkAudioRecorder(clock) : VkAudioRecorder()) {
    CStdStr<wchar_t> duration;
    note.getDuration(duration);
    m_durationBefore = duration;
}

bool VoiceTake::start() {
    m_running = m_buffer && m_recorder.record(m_buffer->bytes(), m_buffer->counter(), m_buffer);
    return m_running;
}

void VoiceTake::stop() {
    if (std::exchange(m_running, false))
        m_recorder.catchUp(); // the last word is still on its way
    m_recorder.stop();
}

std::wstring VoiceTake::duration() const {
    return toWide(m_recorder.getTime()) + L'"';
}

bool VoiceTake::hasReachedLimit() const {
    return m_running && m_recorder.hasEnded();
}

bool VoiceTake::isLatest() const {
    const MxDbPhonomark* note = m_note.present();
    return note && (!m_finished || note->timesFiledIn() == m_filedIn);
}

void VoiceTake::showTime() {
    MxDbPhonomark* note = m_note.present();
    if (!note || !isLatest())
        return;
    note->setDuration(duration());
    note->ShowRegion(false);
    mxdbEntUpd(note->objectId());
    mxdbMarkModified(note->objectId());
}

void VoiceTake::keepSoFar() {
    MxDbPhonomark* note = m_note.present();
    if (!m_running || !note || !isKept() || !putSound(*note, *m_buffer))
        return;
    note->setDuration(duration());
    m_keptSoFar = true;
    mxdbMarkModified(note->objectId());
}

/// The step of undo goes back to the note as it was before the take.
void VoiceTake::putBack(MxDbPhonomark& note) const {
    if (m_keptSoFar)
        empty(note);
    note.setDuration(m_durationBefore);
}

void VoiceTake::empty(MxDbPhonomark& note) {
    note.setDuration(kEmptyDuration);
    note.setRecord(false);
    mxdbEntUpd(note.objectId());
    note.delAudioData();
}

bool VoiceTake::finish(const tWAVEFORMATEX& format) {
    MxDbPhonomark* note = m_note.present();
    if (!note || !isLatest())
        return false;
    if (!m_finished) {
        m_format = format;
        putBack(*note);
    }
    {
        const MxDbDirectChange step(note->objectId(), LocalStr(kRecordNoteText, L"Record note").c_str());
        if (isKept())
            keep(*note, m_format);
        else
            empty(*note);
    }
    m_finished = true;
    m_filedIn = note->timesFiledIn();
    return true;
}

void VoiceTake::keep(MxDbPhonomark& note, const tWAVEFORMATEX& format) {
    if (!m_buffer || !putSound(note, *m_buffer))
        return;
    note.setWaveFormat(&format);
    note.setDuration(duration());
    mxdbEntUpd(note.objectId());
    note.setRecord(true);
}
