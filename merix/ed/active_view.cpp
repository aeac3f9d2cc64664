// SPDX-License-Identifier: MIT
#include "merix/ed/active_view.h"

#include <utility>

namespace merix::ed {

namespace {
ActiveView* g_view = nullptr;
const ge::ViewTransform* g_graphicsFor = nullptr;
} // namespace

MxDbObjectId ActiveView::pick(const MxGePoint3d& world) {
    const std::vector<MxDbObjectId> found = under(world);
    return found.empty() ? MxDbObjectId() : found.front();
}

ActiveView* activeView() {
    return g_view;
}

void setActiveView(ActiveView* view) {
    g_view = view;
}

GraphicsFor::GraphicsFor(const ge::ViewTransform& transform)
    : m_before(std::exchange(g_graphicsFor, &transform)) {}

GraphicsFor::~GraphicsFor() {
    g_graphicsFor = m_before;
}

const ge::ViewTransform* viewport() {
    return g_graphicsFor ? g_graphicsFor : g_view ? &g_view->transform() : nullptr;
}

} // namespace merix::ed
