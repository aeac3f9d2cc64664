// SPDX-License-Identifier: MIT
// CPhonomarkTagUIDlg, the small window over a note. What it shows and how it is pressed: tag_window.cpp; messages of
// the host: tag_window_messages.cpp; recording and playing: tag_window_sound.cpp.
#pragma once

#include "host/ui/dialog.h"
#include "phonomark/audio/player.h"
#include "phonomark/entity/wave_format.h"
#include "phonomark/tagwindow/voice_take.h"

#include <QImage>
#include <QThread>

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Press and hold records an empty note, a press plays a recorded one, a press into the box in the corner deletes it.
/// The note is changed through the pointer that the window holds. A note whose drawing has gone counts as erased. Main
/// thread only.
class CPhonomarkTagUIDlg : public CDialog {
public:
    explicit CPhonomarkTagUIDlg(QWidget* parent);
    /// A recording under way ends and is kept; audio workers are asked to end and not waited for.
    ~CPhonomarkTagUIDlg() override;

    /// The note that the window serves from now on; its record flag decides what a press does. A recording under way
    /// for another one ends.
    void SetMxDbOwner(MxDbPhonomark* note);
    MxDbPhonomark* GetMxDbOwner() const { return m_owner.present(); }
    void SetRecordStatus(bool hasRecord);
    bool GetRecordStatus() const { return m_hasRecord; }
    bool IsPlaying() const { return m_playing; }
    /// True from the first recording to the end of the window's life.
    bool IsRecording() const { return m_recording; }

    void OnRecStart();
    void OnRecStop();
    void OnRecAbort() { m_stopRequested = true; }
    void OnPlayStart();
    void OnPlayPause();
    void OnPlayStop();

    void LoadResImages();
    void LoadResString();
    void InitializeData();
    bool OnInitDialog() override;
    void DoDataExchange(CDataExchange* exchange) override;
    bool PreTranslateMessage(tagMSG* message) override;
    /// 1: a tenth of a second of recording; 2: a step of the animation.
    void OnTimer(unsigned id) override;
    void OnDestroy() override;
    void OnClose() override;
    void OnPaint() override;
    void OnLButtonUp();
    void OnMouseLeave() override;
    /// A recording under way ends as by the release of the button.
    void OnCaptureChanged() override;

    /// The clock of recordings that begin from now on; null: the recorder's own.
    void useClock(VkAudioRecorder::Clock clock) { m_clock = clock; }
    /// How the window waits where it holds up the user interface.
    using Sleep = void (*)(unsigned long ms);
    void useSleep(Sleep sleep) { m_sleep = sleep; }
    /// The ids of the timers, -1 while they do not run.
    int recordTimer() const { return m_recordTimer; }
    int playTimer() const { return m_playTimer; }

    /// The recording in hand was stopped because its document lost the focus; the window stays.
    void markDeactivated() { m_deactivated = true; }
    /// The window is being torn down.
    void markAbandoned() { m_abandoned = true; }
    /// A drawing is about to be written: what has been said so far for one of its notes is put into the note.
    void keepTakeSoFar(const MxDbDatabase* database);
    /// Undo, redo or somebody else changed the note `id`, which may be the window's.
    void noteChanged(MxDbObjectId id);
    /// The note `id` was erased: what is recorded for it ends, the window goes if it was its own.
    void noteErased(MxDbObjectId id);

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    /// Nothing that a handler throws reaches Qt.
    bool event(QEvent* event) override;

private:
    void deleteOwner();
    void showOwnerImage();
    void updateToolTip();
    bool isTaking() const { return m_take && m_take->isRunning(); }
    void pointAt(const tagMSG& message);
    std::shared_ptr<CaptureBuffer> captureBuffer();
    void recordTick();
    void playTick();
    /// Copies the note's sound for playing; false when there is none, with the note and the document left as they are.
    bool takeSound();
    void riseInCorner();
    void stopPlaying();
    void stopTimer(int& timer);

    QImage m_playImage, m_recordImage, m_currentImage;
    std::vector<QImage> m_playingImages;
    std::wstring m_recordedTip, m_emptyTip, m_deleteTip, m_unavailableText, m_playingText, m_recordingText,
        m_tooShortText;
    int m_width = 0, m_height = 0;

    HeldNote m_owner;
    bool m_hasRecord = false;
    bool m_recording = false;
    bool m_paused = false;
    bool m_stopRequested = false;
    bool m_endRequested = false;
    bool m_playing = false;
    bool m_deactivated = false;
    bool m_abandoned = false;
    bool m_hovered = false;
    bool m_overDeleteBox = false;
    bool m_saidDeviceLost = false; ///< of the sound that is played
    QPoint m_lastMove{-1, -1};     ///< where the mouse was said to be last
    std::int64_t m_playTicks = 0;
    int m_recordTicks = 0;
    int m_playDurationMs = 0;
    std::shared_ptr<CaptureBuffer> m_buffer;
    tWAVEFORMATEX m_waveFormat;
    int m_playTimer = -1;
    int m_recordTimer = -1;
    VkAudioRecorder::Clock m_clock = nullptr;
    Sleep m_sleep = &QThread::msleep;
    std::optional<VoiceTake> m_take; ///< from the first press to record on: there is one in a window's life
    std::optional<VkAudioPlayer> m_player;
};

/// Milliseconds that a note of this duration text ("2.4" and the inch sign) is animated: one second more than its whole
/// seconds.
int playDurationMs(const std::wstring& duration);
/// The duration text of a number of tenths of a second, within a minute: "5.9" and the inch sign for 59 and 659.
std::wstring durationOfTenths(int tenths);
