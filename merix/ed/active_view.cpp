// SPDX-License-Identifier: MIT
#include "merix/ed/active_view.h"

namespace merix::ed {

namespace {
ActiveView* g_view = nullptr;
}

ActiveView* activeView() {
    return g_view;
}

void setActiveView(ActiveView* view) {
    g_view = view;
}

} // namespace merix::ed
