// SPDX-License-Identifier: MIT
#include "merix/ed/select_entities.h"

#include "merix/ed/active_view.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/properties.h"
#include "merix/ed/selection.h"

#include <algorithm>
#include <unordered_set>

namespace merix::ed {

namespace {

using Ids = std::vector<MxDbObjectId>;

struct LastSelection {
    const MxDbDatabase* database = nullptr;
    Ids ids;
};
LastSelection g_last;

bool isVisible(MxDbObjectId id) {
    const auto* object = db::DatabaseImp::peek(id);
    if (!object || !object->data().isEntity || db::traits(static_cast<const MxDbEntity&>(*object)).invisible)
        return false;
    const MxDbLayerTableRecord* layer = layerOf(id);
    return !layer || !(layer->off || layer->isFrozen());
}

bool isInSpace(MxDbObjectId id) {
    const MxDbObject* object = db::DatabaseImp::peek(id);
    return object && object->ownerId() == drawing().currentSpace;
}

/// Those of the current space that show: what is hidden is not worked on unseen.
Ids onlyShown(const Ids& ids) {
    Ids kept;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(kept),
                 [](MxDbObjectId id) { return isInSpace(id) && isVisible(id); });
    return kept;
}

using IdSet = std::unordered_set<const db::ObjectStub*>;

IdSet setOf(const Ids& ids) {
    IdSet set;
    for (const MxDbObjectId id : ids)
        set.insert(id.stub());
    return set;
}

/// One run of the prompt. What it holds is highlighted until it goes.
class Chooser {
public:
    ~Chooser() { set({}); }
    int run(const QString& prompt);
    const Ids& ids() const { return m_ids; }
    const std::optional<MxDbExtents>& crossing() const { return m_crossing; }

private:
    enum class BoxKind { kByDirection, kWindow, kCrossing };
    bool takeKeyword(const QString& keyword);
    void takePoint(const MxGePoint3d& point, bool takesAway);
    void takeBox(const MxGePoint3d& first, BoxKind kind);
    void askBox(BoxKind kind);
    void change(const Ids& ids, bool takeAway);
    void set(const Ids& ids);

    Ids m_ids;
    std::vector<Ids> m_before; ///< the set before each step, for Undo
    bool m_removing = false;
    std::optional<MxDbExtents> m_crossing;
};

void Chooser::set(const Ids& ids) {
    const IdSet before = setOf(m_ids), now = setOf(ids);
    for (const MxDbObjectId id : m_ids)
        if (const Opened<MxDbEntity> entity(id, Mx::kForRead); entity && !now.contains(id.stub()))
            entity->unhighlight();
    for (const MxDbObjectId id : ids)
        if (const Opened<MxDbEntity> entity(id, Mx::kForRead); entity && !before.contains(id.stub()))
            entity->highlight();
    m_ids = ids;
}

void Chooser::change(const Ids& found, bool takeAway) {
    Ids ids = m_ids;
    if (takeAway) {
        std::erase_if(ids, [gone = setOf(found)](MxDbObjectId id) { return gone.contains(id.stub()); });
    } else {
        IdSet known = setOf(ids);
        std::copy_if(found.begin(), found.end(), std::back_inserter(ids),
                     [&](MxDbObjectId id) { return known.insert(id.stub()).second; });
    }
    const auto count = takeAway ? m_ids.size() - ids.size() : ids.size() - m_ids.size();
    m_before.push_back(m_ids);
    set(ids);
    tell(QStringLiteral("%1 %2, %3 in all")
             .arg(count)
             .arg(QLatin1String(takeAway ? "removed" : "found"))
             .arg(ids.size()));
}

void Chooser::takeBox(const MxGePoint3d& first, BoxKind kind) {
    Prompter& prompter = Prompter::instance();
    MxGePoint3d corner;
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getCorner(first, QStringLiteral("Opposite corner: "), corner) != kInputNormal)
        return;
    const bool crossing = kind == BoxKind::kCrossing || (kind == BoxKind::kByDirection && corner.x < first.x);
    MxDbExtents box;
    box.addPoint(first);
    box.addPoint(corner);
    if (crossing)
        m_crossing = box;
    change(onlyShown(activeView() ? activeView()->inBox(box, crossing) : Ids()),
           m_removing || prompter.lastPointTakesAway());
}

