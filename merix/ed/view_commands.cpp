// SPDX-License-Identifier: MIT
#include "merix/ed/view_commands.h"

#include "merix/ed/active_view.h"
#include "merix/ed/prompter.h"

namespace merix::ed {

namespace {

ActiveView* viewOrTell() {
    if (!activeView())
        Console::instance().print(QStringLiteral("\nThere is no drawing view."));
    return activeView();
}

void zoomWindow(ActiveView& view) {
    Prompter& prompter = Prompter::instance();
    MxGePoint3d first, second;
    if (prompter.getPoint(nullptr, QStringLiteral("First corner: "), first) != kInputNormal ||
        prompter.getPoint(&first, QStringLiteral("Opposite corner: "), second) != kInputNormal)
        return;
    MxDbExtents box;
    box.addPoint(first);
    box.addPoint(second);
    ge::ViewTransform transform = view.transform();
    transform.fit(box, 0.0);
    view.setTransform(transform);
}

void zoomBy(ActiveView& view, double factor) {
    ge::ViewTransform transform = view.transform();
    transform.zoomAbout(transform.width / 2, transform.height / 2, factor);
    view.setTransform(transform);
}

void zoomExtents(ActiveView& view) {
    const MxDbExtents box = view.extents();
    if (box.isEmpty()) {
        Console::instance().print(QStringLiteral("\nThe drawing shows nothing."));
        return;
    }
    ge::ViewTransform transform = view.transform();
    transform.fit(box);
    view.setTransform(transform);
}

void zoom() {
    ActiveView* view = viewOrTell();
    if (!view)
        return;
    Prompter& prompter = Prompter::instance();
    prompter.init(0, QStringLiteral("Extents Window In Out"));
    QString choice = QStringLiteral("Extents");
    const int result = prompter.getKeyword(QStringLiteral("Zoom [Extents/Window/In/Out] <Extents>: "), choice);
    if (result != kInputNormal && result != kInputNone)
        return;
    if (choice == QLatin1String("Window"))
        zoomWindow(*view);
    else if (choice == QLatin1String("In"))
        zoomBy(*view, 2.0);
    else if (choice == QLatin1String("Out"))
        zoomBy(*view, 0.5);
    else
        zoomExtents(*view);
}

void regen() {
    if (ActiveView* view = viewOrTell())
        view->regenerate();
}

} // namespace

void registerViewCommands(CommandStack& stack) {
    stack.addCommand(kHostGroup, L"ZOOM", L"ZOOM", 0, zoom);
    stack.addCommand(kHostGroup, L"REGEN", L"REGEN", 0, regen);
}

} // namespace merix::ed
