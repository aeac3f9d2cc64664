// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/pm_reactor.h"

#include "host/ap/document.h"
#include "host/ed/input.h"
#include "host/ui/windows.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/dbutil/regions.h"
#include "phonomark/dbutil/run_time_class.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/tagwindow/show_tag_window.h"
#include "phonomark/tagwindow/tag_window.h"

MxRxClass* PhonomarkPmReactor::gpDesc = nullptr;

namespace {
/// The window's upper-left corner stands this many pixels above the note's position.
constexpr int kAboveNote = 36;
} // namespace

MxRxClass* PhonomarkPmReactor::rxInit() {
    return registerUnfiledClass<PhonomarkPmReactor>(gpDesc, L"PhonomarkPmReactor", MxEdInputPointMonitor::desc());
}

MxRxObject* PhonomarkPmReactor::makeDefault() {
    return makeOnHostHeap<PhonomarkPmReactor>();
}

PhonomarkPmReactor::PhonomarkPmReactor(MxApDocument* document) {
    attachTo(document);
}

PhonomarkPmReactor::~PhonomarkPmReactor() {
    guarded("the end of a hover monitor", [this] {
        Detach();
        if (g_taguidlg && !g_taguidlg->IsPlaying())
            g_taguidlg->ShowWindow(0);
    });
}

void PhonomarkPmReactor::Attach(MxApDocument* document) {
    Detach();
    attachTo(document);
}

void PhonomarkPmReactor::attachTo(MxApDocument* document) {
    m_document = document;
    if (m_document && m_document->inputPointManager())
        m_document->inputPointManager()->addPointMonitor(this);
}

void PhonomarkPmReactor::Detach() {
    if (m_document && m_document->inputPointManager())
        m_document->inputPointManager()->removePointMonitor(this);
    m_document = nullptr;
}

Mx::ErrorStatus PhonomarkPmReactor::monitorInputPoint(const MxEdInputPoint& input) try {
    if (!input.pointComputed)
        return Mx::eOk;
    const bool playing = g_taguidlg && g_taguidlg->IsPlaying();
    if (input.pickedEntities.empty()) {
        if (playing)
            UpdateTagWindow();
        else
            DestroyTagWindow();
        return Mx::eOk;
    }
    if (playing)
        return Mx::eOk;
    for (const MxDbObjectId& id : input.pickedEntities) {
        if (const Opened<MxDbPhonomark> note(id, Mx::kForRead); note)
            hover(*note, input.rawPoint);
    }
    return Mx::eOk;
} catch (...) {
    return failed("a move of the cursor", Mx::eInvalidInput);
}

namespace {

/// A note over a region or on an object has no point of its own: its marker stands on the corner.
MxGePoint3d placeOf(const MxDbPhonomark& note) {
    const int type = note.getPhonomarkType();
    return type == kRegionNote || type == kObjectNote ? note.extents().maxPoint() : note.position();
}

} // namespace

/// Of several notes under the cursor the last one keeps the window.
void PhonomarkPmReactor::hover(MxDbPhonomark& note, const MxGePoint3d& cursor) {
    MxDbExtents image;
    note.getImageRegion(image);
    if (!PtInRegion(cursor, image) || note.isPlaying() || !RegionInDwgView(image))
        return;
    int x = 0, y = 0;
    if (!mxedCoordFromWorldToPixel(0, placeOf(note), x, y))
        return;
    const QPoint screen = mxuiViewToScreen(QPoint(x, y));
    ShowTagWindow(CPoint{screen.x(), screen.y() - kAboveNote}, &note);
}
