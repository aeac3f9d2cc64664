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

void GripDrag::stretch(const Moved& moved, const MxGeVector3d& offset) {
    MxDbEntity* entity = nullptr;
    auto status = mxdbOpenObject(entity, moved.id, Mx::kForWrite);
    if (status == Mx::eOk) {
        bool done = false;
        ed::guarded("Moving a grip", [&] {
            status = entity->moveGripPointsAt(moved.indices, offset);
            done = status == Mx::eOk;
        });
        done ? entity->close() : entity->cancel();
        if (done)
            return;
    }
    tell(status == Mx::eOnLockedLayer ? QStringLiteral("The entity is on a locked layer.")
                                      : QStringLiteral("The entity cannot be changed this way."));
}

void GripDrag::finish() {
    m_finished = true;
    auto& manager = ap::DocManager::instance();
    const MxGeVector3d offset = m_at - m_base;
    if (offset.length() > 0.0 &&
        manager.lockDocument(&m_document, MxApLockMode::kWrite, kCommand, kUndoName) == Mx::eOk) {
        for (const Moved& moved : m_moved)
            stretch(moved, offset);
        manager.unlockDocument(&m_document);
    }
    ed::Editor::instance().notifyCommandEnded(kCommand);
}

} // namespace merix::ui
