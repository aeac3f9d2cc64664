// SPDX-License-Identifier: MIT
#include "merix/ui/grip_drag.h"

#include "merix/db/access.h"
#include "merix/db/tables.h"
#include "merix/ed/editor.h"
#include "merix/ed/selection.h"
#include "merix/gi/list_painter.h"

#include <algorithm>

namespace merix::ui {

namespace {

constexpr const wchar_t* kCommand = L"GRIP_STRETCH";
constexpr const wchar_t* kUndoName = L"Grip stretch";

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
    ed::Editor::instance().notifyCommandWillStart(kCommand);
    for (const Grip& grip : grips)
        add(grip);
}

GripDrag::~GripDrag() {
    if (!m_finished)
        ed::Editor::instance().notifyCommandCancelled(kCommand);
}

void GripDrag::add(const Grip& grip) {
    const auto known =
        std::find_if(m_moved.begin(), m_moved.end(), [&](const Moved& moved) { return moved.id == grip.id; });
    if (known != m_moved.end()) {
        known->indices.push_back(grip.index);
        return;
    }
    MxDbEntity* entity = entityOf(grip.id);
    if (!entity)
        return;
    Moved moved;
    moved.id = grip.id;
    moved.indices = {grip.index};
    moved.picture = m_builder.build(*entity);
    if (!isOfModule(*entity)) {
        moved.copy.reset(static_cast<MxDbEntity*>(entity->isA()->create()));
        moved.image = db::dwgImage(*entity, MxDbFilerType::kCopy);
    }
    m_moved.push_back(std::move(moved));
}

bool GripDrag::moves(MxDbObjectId id) const {
    return std::any_of(m_moved.begin(), m_moved.end(), [&](const Moved& moved) { return moved.id == id; });
}

bool GripDrag::isSelected() const {
    return std::all_of(m_moved.begin(), m_moved.end(),
                       [](const Moved& moved) { return ed::Selection::instance().contains(moved.id); });
}

void GripDrag::moveTo(const MxGePoint3d& point) {
    if (point == m_at)
        return;
    m_at = point;
    for (Moved& moved : m_moved)
        preview(moved, m_at - m_base);
}

void GripDrag::preview(Moved& moved, const MxGeVector3d& offset) {
    if (!moved.copy || db::readDwgImage(*moved.copy, moved.image, MxDbFilerType::kCopy) != Mx::eOk)
        return;
    if (moved.copy->moveGripPointsAt(moved.indices, offset) == Mx::eOk)
        moved.picture = m_builder.build(*moved.copy);
}

void GripDrag::paint(QPainter& painter, const ge::ViewTransform& view, const gi::PaintOptions& options) const {
    ge::ViewTransform shifted = view; // the picture moves one way when what is looked at moves the other
    shifted.center = {view.center.x - (m_at.x - m_base.x), view.center.y - (m_at.y - m_base.y)};
    for (const Moved& moved : m_moved)
        gi::ListPainter(painter, moved.copy ? view : shifted, options).draw(moved.picture);
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

void GripDrag::finish() {
    auto& manager = ap::DocManager::instance();
    const MxGeVector3d offset = m_at - m_base;
    if (offset.length() > 0.0) {
        if (manager.lockDocument(&m_document, MxApLockMode::kWrite, kCommand, kUndoName) != Mx::eOk)
            return tell(QStringLiteral("The grips were not moved.")); // after what the lock itself told
        stretchAll(offset);
        manager.unlockDocument(&m_document);
    }
    m_finished = true;
    ed::Editor::instance().notifyCommandEnded(kCommand);
}

} // namespace merix::ui
