// SPDX-License-Identifier: MIT
// Recording into the window's note and playing it.
#include "phonomark/tagwindow/tag_window.h"

#include "host/ed/input.h"
#include "host/ui/windows.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/text_conversion.h"
#include "phonomark/entity/phonomark.h"

#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr int kRecordTickMs = 100;
constexpr int kPlayTickMs = 300;
/// Images I, II and III take part in the animation.
constexpr std::int64_t kAnimatedImages = 3;
constexpr std::int64_t kLongestPlayMs = 29'999;
/// A press this short was no attempt to speak.
constexpr std::uint32_t kAccidentalMs = 300;
/// A recording has to be longer than this.
constexpr std::uint32_t kShortestMs = 1000;
constexpr unsigned kPlayStartText = 294;

std::wstring withInchSign(const QString& seconds) {
    return toWide(seconds) + L'"';
}

void redraw(const MxDbPhonomark& note) {
    mxdbEntUpd(note.objectId());
}

/// The note was changed through the pointer that the window holds: the next save has to take it along, also when its
/// layer or its drawing is locked.
void markForSave(const MxDbPhonomark& note) {
    mxdbMarkModified(note.objectId());
}

} // namespace

int playDurationMs(const std::wstring& duration) {
    // A text that is no number counts as 0 seconds; a drawing may hold any text.
    const long seconds = std::wcstol(duration.substr(0, duration.find(L'.')).c_str(), nullptr, 10);
    constexpr long kMost = std::numeric_limits<int>::max() / 1000 - 1;
    return static_cast<int>(1000 + 1000 * std::clamp(seconds, -kMost, kMost));
}

void CPhonomarkTagUIDlg::OnRecStart() {
    if (!liveOwner())
        return;
    if (!m_recorder) {
        // A window that came up over a recorded note has no buffer; one that has played holds a copy of the sound,
        // which a worker may still be reading.
        if (!m_buffer || m_player || m_buffer->capacity() < VkAudioRecorder::kBufferBytes)
            m_buffer = CaptureBuffer::make(VkAudioRecorder::kBufferBytes);
        if (m_clock)
            m_recorder.emplace(m_clock);
        else
            m_recorder.emplace();
        if (!m_buffer || !m_recorder->record(m_buffer->bytes(), m_buffer->counter(), m_buffer)) {
            mxutPrintText(m_unavailableText.c_str());
            return;
        }
    }
    m_stopRequested = false;
    m_recording = true;
    stopTimer(m_recordTimer);
    m_recordTimer = startTimer(kRecordTickMs, Qt::CoarseTimer);
}

void CPhonomarkTagUIDlg::recordTick() {
    MxDbPhonomark* note = presentOwner();
    if (!note || !m_recorder)
        return;
    note->setDuration(withInchSign(m_recorder->getTime()));
    note->ShowRegion(false);
    redraw(*note);
    markForSave(*note);
    mxuiRepairView();
}

void CPhonomarkTagUIDlg::OnRecStop() {
    if (!m_recorder)
        return;
    stopTimer(m_recordTimer);
    const std::uint32_t ms = m_recorder->getTimeMs();
    m_recorder->stop();
    if (ms > kAccidentalMs && ms < kShortestMs)
        mxutPrintText(m_tooShortText.c_str());
    MxDbPhonomark* note = presentOwner();
    if (!note)
        return;
    if (ms > kShortestMs)
        keepRecording(*note);
    else
        resetOwner(*note);
}

void CPhonomarkTagUIDlg::resetOwner(MxDbPhonomark& note) {
    note.setDuration(kEmptyDuration);
    note.setRecord(false);
    redraw(note);
    note.delAudioData();
    markForSave(note);
}

void CPhonomarkTagUIDlg::keepRecording(MxDbPhonomark& note) {
    const std::uint32_t size = m_buffer ? m_buffer->count() : 0;
    auto* copy = static_cast<unsigned char*>(std::calloc(std::size_t(size) + 1, 1));
    if (!copy)
        return;
    if (size > 0)
        std::memcpy(copy, m_buffer->bytes(), size);
    note.delAudioData();
    note.setAudioData(copy);
    note.setAudioDataSize(size);
    note.setWaveFormat(&m_waveFormat);
    note.setDuration(withInchSign(m_recorder->getTime()));
    redraw(note);
    note.setRecord(true);
    markForSave(note);
    m_stopRequested = true;
    SetRecordStatus(true);
    showOwnerImage(); // in the place of an animation, too
}

void CPhonomarkTagUIDlg::OnPlayStart() {
    m_playing = true;
    m_playTicks = 0;
    {
        DocumentLock lock(currentDocument(), L"PlayStart", kPlayStartText);
        if (!lock.isHeld())
            return; // the window counts as playing until it is destroyed
        if (!takeSound()) {
            lock.leaveLocked();
            return;
        }
    }
    riseInCorner();
    if (!m_player)
        m_player.emplace();
    if (!m_buffer || !m_player->play(m_buffer->bytes(), m_buffer->count(), m_buffer))
        mxutPrintText(m_unavailableText.c_str());
    stopTimer(m_playTimer);
    m_playTimer = startTimer(kPlayTickMs, Qt::CoarseTimer);
}

bool CPhonomarkTagUIDlg::takeSound() {
    MxDbPhonomark* note = nullptr;
    if (!liveOwner() || mxdbOpenObject(note, m_ownerId, Mx::kForRead) != Mx::eOk) {
        m_buffer = CaptureBuffer::make(1); // nothing to hear
        return true;
    }
    m_buffer.reset();
    if (!note->getAudioData())
        return false;
    const unsigned size = note->getAudioDataSize();
    m_buffer = CaptureBuffer::make(std::size_t(size) + 1);
    if (m_buffer) {
        std::memcpy(m_buffer->bytes(), note->getAudioData(), size);
        m_buffer->setCount(size);
    }
    note->getWaveFormat(m_waveFormat);
    CStdStr<wchar_t> duration;
    note->getDuration(duration);
    m_playDurationMs = playDurationMs(duration);
    note->doUnhighlight();
    note->close();
    return true;
}

/// The window rises in four steps to its place at the main window's lower right corner. The steps hold up the user
/// interface, so that nothing else is pressed meanwhile.
void CPhonomarkTagUIDlg::riseInCorner() {
    const QRect frame = mxuiMainWindowRect();
    const QPoint corner = mxuiScreenToMainWindow(QPoint(frame.x() + frame.width(), frame.y() + frame.height()));
    for (int step = 1; step <= 4; ++step) {
        QThread::msleep(200);
        move(corner.x() - 48, corner.y() - 9 * step);
        repaint();
    }
}

void CPhonomarkTagUIDlg::playTick() {
    ++m_playTicks;
    const std::int64_t index = m_playTicks % kAnimatedImages;
    m_currentImage = index < static_cast<std::int64_t>(m_playingImages.size())
                         ? m_playingImages[static_cast<std::size_t>(index)]
                         : QImage();
    const std::int64_t elapsed = m_playTicks * kPlayTickMs;
    if (elapsed >= m_playDurationMs || elapsed > kLongestPlayMs) {
        stopTimer(m_playTimer);
        m_playing = false;
        m_playTicks = 0;
        ShowWindow(0);
        if (m_player)
            m_player->stop();
    }
    update();
}

void CPhonomarkTagUIDlg::OnPlayPause() {
    if (m_playing)
        m_paused = !m_paused;
}

void CPhonomarkTagUIDlg::OnPlayStop() {
    if (m_playing)
        m_stopRequested = true;
}
