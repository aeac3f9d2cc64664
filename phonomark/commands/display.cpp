// SPDX-License-Identifier: MIT
// "VOICESHOW" and "VOICEMAN".
#include "phonomark/commands/command_group.h"

#include "phonomark/app/module_resources.h"
#include "phonomark/app/module_state.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/dialogs/manager_dialog.h"
#include "phonomark/registry/phonomark_manager.h"

namespace {
constexpr unsigned kShownText = 270;
constexpr unsigned kHiddenText = 277;
} // namespace

void PhonomarkCmdGroup::cmdDisplayPhonomark() {
    PhonomarkManager* manager = livePhManager();
    if (!manager)
        return;
    MxApDocument* document = currentDocument();
    const bool show = !IsShowPhonomark();
    manager->ShowAllObjects(show, document);
    SetPhonomarkVar(show);
    mxutPrintfById(show ? kShownText : kHiddenText);
    manager->UpdateAll(document);
}

void PhonomarkCmdGroup::cmdPhonomarkManager() {
    const ModuleResources resources;
    CPhonomarkManDlg dialog(nullptr);
    dialog.DoModal();
}
