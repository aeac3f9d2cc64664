// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/play_sound.h"

#include "host/db/filer.h"
#include "host/ui/dialog.h"
#include "phonomark/audio/wave_out.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/tagwindow/held_note.h"
#include "phonomark/tagwindow/tag_window.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned kPlaySndText = 293;
constexpr unsigned kPlaySndAfterText = 299;

template <class Work> void onMainThread(const Work& work) {
    if (!qApp || QThread::currentThread() == qApp->thread())
        work();
    else
        QMetaObject::invokeMethod(qApp, work, Qt::BlockingQueuedConnection);
}

/// A note's sound in a buffer of the host.
struct HostCopy {
    HostCopy() = default;
    ~HostCopy() { mxutDelBuffer(buffer); }
    HostCopy(const HostCopy&) = delete;
    HostCopy& operator=(const HostCopy&) = delete;

    const char* bytes() const { return reinterpret_cast<const char*>(buffer); }

    wchar_t* buffer = nullptr;
    std::uint32_t size = 0;
};

struct Playing {
    HeldNote note;
    HostCopy copy;
    int durationMs = 0;
    bool begun = false;
};

void mark(MxDbPhonomark& note, bool playing) {
    note.setPlaying(playing);
    note.recordGraphicsModified(true);
}

void begin(Playing& playing, MxDbPhonomark* given) {
    playing.note = HeldNote(given);
    const DocumentLock lock(currentDocument(), L"PlaySnd", kPlaySndText);
    if (!lock.isHeld())
        return;
    const Opened<MxDbPhonomark> note(playing.note.id(), Mx::kForWrite);
    if (!note)
        return;
    note->doUnhighlight();
    if (note->getAudioData() && mxutNewBuffer(playing.copy.buffer, note->getAudioDataSize())) {
        playing.copy.size = note->getAudioDataSize();
        std::memcpy(playing.copy.buffer, note->getAudioData(), playing.copy.size);
    }
    CStdStr<wchar_t> duration;
    note->getDuration(duration);
    playing.durationMs = playDurationMs(duration);
    mark(*note, true);
    playing.begun = true;
}

void end(const Playing& playing) {
    if (!playing.note.present())
        return;
    const DocumentLock lock(currentDocument(), L"PlaySndAfter", kPlaySndAfterText);
    if (const Opened<MxDbPhonomark> note(playing.note.id(), Mx::kForWrite); note)
        mark(*note, false);
    else
        playing.note.present()->setPlaying(false); // erased or held by another: it has fallen silent all the same
}

} // namespace

void* PlaySndFunc(void* note) {
    if (!note)
        return nullptr;
    Playing playing;
    onMainThread(
        [&] { guarded("beginning to play a note", [&] { begin(playing, static_cast<MxDbPhonomark*>(note)); }); });
    if (!playing.begun)
        return nullptr;
    playSnd(playing.copy.bytes(), playing.copy.size);
    QThread::msleep(static_cast<unsigned long>(std::max(playing.durationMs, 0)));
    mxutDelBuffer(playing.copy.buffer);
    onMainThread([&] { guarded("ending to play a note", [&] { end(playing); }); });
    return nullptr;
}

void* PlaySndFuncEx(void* context) {
    const auto* play = static_cast<const tPlaySndContext*>(context);
    if (!play || !play->text)
        return nullptr;
    playSnd(play->text, static_cast<std::uint32_t>(std::strlen(play->text)));
    QThread::msleep(play->delayMs);
    CWnd::PostMessage(play->window, kSoundPlayedMessage);
    return nullptr;
}
