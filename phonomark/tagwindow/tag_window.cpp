// SPDX-License-Identifier: MIT
// What the window shows and how it is pressed.
#include "phonomark/tagwindow/tag_window.h"

#include "host/ui/windows.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/text_conversion.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/tagwindow/delete_box.h"
#include "phonomark/tagwindow/show_tag_window.h"

#include <QMouseEvent>
#include <QPainter>
#include <QTimerEvent>
#include <QWheelEvent>

#include <utility>

namespace {

constexpr int kSide = 36;
constexpr unsigned kDeletedText = 303;
/// The cross of the delete box while the cursor is on it.
const QColor kDeleteGround(0xb3, 0x26, 0x1e);
constexpr double kStrongCross = 2.2;

/// An image in just the pixels that the window's side takes on a screen with `ratio` of them in one of the window's.
QImage resourceImage(const char* name, double ratio) {
    const QString path = QString::fromLatin1(":/MrxPhonomarkRes/MrxPhonomarkRes/") + QString::fromLatin1(name);
    const QImage twice = ratio > 1.0 ? QImage(path + QString::fromLatin1("@2x")) : QImage();
    if (twice.isNull())
        return QImage(path);
    const int side = qRound(kSide * ratio);
    QImage image = twice.scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    image.setDevicePixelRatio(double(side) / kSide);
    return image;
}

} // namespace

CPhonomarkTagUIDlg::CPhonomarkTagUIDlg(QWidget* parent)
    : CDialog(parent) {
    InitializeData();
}

CPhonomarkTagUIDlg::~CPhonomarkTagUIDlg() {
    if (g_taguidlg == this)
        g_taguidlg = nullptr;
    guarded("keeping the take", [this] {
        if (isTaking())
            OnRecStop();
    });
    if (m_player && m_playing)
        m_player->stop();
}

/// The block filed with a note. It describes 8-bit sound although the samples have 16 bits; notes have always carried
/// it so.
void CPhonomarkTagUIDlg::InitializeData() {
    m_waveFormat.wFormatTag = 1;
    m_waveFormat.nChannels = 1;
    m_waveFormat.nSamplesPerSec = 40000;
    m_waveFormat.nAvgBytesPerSec = 40000;
    m_waveFormat.nBlockAlign = 1;
    m_waveFormat.wBitsPerSample = 8;
    m_waveFormat.cbSize = 0;
}

bool CPhonomarkTagUIDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    m_width = kSide;
    m_height = kSide;
    LoadResImages();
    LoadResString();
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true); // the delete box is told from the rest without a button held
    setFixedSize(m_width, m_height);
    updateToolTip();
    if (!m_hasRecord)
        m_buffer = CaptureBuffer::make(VkAudioRecorder::kBufferBytes);
    return true;
}

void CPhonomarkTagUIDlg::LoadResImages() {
    const double ratio = devicePixelRatioF();
    m_playImage = resourceImage("IDB_PNG_TAG_PLAY", ratio);
    m_recordImage = resourceImage("IDB_PNG_TAG_RECD", ratio);
    m_playingImages.clear();
    for (const char* name :
         {"IDB_PNG_TAG_PLAYING_I", "IDB_PNG_TAG_PLAYING_II", "IDB_PNG_TAG_PLAYING_III", "IDB_PNG_TAG_PLAYING_IV"})
        m_playingImages.push_back(resourceImage(name, ratio));
    showOwnerImage();
}

void CPhonomarkTagUIDlg::LoadResString() {
    m_recordedTip = resourceText(251);
    m_emptyTip = resourceText(250);
    m_deleteTip = resourceText(252);
    m_unavailableText = resourceText(255);
    m_playingText = resourceText(254);
    m_recordingText = resourceText(253);
    m_tooShortText = resourceText(278);
}

void CPhonomarkTagUIDlg::SetMxDbOwner(MxDbPhonomark* note) {
    if (isTaking() && note != m_take->note().present())
        OnRecStop();
    m_owner = HeldNote(note);
    SetRecordStatus(note && note->isRecord());
}

void CPhonomarkTagUIDlg::SetRecordStatus(bool hasRecord) {
    m_hasRecord = hasRecord;
    if (!m_playing)
        showOwnerImage();
    updateToolTip();
}

