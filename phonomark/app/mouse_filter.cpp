// SPDX-License-Identifier: MIT
#include "phonomark/app/mouse_filter.h"

#include "host/ed/input.h"
#include "phonomark/app/module_state.h"

int filterMouse(tagMSG* message) {
    bEntUpd = !(message->message == kWindowMouseMove && message->wParam == kMouseKeyMiddle);
    return 0;
}

void RegisterFilterWinMsg() {
    mxutPrintText(L"\nCan't register Windows Msg hook - filterMouse\n");
}

void RemoveFilterWinMsg() {}
