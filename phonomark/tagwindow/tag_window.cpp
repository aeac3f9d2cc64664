// SPDX-License-Identifier: MIT
// The window itself: what it shows and how it is pressed. Recording and playing: tag_window_sound.cpp.
#include "phonomark/tagwindow/tag_window.h"

#include "host/ap/document.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/text_conversion.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/tagwindow/show_tag_window.h"

#include <QMouseEvent>
#include <QPainter>
#include <QTimerEvent>
#include <QWheelEvent>

#include <cmath>

namespace {

constexpr int kSide = 36;
/// The delete box, right and bottom edge exclusive.
constexpr int kDeleteLeft = 26, kDeleteTop = 0, kDeleteRight = 35, kDeleteBottom = 9;

bool inDeleteBox(const QPointF& at) {
    const int x = qRound(at.x()), y = qRound(at.y());
    return kDeleteLeft <= x && x < kDeleteRight && kDeleteTop <= y && y < kDeleteBottom;
}

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
    // Workers hold what they use; they are asked to end and not waited for.
    if (m_recorder && m_recordTimer != -1)
        m_recorder->stop();
    if (m_player && m_playing)
        m_player->stop();
    if (g_taguidlg == this)
        g_taguidlg = nullptr;
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
    m_owner = note;
    m_ownerId = note ? note->objectId() : MxDbObjectId();
    const MxApDocManager* manager = mxDocManagerPtr();
    m_ownerDocument = note && manager && note->database() ? manager->document(note->database()) : nullptr;
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
    std::wstring text = m_emptyTip;
    if (const MxDbPhonomark* note = m_hasRecord ? presentOwner() : nullptr) {
        CStdStr<wchar_t> speaker, date;
        note->getSpokesman(speaker);
        note->getDatatime(date);
        text = formatText(m_recordedTip, {speaker, date});
    }
    setToolTip(toQString(text));
}

MxDbPhonomark* CPhonomarkTagUIDlg::presentOwner() const {
    return m_owner && (!m_ownerDocument || IsValidDocument(m_ownerDocument)) ? m_owner : nullptr;
}

MxDbPhonomark* CPhonomarkTagUIDlg::liveOwner() const {
    MxDbPhonomark* note = presentOwner();
    return note && !note->isErased() ? note : nullptr;
}

void CPhonomarkTagUIDlg::forgetDocument(const MxApDocument* document) {
    if (m_ownerDocument && m_ownerDocument == document)
        SetMxDbOwner(nullptr);
}

void CPhonomarkTagUIDlg::paintEvent(QPaintEvent*) {
    QPainter(this).drawImage(0, 0, m_currentImage);
}

void CPhonomarkTagUIDlg::enterEvent(QEvent*) {
    m_hovered = true;
}

void CPhonomarkTagUIDlg::leaveEvent(QEvent*) {
    if (!m_playing)
        ShowWindow(0);
}

void CPhonomarkTagUIDlg::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    if (inDeleteBox(event->localPos()))
        deleteOwner();
    else if (m_hasRecord)
        OnPlayStart();
    else
        OnRecStart();
}

void CPhonomarkTagUIDlg::deleteOwner() {
    ShowWindow(0);
    PhonomarkManager* manager = livePhManager();
    if (manager && presentOwner())
        manager->ErasePhonomark(m_ownerId, nullptr);
}

void CPhonomarkTagUIDlg::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        OnLButtonUp();
}

void CPhonomarkTagUIDlg::OnLButtonUp() {
    if (!m_recording)
        return;
    OnRecStop();
    update();
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