void Chooser::askBox(BoxKind kind) {
    Prompter& prompter = Prompter::instance();
    MxGePoint3d first;
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getPoint(nullptr, QStringLiteral("First corner: "), first) == kInputNormal)
        takeBox(first, kind);
}

void Chooser::takePoint(const MxGePoint3d& point, bool takesAway) {
    const MxDbObjectId picked = activeView() ? activeView()->pick(point) : MxDbObjectId();
    if (picked.isNull())
        takeBox(point, BoxKind::kByDirection);
    else
        change({picked}, m_removing || takesAway);
}

/// False when Esc ended a prompt inside.
bool Chooser::takeKeyword(const QString& keyword) {
    if (keyword == QLatin1String("Window")) {
        askBox(BoxKind::kWindow);
    } else if (keyword == QLatin1String("Crossing")) {
        askBox(BoxKind::kCrossing);
    } else if (keyword == QLatin1String("All")) {
        Ids all = entitiesOfSpace();
        std::erase_if(all, [](MxDbObjectId id) { return !isVisible(id); });
        change(all, m_removing);
    } else if (keyword == QLatin1String("Last")) {
        Ids all = entitiesOfSpace();
        std::erase_if(all, [](MxDbObjectId id) { return !isVisible(id); });
        change(all.empty() ? Ids() : Ids{all.back()}, m_removing);
    } else if (keyword == QLatin1String("Previous")) {
        change(g_last.database == &drawing().self() ? onlyShown(g_last.ids) : Ids(), m_removing);
    } else if (keyword == QLatin1String("Undo")) {
        if (m_before.empty()) {
            tell(QStringLiteral("Nothing was selected yet."));
        } else {
            set(m_before.back());
            m_before.pop_back();
        }
    } else {
        m_removing = keyword == QLatin1String("Remove");
    }
    return !Prompter::instance().wasCancelled();
}

int Chooser::run(const QString& prompt) {
    Prompter& prompter = Prompter::instance();
    for (;;) {
        prompter.init(0, QStringLiteral("Window Crossing All Last Previous Add Remove Undo"));
        MxGePoint3d point;
        const int result = prompter.getPick(m_removing ? QStringLiteral("Remove objects: ") : prompt, point);
        if (result == kInputNone)
            return m_ids.empty() ? kInputNone : kInputNormal;
        if (result == kInputNormal)
            takePoint(point, prompter.lastPointTakesAway());
        else if (result != kInputKeyword || !takeKeyword(prompter.lastKeyword()))
            return result == kInputKeyword ? kInputCancel : result;
        if (prompter.wasCancelled())
            return kInputCancel;
    }
}

void leaveOutLocked(Ids& ids) {
    const auto locked = std::erase_if(ids, [](MxDbObjectId id) {
        const MxDbLayerTableRecord* layer = layerOf(id);
        return layer && layer->isLocked();
    });
    if (locked > 0)
        tell(locked == 1 ? QStringLiteral("1 was on a locked layer.")
                         : QStringLiteral("%1 were on a locked layer.").arg(locked));
}

} // namespace

int getSelection(const QString& prompt, Ids& ids) {
    std::optional<MxDbExtents> crossing;
    return getSelection(prompt, ids, crossing);
}

int getSelection(const QString& prompt, Ids& ids, std::optional<MxDbExtents>& crossing) {
    crossing.reset();
    ids = onlyShown(Selection::instance().ids());
    Selection::instance().clear();
    if (!ids.empty()) {
        tell(QStringLiteral("%1 found").arg(ids.size()));
    } else {
        Chooser chooser;
        if (const int result = chooser.run(prompt); result != kInputNormal)
            return result;
        ids = chooser.ids();
        crossing = chooser.crossing();
    }
    g_last = {&drawing().self(), ids};
    return kInputNormal;
}

bool getEditableSelection(Ids& ids) {
    std::optional<MxDbExtents> crossing;
    return getEditableSelection(ids, crossing);
}

bool getEditableSelection(Ids& ids, std::optional<MxDbExtents>& crossing) {
    const int result = getSelection(QStringLiteral("Select objects: "), ids, crossing);
    if (result == kInputNone)
        tell(QStringLiteral("Nothing is selected."));
    if (result != kInputNormal)
        return false;
    leaveOutLocked(ids);
    return !ids.empty();
}

void forgetSelection(const MxDbDatabase* database) {
    if (g_last.database == database)
        g_last = {};
}

} // namespace merix::ed
