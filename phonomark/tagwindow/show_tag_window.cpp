// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/show_tag_window.h"

#include "host/ui/windows.h"
#include "phonomark/app/module_resources.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/tagwindow/tag_window.h"

CPhonomarkTagUIDlg* g_taguidlg = nullptr;

namespace {

constexpr unsigned kTagTemplate = 205;

void place(CPoint point) {
    const double scale = 1.0 / mxuiDevicePixelRatio();
    const QPoint pixels = mxuiScreenToMainWindowPixels(QPoint(point.x, point.y));
    g_taguidlg->move(qRound(pixels.x() * scale), qRound(pixels.y() * scale));
}

} // namespace

void ShowTagWindow(CPoint point, MxDbPhonomark* note) {
    if (MxDbPhonomark::IsDraging())
        return;
    if (g_taguidlg && g_taguidlg->IsDestroyed())
        removeTagWindow();
    if (g_taguidlg) {
        g_taguidlg->move(point.x, point.y);
        g_taguidlg->SetMxDbOwner(note);
        g_taguidlg->SetRecordStatus(note->isRecord());
        g_taguidlg->setVisible(true);
        place(point);
        return;
    }
    const ModuleResources resources;
    g_taguidlg = new CPhonomarkTagUIDlg(mxuiMainWindow());
    g_taguidlg->SetMxDbOwner(note);
    g_taguidlg->SetRecordStatus(note->isRecord());
    g_taguidlg->Create(kTagTemplate, nullptr);
    g_taguidlg->setWindowFlags(Qt::FramelessWindowHint);
    g_taguidlg->ShowWindow(1);
    place(point);
    g_taguidlg->setCursor(Qt::ArrowCursor);
}

void DestroyTagWindow() {
    if (g_taguidlg && !g_taguidlg->IsPlaying())
        removeTagWindow();
}

void UpdateTagWindow() {}

void AbortPlayingAndDestroyWnd() {
    if (!g_taguidlg || !g_taguidlg->IsPlaying())
        return;
    g_taguidlg->markAbandoned();
    g_taguidlg->OnPlayStop();
    removeTagWindow();
}

void removeTagWindow() {
    CPhonomarkTagUIDlg* window = g_taguidlg;
    g_taguidlg = nullptr;
    delete window;
}

void stopRecordingInTagWindow() {
    if (g_taguidlg && g_taguidlg->recordTimer() != -1)
        g_taguidlg->OnLButtonUp();
}

void keepTakeOfTagWindow(const MxDbDatabase* database) {
    if (g_taguidlg)
        g_taguidlg->keepTakeSoFar(database);
}

void forgetDocumentInTagWindow(const MxApDocument* document) {
    HeldNote::forgetDocument(document);
    if (g_taguidlg && !g_taguidlg->GetMxDbOwner())
        g_taguidlg->SetMxDbOwner(nullptr); // what it shows was that note's
}

void noteChangedUnderTagWindow(MxDbObjectId id) {
    if (g_taguidlg)
        g_taguidlg->noteChanged(id);
}

void noteErasedUnderTagWindow(MxDbObjectId id) {
    if (g_taguidlg)
        g_taguidlg->noteErased(id);
}
