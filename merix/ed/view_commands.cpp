// SPDX-License-Identifier: MIT
#include "merix/ed/view_commands.h"

#include "host/db/database.h"
#include "merix/ed/active_view.h"
#include "merix/ed/prompter.h"

namespace merix::ed {

namespace {

/// What was shown before each of the last commands that changed the view.
struct PastView {
    const MxDbDatabase* database;
    MxDbObjectId space;
    ge::ViewTransform transform;
};
constexpr std::size_t kPastViews = 20;
std::vector<PastView> g_past;

void tell(const char* text) {
    Console::instance().print(QLatin1Char('\n') + QLatin1String(text));
}

ActiveView* viewOrTell() {
    if (!activeView())
        tell("There is no drawing view.");
    return activeView();
}

const MxDbDatabase* drawing() {
    return mxdbHostApplicationServices()->workingDatabase();
}

MxDbObjectId space() {
    return drawing() ? drawing()->currentSpaceId() : MxDbObjectId();
}

void show(ActiveView& view, const ge::ViewTransform& transform) {
    if (transform == view.transform())
        return;
    if (g_past.size() == kPastViews)
        g_past.erase(g_past.begin());
    g_past.push_back({drawing(), space(), view.transform()});
    view.setTransform(transform);
}

void showPrevious(ActiveView& view) {
    for (auto past = g_past.rbegin(); past != g_past.rend(); ++past) {
        if (past->database != drawing() || past->space != space())
            continue;
        ge::ViewTransform transform = past->transform;
        transform.width = view.transform().width; // the window may have another size by now
        transform.height = view.transform().height;
        transform.pixelRatio = view.transform().pixelRatio;
        g_past.erase(std::next(past).base());
        view.setTransform(transform);
        return;
    }
    tell("There is no previous view.");
}

void showBox(ActiveView& view, const MxGePoint3d& first, const MxGePoint3d& second) {
    if (first.x == second.x && first.y == second.y) {
        tell("The window has no size.");
        return;
    }
    MxDbExtents box;
    box.addPoint(first);
    box.addPoint(second);
    ge::ViewTransform transform = view.transform();
    transform.fit(box, 0.0);
    show(view, transform);
}

void zoomWindow(ActiveView& view, const MxGePoint3d* start) {
    Prompter& prompter = Prompter::instance();
    MxGePoint3d first = start ? *start : MxGePoint3d(), second;
    if (!start) {
        prompter.init(Prompter::kNotEmpty, {});
        if (prompter.getPoint(nullptr, QStringLiteral("First corner: "), first) != kInputNormal)
            return;
    }
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getCorner(first, QStringLiteral("Opposite corner: "), second) == kInputNormal)
        showBox(view, first, second);
}

void zoomBy(ActiveView& view, double factor) {
    ge::ViewTransform transform = view.transform();
    transform.zoomAbout(transform.width / 2, transform.height / 2, factor);
    show(view, transform);
}

void zoomExtents(ActiveView& view) {
    if (const auto whole = view.showingAll())
        show(view, *whole);
    else
        tell("The drawing shows nothing.");
}

/// `2`, `0.5x`: how many times as large everything is to be.
void zoomFactor(ActiveView& view, QString text) {
    constexpr double kMost = 1.0e6;
    if (text.endsWith(QLatin1Char('x'), Qt::CaseInsensitive))
        text.chop(1);
    bool ok = false;
    const double factor = text.toDouble(&ok);
    if (ok && factor >= 1.0 / kMost && factor <= kMost)
        zoomBy(view, factor);
    else
        tell("A zoom factor is a number above 0, as in 2 or 0.5x.");
}

void zoom() {
    ActiveView* view = viewOrTell();
    if (!view)
        return;
    Prompter& prompter = Prompter::instance();
    prompter.init(Prompter::kAnyText, QStringLiteral("Extents Window Previous In Out"));
    MxGePoint3d corner;
    const int result = prompter.getPoint(
        nullptr, QStringLiteral("Zoom: first corner, factor or [Extents/Window/Previous/In/Out] <Extents>: "), corner);
    const QString choice = prompter.lastKeyword();
    if (result == kInputCancel || result == kInputError)
        return;
    if (result == kInputNormal)
        zoomWindow(*view, &corner);
    else if (result == kInputNone || choice == QLatin1String("Extents"))
        zoomExtents(*view);
    else if (choice == QLatin1String("Window"))
        zoomWindow(*view, nullptr);
    else if (choice == QLatin1String("Previous"))
        showPrevious(*view);
    else if (choice == QLatin1String("In"))
        zoomBy(*view, 2.0);
    else if (choice == QLatin1String("Out"))
        zoomBy(*view, 0.5);
    else
        zoomFactor(*view, choice);
}

void pan() {
    ActiveView* view = viewOrTell();
    if (!view)
        return;
    Prompter& prompter = Prompter::instance();
    MxGePoint3d from, to;
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getPoint(nullptr, QStringLiteral("Base point: "), from) != kInputNormal)
        return;
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getPoint(&from, QStringLiteral("Second point: "), to) != kInputNormal)
        return;
    ge::ViewTransform transform = view->transform();
    transform.center.x -= to.x - from.x;
    transform.center.y -= to.y - from.y;
    show(*view, transform);
}

void regen() {
    if (ActiveView* view = viewOrTell())
        view->regenerate();
}

void redraw() {
    if (ActiveView* view = viewOrTell())
        view->update();
}

} // namespace

void forgetViews(const MxDbDatabase* database) {
    std::erase_if(g_past, [database](const PastView& past) { return past.database == database; });
}

void registerViewCommands(CommandStack& stack) {
    const auto add = [&](const wchar_t* name, MxEdCommandFunction function) {
        stack.addCommand(kHostGroup, name, name, 0, function);
    };
    add(L"ZOOM", zoom);
    add(L"PAN", pan);
    add(L"-PAN", pan);
    add(L"REGEN", regen);
    add(L"REDRAW", redraw);
    stack.addAlias(QStringLiteral("Z"), QStringLiteral("ZOOM"));
    stack.addAlias(QStringLiteral("P"), QStringLiteral("PAN"));
    stack.addAlias(QStringLiteral("RE"), QStringLiteral("REGEN"));
    stack.addAlias(QStringLiteral("R"), QStringLiteral("REDRAW"));
}

} // namespace merix::ed
