// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object_id.h"
#include "host/ui/dialog.h"
#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"
#include "phonomark/entity/wave_format.h"
#include "phonomark/tagwindow/capture_buffer.h"

#include <QImage>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class MxApDocument;
class MxDbPhonomark;

/// The small window over a note: press and hold records an empty note, a press plays a recorded one, a press into the
/// box in the corner deletes it. It changes the note through the pointer it holds. A note whose drawing has gone counts
/// as erased. Main thread only.
class CPhonomarkTagUIDlg : public CDialog {
public:
    explicit CPhonomarkTagUIDlg(QWidget* parent);
    ~CPhonomarkTagUIDlg() override;

    /// The note that the window serves from now on; its record flag decides what a press does.
    void SetMxDbOwner(MxDbPhonomark* note);
    MxDbPhonomark* GetMxDbOwner() const { return m_owner; }
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
    void OnLButtonUp();
    void OnMouseLeave();

    /// The clock of recordings that begin from now on; null: the recorder's own.
    void useClock(VkAudioRecorder::Clock clock) { m_clock = clock; }
    /// The ids of the timers, -1 while they do not run.
    int recordTimer() const { return m_recordTimer; }
    int playTimer() const { return m_playTimer; }

    /// The recording in hand was stopped because its document lost the focus; the window stays.
    void markDeactivated() { m_deactivated = true; }
    /// The window is being torn down.
    void markAbandoned() { m_abandoned = true; }
    /// The document is about to go, and the window's note with it if it belongs there.
    void forgetDocument(const MxApDocument* document);

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    /// The owner while it can be worked on: not erased, its drawing open.
    MxDbPhonomark* liveOwner() const;
    /// The owner even when it is erased; null when its drawing has gone.
    MxDbPhonomark* presentOwner() const;
    void deleteOwner();
    void showOwnerImage();
    void updateToolTip();
    void recordTick();
    void playTick();
    void resetOwner(MxDbPhonomark& note);
    void keepRecording(MxDbPhonomark& note);
    /// Copies the note's sound for playing; false when there is none, with the note and the document left as they are.
    bool takeSound();
    void riseInCorner();
    void stopTimer(int& timer);

    QImage m_playImage, m_recordImage, m_currentImage;
    std::vector<QImage> m_playingImages;
    std::wstring m_recordedTip, m_emptyTip, m_deleteTip, m_unavailableText, m_playingText, m_recordingText,
        m_tooShortText;
    int m_width = 0, m_height = 0;

    MxDbPhonomark* m_owner = nullptr;
    MxDbObjectId m_ownerId;
    MxApDocument* m_ownerDocument = nullptr; ///< null for a note outside of any drawing

    bool m_hasRecord = false;
    bool m_recording = false;
    bool m_paused = false;
    bool m_stopRequested = false;
    bool m_playing = false;
    bool m_deactivated = false;
    bool m_abandoned = false;
    bool m_hovered = false;
    std::int64_t m_playTicks = 0;
    int m_playDurationMs = 0;
    std::shared_ptr<CaptureBuffer> m_buffer;
    tWAVEFORMATEX m_waveFormat;
    int m_playTimer = -1;
    int m_recordTimer = -1;
    VkAudioRecorder::Clock m_clock = nullptr;
    std::optional<VkAudioRecorder> m_recorder;
    std::optional<VkAudioPlayer> m_player;
};

/// Milliseconds that a note of this duration text ("2.4" and the inch sign) is animated: one second more than its whole
/// seconds.
int playDurationMs(const std::wstring& duration);