void CPhonomarkTagUIDlg::showOwnerImage() {
    m_currentImage = m_hasRecord ? m_playImage : m_recordImage;
    update();
}

void CPhonomarkTagUIDlg::updateToolTip() {
    std::wstring text = m_overDeleteBox ? m_deleteTip : m_emptyTip;
    if (const MxDbPhonomark* note = m_hasRecord && !m_overDeleteBox ? m_owner.present() : nullptr) {
        CStdStr<wchar_t> speaker, date;
        note->getSpokesman(speaker);
        note->getDatatime(date);
        text = formatText(m_recordedTip, {speaker, date});
    }
    setToolTip(toQString(text));
}

void CPhonomarkTagUIDlg::noteChanged(MxDbObjectId id) {
    const MxDbPhonomark* note = m_owner.id() == id && !isTaking() ? m_owner.live() : nullptr;
    if (!note)
        return;
    if (m_playing && !note->isRecord())
        stopPlaying(); // what is heard was taken back
    SetRecordStatus(note->isRecord());
}

void CPhonomarkTagUIDlg::noteErased(MxDbObjectId id) {
    if (isTaking() && m_take->note().id() == id)
        OnRecStop();
    if (m_owner.id() != id)
        return;
    if (m_playing)
        stopPlaying();
    ShowWindow(0);
}

namespace {

/// The image with a delete box that stands out.
QImage withStrongCross(QImage image) {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kDeleteGround);
    const QRectF box = kDeleteBox;
    painter.drawRoundedRect(box, 2, 2);
    painter.setPen(QPen(Qt::white, kStrongCross, Qt::SolidLine, Qt::RoundCap));
    const QRectF cross = box.adjusted(2, 2, -2, -2);
    painter.drawLine(cross.topLeft(), cross.bottomRight());
    painter.drawLine(cross.topRight(), cross.bottomLeft());
    return image;
}

} // namespace

void CPhonomarkTagUIDlg::paintEvent(QPaintEvent*) {
    QPainter(this).drawImage(0, 0, m_overDeleteBox ? withStrongCross(m_currentImage) : m_currentImage);
}

void CPhonomarkTagUIDlg::enterEvent(QEvent*) {
    m_hovered = true;
}

void CPhonomarkTagUIDlg::leaveEvent(QEvent*) {
    m_lastMove = {-1, -1};
    if (std::exchange(m_overDeleteBox, false))
        update();
    if (!m_playing)
        ShowWindow(0);
}

/// Other buttons are the drawing's below, but for the time of a recording: nothing may disturb that.
void CPhonomarkTagUIDlg::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        event->setAccepted(isTaking());
    else if (isInDeleteBox(qRound(event->localPos().x()), qRound(event->localPos().y())))
        deleteOwner();
    else if (m_hasRecord)
        OnPlayStart();
    else
        OnRecStart();
}

void CPhonomarkTagUIDlg::deleteOwner() {
    ShowWindow(0);
    PhonomarkManager* manager = livePhManager();
    const MxDbPhonomark* note = m_owner.live();
    if (!manager || !m_owner.present())
        return;
    manager->ErasePhonomark(m_owner.id(), nullptr);
    if (note && note->isErased())
        mxuiOfferUndo(resourceText(kDeletedText).c_str());
}

void CPhonomarkTagUIDlg::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        OnLButtonUp();
    else
        event->setAccepted(isTaking());
}

void CPhonomarkTagUIDlg::OnLButtonUp() {
    if (!m_recording)
        return;
    OnRecStop();
    update();
}

void CPhonomarkTagUIDlg::OnCaptureChanged() {
    guarded("the end of a press", [this] {
        if (m_recordTimer != -1)
            OnLButtonUp();
    });
}

void CPhonomarkTagUIDlg::OnMouseLeave() {
    m_hovered = false;
    if (m_recording)
        OnRecStop();
}

void CPhonomarkTagUIDlg::mouseMoveEvent(QMouseEvent* event) {
    event->ignore();
}

void CPhonomarkTagUIDlg::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void CPhonomarkTagUIDlg::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_recordTimer)
        recordTick();
    else if (event->timerId() == m_playTimer)
        playTick();
    else
        CDialog::timerEvent(event);
}

void CPhonomarkTagUIDlg::stopTimer(int& timer) {
    if (timer != -1)
        killTimer(timer);
    timer = -1;
}
