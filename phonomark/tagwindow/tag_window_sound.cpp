// SPDX-License-Identifier: MIT
// Recording into the window's note and playing it.
#include "phonomark/tagwindow/tag_window.h"

#include "host/ed/input.h"
#include "host/rx/string_table.h"
#include "host/ui/windows.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <limits>
#include <utility>

namespace {

constexpr int kRecordTickMs = 100;
constexpr int kPlayTickMs = 300;
/// Between two steps of the way to the corner.
constexpr unsigned long kRiseMs = 200;
/// Images I, II and III take part in the animation.
constexpr std::int64_t kAnimatedImages = 3;
constexpr std::int64_t kLongestPlayMs = 29'999;
constexpr unsigned kPlayStartText = 294;
constexpr unsigned kNoSecondTakeText = 300;
constexpr unsigned kLimitText = 301;
constexpr unsigned kDeviceLostText = 302;

} // namespace

int playDurationMs(const std::wstring& duration) {
    // A text that is no number counts as 0 seconds; a drawing may hold any text.
    const long seconds = std::wcstol(duration.substr(0, duration.find(L'.')).c_str(), nullptr, 10);
    constexpr long kMost = std::numeric_limits<int>::max() / 1000 - 1;
    return static_cast<int>(1000 + 1000 * std::clamp(seconds, -kMost, kMost));
}

/// A window that came up over a recorded note has no buffer; one that has played holds a copy of the sound, which a
/// worker may still be reading.
std::shared_ptr<CaptureBuffer> CPhonomarkTagUIDlg::captureBuffer() {
    if (!m_buffer || m_player || m_buffer->capacity() < VkAudioRecorder::kBufferBytes)
        m_buffer = CaptureBuffer::make(VkAudioRecorder::kBufferBytes);
    return m_buffer;
}

void CPhonomarkTagUIDlg::OnRecStart() {
    MxDbPhonomark* note = m_owner.live();
    if (!note)
        return;
    if (m_take && !isTaking()) {
        mxutPrintfById(kNoSecondTakeText);
    } else if (!m_take) {
        m_take.emplace(*note, captureBuffer(), m_clock);
        if (!m_take->start()) {
            mxutPrintText(m_unavailableText.c_str());
            return;
        }
    }
    m_stopRequested = false;
    m_recording = true;
    m_recordTicks = 0;
    stopTimer(m_recordTimer);
    m_recordTimer = startTimer(kRecordTickMs, Qt::CoarseTimer);
}

void CPhonomarkTagUIDlg::recordTick() {
    if (!m_take || m_take->note().id() != m_owner.id())
        return; // of another note there is no time to show
    m_take->showTime();
    mxuiRepairView();
    if (m_take->hasReachedLimit() && m_take->sayOnceLimit())
        mxutPrintfById(kLimitText);
}

void CPhonomarkTagUIDlg::OnRecStop() {
    if (!m_take)
        return;
    stopTimer(m_recordTimer);
    m_take->stop();
    if (m_take->isTooShort() && m_take->sayOnceTooShort())
        mxutPrintText(m_tooShortText.c_str());
    if (!m_take->finish(m_waveFormat) || !m_take->isKept())
        return;
    m_stopRequested = true;
    const MxDbPhonomark* note = m_take->note().present();
    CStdStr<wchar_t> speaker;
    note->getSpokesman(speaker);
    mxutUpdateStringTable(speaker.c_str());
    if (note != m_owner.present())
        return;
    SetRecordStatus(true);
    showOwnerImage(); // in the place of an animation, too
}

void CPhonomarkTagUIDlg::keepTakeSoFar(const MxDbDatabase* database) {
    const MxDbPhonomark* note = isTaking() ? m_take->note().present() : nullptr;
    if (note && note->database() == database)
        m_take->keepSoFar(m_waveFormat);
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
    if (m_player)
        m_player->stop(); // a press on a window that plays begins anew
    m_player.emplace();
    m_saidDeviceLost = false;
    if (!m_buffer || !m_player->play(m_buffer->bytes(), m_buffer->count(), m_buffer))
        mxutPrintText(m_unavailableText.c_str());
    stopTimer(m_playTimer);
    m_playTimer = startTimer(kPlayTickMs, Qt::CoarseTimer);
}

bool CPhonomarkTagUIDlg::takeSound() {
    Opened<MxDbPhonomark> note(m_owner.live() ? m_owner.id() : MxDbObjectId(), Mx::kForRead);
    if (!note) {
        m_buffer = CaptureBuffer::make(1); // nothing to hear
        return true;
    }
    m_buffer.reset();
    if (!note->getAudioData()) {
        note.release();
        return false;
    }
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
    return true;
}

/// The window rises in four steps to its place at the main window's lower right corner. The steps hold up the user
/// interface, so that nothing else is pressed meanwhile.
void CPhonomarkTagUIDlg::riseInCorner() {
    const QRect frame = mxuiMainWindowRect();
    const QPoint corner = mxuiScreenToMainWindow(QPoint(frame.x() + frame.width(), frame.y() + frame.height()));
    for (int step = 1; step <= 4; ++step) {
        m_sleep(kRiseMs);
        move(corner.x() - 48, corner.y() - 9 * step);
        repaint();
    }
}

void CPhonomarkTagUIDlg::playTick() {
    if (m_player && m_player->hasFailed() && !std::exchange(m_saidDeviceLost, true))
        mxutPrintfById(kDeviceLostText);
    ++m_playTicks;
    const std::int64_t index = m_playTicks % kAnimatedImages;
    m_currentImage = index < static_cast<std::int64_t>(m_playingImages.size())
                         ? m_playingImages[static_cast<std::size_t>(index)]
                         : QImage();
    const std::int64_t elapsed = m_playTicks * kPlayTickMs;
    if (elapsed >= m_playDurationMs || elapsed > kLongestPlayMs)
        stopPlaying();
    update();
}

void CPhonomarkTagUIDlg::stopPlaying() {
    stopTimer(m_playTimer);
    m_playing = false;
    m_playTicks = 0;
    ShowWindow(0);
    if (m_player)
        m_player->stop();
}

void CPhonomarkTagUIDlg::OnPlayPause() {
    if (m_playing)
        m_paused = !m_paused;
}

void CPhonomarkTagUIDlg::OnPlayStop() {
    if (m_playing)
        m_stopRequested = true;
}
