// SPDX-License-Identifier: MIT
#include "merix/ed/drawing_access.h"

#include "merix/db/clone.h"
#include "merix/db/layers.h"
#include "merix/ed/console.h"
#include "merix/ed/properties.h"

#include <stdexcept>

namespace merix::ed {

db::DatabaseImp& drawing() {
    MxDbDatabase* database = mxdbHostApplicationServices()->workingDatabase();
    if (!database)
        throw std::runtime_error("no drawing is open");
    return database->imp();
}

bool mayDraw() {
    const MxDbLayerTableRecord* layer = layerRecord(drawing().layerNamed(drawing().header.currentLayer));
    if (!layer || !layer->isLocked())
        return true;
    tell(QStringLiteral("The current layer %1 is locked.").arg(QString::fromStdWString(layer->name)));
    return false;
}

void tell(const QString& line) {
    Console::instance().print(QLatin1Char('\n') + line);
}

MxDbObjectId addEntity(std::unique_ptr<MxDbEntity> entity) {
    db::DatabaseImp& database = drawing();
    const Opened<MxDbBlockTableRecord> space(database.currentSpace, Mx::kForWrite);
    if (!space)
        return {};
    db::EntityTraits& traits = db::traits(*entity);
    traits.color = database.header.currentColor;
    traits.lineWeight = database.header.currentLineWeight;
    traits.linetypeScale = database.header.currentLinetypeScale;
    if (QString::fromStdWString(database.header.currentLinetype)
            .compare(QLatin1String("ByLayer"), Qt::CaseInsensitive) != 0)
        traits.linetype = database.linetypeNamed(database.header.currentLinetype);
    MxDbObjectId id;
    if (space->appendMxDbEntity(id, entity.get()) != Mx::eOk)
        return {};
    entity.release()->close();
    return id;
}

MxDbObjectId addRecord(MxDbObjectId table, std::unique_ptr<MxDbObject> record) {
    MxDbObject* added = db::appendRecord(drawing(), table, std::move(record));
    if (!added)
        return {};
    const MxDbObjectId id = added->objectId();
    added->close();
    return id;
}

bool isRecordName(const QString& name) {
    return db::isLayerName(name.toStdWString());
}

std::vector<MxDbObjectId> entitiesOfSpace() {
    std::vector<MxDbObjectId> ids;
    if (const MxDbBlockTableRecord* space = drawing().block(drawing().currentSpace))
        for (const MxDbObjectId id : space->entityIds())
            if (db::DatabaseImp::peek(id))
                ids.push_back(id);
    return ids;
}

int eraseEntities(const std::vector<MxDbObjectId>& ids) {
    int erased = 0;
    for (const MxDbObjectId id : ids) {
        const Opened<MxDbEntity> entity(id, Mx::kForWrite);
        if (entity && entity->erase() == Mx::eOk)
            ++erased;
    }
    return erased;
}

} // namespace merix::ed
