// SPDX-License-Identifier: MIT
// The window's messages. What they do to the mouse's work is what Qt's handlers would do: a message that was dealt with
// here is not seen there.
#include "phonomark/tagwindow/tag_window.h"

#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/tagwindow/delete_box.h"

#include <utility>

namespace {

constexpr unsigned kRecordTimerId = 1;
constexpr unsigned kPlayTimerId = 2;
constexpr unsigned kOnTimerText = 295;
/// Tenths of a second in a minute, at which the duration text begins anew.
constexpr int kTenthsShown = 600;
/// What a worker is given to see that it has to end when the window is destroyed.
constexpr unsigned long kEndWaitMs = 500;

} // namespace

std::wstring durationOfTenths(int tenths) {
    const int shown = tenths % kTenthsShown;
    return std::to_wstring(shown / 10) + L'.' + std::to_wstring(shown % 10) + L'"';
}

bool CPhonomarkTagUIDlg::event(QEvent* event) try { return CDialog::event(event); } catch (...) {
    return failed("an event of the tag window", true);
}

bool CPhonomarkTagUIDlg::PreTranslateMessage(tagMSG* message) try {
    if (message->message == kWindowKeyDown && message->wParam == kKeyEscape && m_playing) {
        stopPlaying();
        return true;
    }
    if (m_playing)
        return CDialog::PreTranslateMessage(message);
    switch (message->message) {
    case kWindowLeftDown:
        if (!isInDeleteBox(mouseX(*message), mouseY(*message)))
            return false;
        deleteOwner();
        return true;
    case kWindowLeftUp:
        OnLButtonUp();
        return true;
    case kWindowMouseMove:
        pointAt(*message);
        return false;
    default:
        return CDialog::PreTranslateMessage(message);
    }
} catch (...) {
    return failed("a message of the tag window", true);
}

void CPhonomarkTagUIDlg::pointAt(const tagMSG& message) {
    const QPoint at(mouseX(message), mouseY(message));
    if (std::exchange(m_lastMove, at) == at)
        return;
    const bool over = isInDeleteBox(at.x(), at.y());
    if (std::exchange(m_overDeleteBox, over) != over)
        update();
    updateToolTip();
}

void CPhonomarkTagUIDlg::OnTimer(unsigned id) {
    if (id == kPlayTimerId && m_playing)
        playTick();
    if (id != kRecordTimerId)
        return;
    ++m_recordTicks;
    const DocumentLock lock(currentDocument(), L"PhonomarkOnTimer", kOnTimerText);
    if (!lock.isHeld() || !m_owner.live())
        return;
    if (const Opened<MxDbPhonomark> note(m_owner.id(), Mx::kForWrite); note) {
        note->setDuration(durationOfTenths(m_recordTicks));
        note->recordGraphicsModified(true);
    }
}

void CPhonomarkTagUIDlg::OnDestroy() {
    CDialog::OnDestroy();
    CDialog::OnClose();
    guarded("keeping the take", [this] {
        if (isTaking())
            OnRecStop();
    });
    const auto waitForEnd = [this] {
        m_stopRequested = true;
        m_endRequested = true;
        m_sleep(kEndWaitMs);
    };
    if (m_recording)
        waitForEnd();
    if (m_playing)
        waitForEnd();
}

void CPhonomarkTagUIDlg::OnClose() {
    CDialog::OnClose();
}

void CPhonomarkTagUIDlg::DoDataExchange(CDataExchange*) {}

void CPhonomarkTagUIDlg::OnPaint() {}
