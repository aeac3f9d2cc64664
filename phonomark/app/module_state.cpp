// SPDX-License-Identifier: MIT
#include "phonomark/app/module_state.h"

void* _hdllInstance = nullptr;
PhonomarkEdReactor* g_editorrect = nullptr;
bool g_bPhonomarkShow = true;
bool bEntUpd = true;

bool IsShowPhonomark() {
    return g_bPhonomarkShow;
}

void SetPhonomarkVar(bool show) {
    g_bPhonomarkShow = show;
}
