// SPDX-License-Identifier: MIT
#include "phonomark/registry/dc_reactor.h"

#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/run_time_class.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/tagwindow/show_tag_window.h"
#include "phonomark/tagwindow/tag_window.h"

MxRxClass* PhonomarkDcReactor::gpDesc = nullptr;

PhonomarkDcReactor g_dcReactor(true);

MxRxClass* PhonomarkDcReactor::rxInit() {
    return registerUnfiledClass<PhonomarkDcReactor>(gpDesc, L"PhonomarkDcReactor", MxApDocManagerReactor::desc());
}

MxRxObject* PhonomarkDcReactor::makeDefault() {
    return makeOnHostHeap<PhonomarkDcReactor>();
}

PhonomarkDcReactor::PhonomarkDcReactor(bool autoAttach) {
    if (autoAttach) // thrown while the module is mapped it would end the process
        guarded("attaching to the documents", [this] { Attach(); });
}

PhonomarkDcReactor::~PhonomarkDcReactor() {
    guarded("detaching from the documents", [this] { Detach(); });
}

MxApDocManager* PhonomarkDcReactor::Subject() const {
    return mxDocManagerPtr();
}

bool PhonomarkDcReactor::Attach() {
    Detach();
    MxApDocManager* manager = Subject();
    if (!m_attached && manager) {
        manager->addReactor(this);
        m_attached = true;
    }
    return m_attached;
}

void PhonomarkDcReactor::Detach() {
    MxApDocManager* manager = Subject();
    if (!m_attached || !manager)
        return;
    manager->removeReactor(this);
    m_attached = false;
}

void PhonomarkDcReactor::documentCreated(MxApDocument* document) try {
    if (PhonomarkManager* manager = livePhManager())
        manager->ReadVoiceHandle(document);
} catch (...) {
    reportFailure("a drawing's coming");
}

void PhonomarkDcReactor::documentToBeActivated(MxApDocument*) {}

void PhonomarkDcReactor::documentActivated(MxApDocument* document) try {
    if (PhonomarkManager* manager = livePhManager())
        manager->UpdateAll(document);
} catch (...) {
    reportFailure("a drawing's activation");
}

void PhonomarkDcReactor::documentToBeDeactivated(MxApDocument*) try {
    if (!g_taguidlg)
        return;
    if (g_taguidlg->IsRecording()) {
        g_taguidlg->markDeactivated();
        g_taguidlg->OnRecStop();
    } else if (!g_taguidlg->IsPlaying()) {
        g_taguidlg->ShowWindow(0);
    }
} catch (...) {
    reportFailure("a drawing's deactivation");
}

void PhonomarkDcReactor::documentToBeDestroyed(MxApDocument* document) try {
    if (g_taguidlg && g_taguidlg->IsRecording()) {
        g_taguidlg->markAbandoned();
        g_taguidlg->OnRecStop();
        removeTagWindow();
    }
    forgetDocumentInTagWindow(document);
    if (PhonomarkManager* manager = livePhManager())
        manager->RemovePhonomark(document);
} catch (...) {
    reportFailure("a drawing's end");
}
