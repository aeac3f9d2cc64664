// SPDX-License-Identifier: MIT
#include "merix/db/entity_traits.h"

#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/db/layers.h"

#include <cmath>

namespace merix::db {

namespace {

/// eOk when `id` is a live record of class `kind` in the entity's drawing.
Mx::ErrorStatus checkRecord(const MxDbEntity& entity, MxDbObjectId id, const MxRxClass* kind) {
    const MxDbObject* record = DatabaseImp::peek(id);
    if (!record || record->isA() != kind)
        return Mx::eWrongClass;
    return entity.database() && id.database() != entity.database() ? Mx::eWrongDatabase : Mx::eOk;
}

template <class Change> Mx::ErrorStatus change(MxDbEntity& entity, Mx::ErrorStatus status, Change change) {
    if (status == Mx::eOk) {
        entity.assertWriteEnabled();
        change(traits(entity));
    }
    return status;
}

Mx::ErrorStatus validIf(bool valid) {
    return valid ? Mx::eOk : Mx::eInvalidInput;
}

} // namespace

Mx::ErrorStatus setLayer(MxDbEntity& entity, MxDbObjectId layer) {
    return change(entity, checkRecord(entity, layer, LayerRecord::desc()),
                  [layer](EntityTraits& own) { own.layer = layer; });
}

Mx::ErrorStatus setColor(MxDbEntity& entity, int color) {
    return change(entity, validIf(color >= 0 && color <= 256), [color](EntityTraits& own) {
        own.color = static_cast<std::int16_t>(color);
        own.hasTrueColor = false;
    });
}

Mx::ErrorStatus setTrueColor(MxDbEntity& entity, std::uint32_t color) {
    return change(entity, validIf(color <= 0xFFFFFFU), [color](EntityTraits& own) {
        own.trueColor = color;
        own.hasTrueColor = true;
    });
}

Mx::ErrorStatus setLinetype(MxDbEntity& entity, MxDbObjectId linetype) {
    const auto status = linetype.isNull() ? Mx::eOk : checkRecord(entity, linetype, LinetypeRecord::desc());
    return change(entity, status, [linetype](EntityTraits& own) { own.linetype = linetype; });
}

Mx::ErrorStatus setLineWeight(MxDbEntity& entity, int weight) {
    return change(entity, validIf((weight >= -3 && weight < 0) || isLineWeight(weight)),
                  [weight](EntityTraits& own) { own.lineWeight = static_cast<std::int16_t>(weight); });
}

Mx::ErrorStatus setLinetypeScale(MxDbEntity& entity, double scale) {
    return change(entity, validIf(scale > 0.0 && std::isfinite(scale)),
                  [scale](EntityTraits& own) { own.linetypeScale = scale; });
}

Mx::ErrorStatus setInvisible(MxDbEntity& entity, bool invisible) {
    return change(entity, Mx::eOk, [invisible](EntityTraits& own) { own.invisible = invisible; });
}

} // namespace merix::db
