// SPDX-License-Identifier: MIT
#include "merix/ui/grip_drag.h"

#include "merix/db/access.h"
#include "merix/db/tables.h"
#include "merix/ed/copy_entities.h"
#include "merix/ed/editor.h"
#include "merix/ed/reactor_list.h"
#include "merix/ed/selection.h"
#include "merix/ed/transform_commands.h"
#include "merix/ed/typed_point.h"
#include "merix/gi/list_painter.h"

#include <algorithm>
#include <cmath>

namespace merix::ui {

namespace {

void tell(const QString& text) {
    ed::Console::instance().print(QLatin1Char('\n') + text);
}

MxDbEntity* entityOf(MxDbObjectId id) {
    MxDbObject* object = db::DatabaseImp::peek(id);
    return object && object->isKindOf(MxDbEntity::desc()) ? static_cast<MxDbEntity*>(object) : nullptr;
}

const db::LayerRecord* lockedLayerOf(MxDbObjectId id) {
    const MxDbEntity* entity = entityOf(id);
    const MxDbObject* layer = entity ? db::DatabaseImp::peek(entity->layerId()) : nullptr;
    if (!layer || !layer->isKindOf(db::LayerRecord::desc()))
        return nullptr;
    const auto* record = static_cast<const db::LayerRecord*>(layer);
    return record->isLocked() ? record : nullptr;
}

bool isOfModule(const MxDbEntity& entity) {
    const wchar_t* application = entity.isA()->appName();
    return application && *application;
}

} // namespace

bool GripDrag::mayBegin(const std::vector<Grip>& grips) {
    for (const Grip& grip : grips)
        if (const db::LayerRecord* layer = lockedLayerOf(grip.id)) {
            tell(QStringLiteral("The layer %1 is locked: what is on it cannot be changed.")
                     .arg(QString::fromStdWString(layer->name)));
            return false;
        }
    return !grips.empty();
}

GripDrag::GripDrag(ap::Document& document, std::vector<Grip> grips, const MxGePoint3d& base)
    : m_document(document)
    , m_builder(document.database()->imp())
    , m_base(base)
    , m_at(base) {
    for (const Grip& grip : grips)
        if (Moved* moved = add(grip.id))
            moved->indices.push_back(grip.index);
    begin();
}

GripDrag::~GripDrag() {
    if (!m_finished)
        ed::Editor::instance().notifyCommandCancelled(commandOf(m_mode));
    auto& console = ed::Console::instance();
    if (console.prompt() == m_prompt) // else something else asks already
        console.setPrompt(QString(), {});
}

void GripDrag::begin() {
    ed::Editor::instance().notifyCommandWillStart(commandOf(m_mode));
    ask();
}

void GripDrag::ask() {
    auto& console = ed::Console::instance();
    m_prompt = m_asksBase ? QStringLiteral("Base point: ") : promptOf(m_mode, m_copies);
    console.setPrompt(m_prompt, m_asksBase ? std::vector<ed::Keyword>() : ed::parseKeywords(optionsOf(m_mode)));
}

void GripDrag::setMode(GripMode mode) {
    if (mode == m_mode)
        return;
    ed::Editor::instance().notifyCommandCancelled(commandOf(m_mode));
    m_mode = mode;
    m_copies = m_copies && mode != GripMode::kStretch;
    if (mode != GripMode::kStretch)
        for (const MxDbObjectId id : ed::Selection::instance().ids())
            add(id);
    begin();
    preview();
}

bool GripDrag::takeOption(const QString& typed) {
    if (m_asksBase && !typed.isEmpty())
        return false;
    const QString option = optionNamed(typed);
    if (m_asksBase)
        m_asksBase = false; // Enter keeps the base
    else if (typed.isEmpty())
        setMode(nextMode(m_mode));
    else if (const auto mode = modeNamed(option))
        setMode(*mode);
    else if (option == QLatin1String("Base"))
        m_asksBase = true;
    else if (option == QLatin1String("Copy") && m_mode != GripMode::kStretch)
        m_copies = true;
    else
        return false;
    ask();
    return true;
}

bool GripDrag::put(const MxGePoint3d& point) {
    if (!std::exchange(m_asksBase, false)) {
        moveTo(point);
        return true;
    }
    m_base = m_at = point;
    preview();
    ask();
    return false;
}

GripDrag::Answer GripDrag::answer(const QString& typed) {
    if (takeOption(typed))
        return Answer::kTaken;
    bool isNumber = false;
    const double number = typed.toDouble(&isNumber);
    if (isNumber && !m_asksBase && (m_mode == GripMode::kRotate || m_mode == GripMode::kScale))
        return answer(number);
    const auto point = ed::parseTypedPoint(typed, m_base);
    if (!point)
        return Answer::kNone;
    if (!ed::isInReach(*point)) {
        tell(QStringLiteral("That point is too far away."));
        return Answer::kTaken;
    }
    return put(*point) ? Answer::kGiven : Answer::kTaken;
}

GripDrag::Answer GripDrag::answer(double number) {
    if (!std::isfinite(number) || (m_mode == GripMode::kScale && number <= 0.0)) {
        tell(m_mode == GripMode::kScale ? QStringLiteral("A number above 0 is needed.")
                                        : QStringLiteral("That number is too large."));
        return Answer::kTaken;
    }
    m_map = mapOf(m_mode, m_base, m_mode == GripMode::kRotate ? ed::degreesToRadians(number) : number);
    return Answer::kGiven;
}

GripDrag::Moved* GripDrag::add(MxDbObjectId id) {
    const auto known = std::find_if(m_moved.begin(), m_moved.end(), [&](const Moved& moved) { return moved.id == id; });
    if (known != m_moved.end())
        return &*known;
    MxDbEntity* entity = entityOf(id);
    if (!entity)
        return nullptr;
    Moved moved;
    moved.id = id;
    moved.picture = m_builder.build(*entity);
    if (!isOfModule(*entity)) {
        moved.copy.reset(static_cast<MxDbEntity*>(entity->isA()->create()));
        moved.image = db::dwgImage(*entity, MxDbFilerType::kCopy);
    }
    std::vector<MxGePoint3d> grips;
    const db::ReadAccess readable(*entity);
    ed::guarded("An entity's grips", [&] { entity->getGripPoints(grips); });
    if (!grips.empty())
        moved.place = grips.front();
    m_moved.push_back(std::move(moved));
    return &m_moved.back();
}

bool GripDrag::moves(MxDbObjectId id) const {
    return std::any_of(m_moved.begin(), m_moved.end(),
                       [&](const Moved& moved) { return moved.id == id && isMoved(moved); });
}

bool GripDrag::isSelected() const {
    return std::all_of(m_moved.begin(), m_moved.end(),
                       [](const Moved& moved) { return ed::Selection::instance().contains(moved.id); });
}

void GripDrag::moveTo(const MxGePoint3d& point) {
    if (point == m_at || m_asksBase)
        return;
    m_at = point;
    preview();
}

void GripDrag::preview() {
    m_map = mapOf(m_mode, m_base, m_at);
    for (Moved& moved : m_moved)
        preview(moved);
}

void GripDrag::preview(Moved& moved) {
    if (!moved.copy || !isMoved(moved) || db::readDwgImage(*moved.copy, moved.image, MxDbFilerType::kCopy) != Mx::eOk)
        return;
    const auto status = m_mode == GripMode::kStretch ? moved.copy->moveGripPointsAt(moved.indices, m_at - m_base)
                        : m_map                      ? moved.copy->transformBy(*m_map)
                                                     : Mx::eOk;
    if (status == Mx::eOk)
        moved.picture = m_builder.build(*moved.copy);
}

MxGeVector3d GripDrag::shiftOf(const Moved& moved) const {
    if (moved.copy)
        return {};
    if (m_mode == GripMode::kStretch)
        return m_at - m_base;
    return m_map && moved.place ? *m_map * *moved.place - *moved.place : MxGeVector3d();
}

void GripDrag::paint(QPainter& painter, const ge::ViewTransform& view, const gi::PaintOptions& options) const {
    for (const Moved& moved : m_moved) {
        if (!isMoved(moved))
            continue;
        const MxGeVector3d shift = shiftOf(moved);
        ge::ViewTransform shifted = view; // the picture moves one way when what is looked at moves the other
        shifted.center = {view.center.x - shift.x, view.center.y - shift.y};
        gi::ListPainter(painter, shifted, options).draw(moved.picture);
    }
}

Mx::ErrorStatus GripDrag::stretch(const Moved& moved, const MxGeVector3d& offset) {
    MxDbEntity* entity = nullptr;
    auto status = mxdbOpenObject(entity, moved.id, Mx::kForWrite);
    if (status != Mx::eOk)
        return status;
    status = Mx::eNotApplicable; // when it throws
    ed::guarded("Moving a grip", [&] { status = entity->moveGripPointsAt(moved.indices, offset); });
    status == Mx::eOk ? entity->close() : entity->cancel();
    return status;
}

void GripDrag::stretchAll(const MxGeVector3d& offset) const {
    int locked = 0, refused = 0;
    for (const Moved& moved : m_moved) {
        if (!isMoved(moved))
            continue;
        const auto status = stretch(moved, offset);
        locked += status == Mx::eOnLockedLayer;
        refused += status != Mx::eOk && status != Mx::eOnLockedLayer;
    }
    if (locked > 0)
        tell(locked == 1 ? QStringLiteral("One entity is on a locked layer.")
                         : QStringLiteral("%1 entities are on locked layers.").arg(locked));
    if (refused > 0)
        tell(refused == 1 ? QStringLiteral("One entity cannot be changed this way.")
                          : QStringLiteral("%1 entities cannot be changed this way.").arg(refused));
}

void GripDrag::moveAll() const {
    if (m_mode == GripMode::kStretch)
        return stretchAll(m_at - m_base);
    std::vector<MxDbObjectId> ids;
    for (const Moved& moved : m_moved)
        ids.push_back(moved.id);
    if (m_copies)
        ed::copyEntities(ids, *m_map);
    else
        ed::transformEntities(ids, *m_map);
}

void GripDrag::finish() {
    auto& manager = ap::DocManager::instance();
    if (m_mode == GripMode::kStretch ? (m_at - m_base).length() > 0.0 : m_map.has_value()) {
        const wchar_t* const command = commandOf(m_mode);
        if (manager.lockDocument(&m_document, MxApLockMode::kWrite, command, undoNameOf(m_mode)) != Mx::eOk)
            return tell(QStringLiteral("The grips were not moved.")); // after what the lock itself told
        moveAll();
        manager.unlockDocument(&m_document);
    }
    m_finished = true;
    ed::Editor::instance().notifyCommandEnded(commandOf(m_mode));
}

} // namespace merix::ui
