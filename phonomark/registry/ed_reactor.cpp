// SPDX-License-Identifier: MIT
#include "phonomark/registry/ed_reactor.h"

#include "host/rx/registry.h"
#include "phonomark/app/module_state.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/run_time_class.h"
#include "phonomark/dbutil/text_conversion.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/tagwindow/show_tag_window.h"

#include <QFileInfo>

MxRxClass* PhonomarkEdReactor::gpDesc = nullptr;

namespace {

void updateCurrentDocument() {
    if (PhonomarkManager* manager = livePhManager())
        manager->UpdateAll(currentDocument());
}

} // namespace

MxRxClass* PhonomarkEdReactor::rxInit() {
    return registerUnfiledClass<PhonomarkEdReactor>(gpDesc, L"PhonomarkEdReactor", MxEditorReactor::desc());
}

MxRxObject* PhonomarkEdReactor::makeDefault() {
    return makeOnHostHeap<PhonomarkEdReactor>();
}

PhonomarkEdReactor::PhonomarkEdReactor(bool autoAttach) {
    if (autoAttach)
        Attach();
}

PhonomarkEdReactor::~PhonomarkEdReactor() {
    guarded("detaching from the editor", [this] { Detach(); });
}

MxEditor* PhonomarkEdReactor::Subject() const {
    MxRxObject* object = mxrxSysRegistry()->at(L"MxEditor");
    return object && object->isKindOf(MxEditor::desc()) ? static_cast<MxEditor*>(object) : nullptr;
}

bool PhonomarkEdReactor::Attach() {
    Detach();
    MxEditor* editor = Subject();
    if (!m_attached && editor) {
        editor->addReactor(this);
        m_attached = true;
    }
    return m_attached;
}

void PhonomarkEdReactor::Detach() {
    MxEditor* editor = m_attached ? Subject() : nullptr;
    if (!editor)
        return;
    editor->removeReactor(this);
    m_attached = false;
}

void PhonomarkEdReactor::beginSave(MxDbDatabase* database, const wchar_t* fileName) try {
    keepTakeOfTagWindow(database);
    // A suffix never carries the dot, so every save writes the list, the host's automatic saves included.
    const QString suffix = QFileInfo(toQString(fileName ? fileName : L"")).suffix().toUpper();
    if (suffix == QLatin1String(".PH$") || suffix == QLatin1String(".MS$"))
        return;
    if (PhonomarkManager* manager = livePhManager())
        manager->SaveVoiceHandle(database);
} catch (...) {
    reportFailure("a drawing's save");
}

void PhonomarkEdReactor::commandWillStart(const wchar_t* command) {
    if (IsSeriesOfDragcmds(command))
        MxDbPhonomark::SetIsDraging(true);
}

void PhonomarkEdReactor::commandOver(const wchar_t* command) {
    if (IsSeriesOfDragcmds(command))
        MxDbPhonomark::SetIsDraging(false);
}

void PhonomarkEdReactor::commandEnded(const wchar_t* command) {
    commandOver(command);
}

void PhonomarkEdReactor::commandCancelled(const wchar_t* command) {
    commandOver(command);
}

void PhonomarkEdReactor::commandFailed(const wchar_t* command) {
    commandOver(command);
}

void PhonomarkEdReactor::layoutSwitched(const wchar_t*) try { updateCurrentDocument(); } catch (...) {
    reportFailure("a change of the layout");
}

void PhonomarkEdReactor::viewChanged() try {
    if (bEntUpd && IsShowPhonomark())
        updateCurrentDocument();
} catch (...) {
    reportFailure("a change of the view");
}
