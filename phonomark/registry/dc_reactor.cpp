// SPDX-License-Identifier: MIT
#include "phonomark/registry/dc_reactor.h"

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
    if (autoAttach)
        Attach();
}

PhonomarkDcReactor::~PhonomarkDcReactor() {
    Detach();
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

void PhonomarkDcReactor::documentCreated(MxApDocument* document) {
    if (PhonomarkManager* manager = livePhManager())
        manager->ReadVoiceHandle(document);
}

void PhonomarkDcReactor::documentToBeActivated(MxApDocument*) {}

void PhonomarkDcReactor::documentActivated(MxApDocument* document) {
    if (PhonomarkManager* manager = livePhManager())
        manager->UpdateAll(document);
}

void PhonomarkDcReactor::documentToBeDeactivated(MxApDocument*) {
    if (!g_taguidlg)
        return;
    if (g_taguidlg->IsRecording()) {
        g_taguidlg->markDeactivated();
        g_taguidlg->OnRecStop();
    } else if (!g_taguidlg->IsPlaying()) {
        g_taguidlg->ShowWindow(0);
    }
}

void PhonomarkDcReactor::documentToBeDestroyed(MxApDocument* document) {
    if (g_taguidlg && g_taguidlg->IsRecording()) {
        g_taguidlg->markAbandoned();
        g_taguidlg->OnRecStop();
        removeTagWindow();
    }
    if (g_taguidlg)
        g_taguidlg->forgetDocument(document);
    if (PhonomarkManager* manager = livePhManager())
        manager->RemovePhonomark(document);
}
