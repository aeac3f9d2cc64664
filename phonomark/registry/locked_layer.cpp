// SPDX-License-Identifier: MIT
#include "phonomark/registry/locked_layer.h"

#include "host/db/layer.h"

Mx::ErrorStatus openObjectIgnoreLockLayer(MxDbEntity*& entity, MxDbObjectId id, Mx::OpenMode mode) {
    Mx::ErrorStatus status = mxdbOpenObject(entity, id, Mx::kForRead);
    if (status != Mx::eOk || mode != Mx::kForWrite)
        return status;
    MxDbLayerTableRecord* layer = nullptr;
    status = mxdbOpenObject(layer, entity->layerId(), Mx::kForRead);
    if (status != Mx::eOk) {
        entity->close();
        entity = nullptr;
        return status;
    }
    if (!layer->isLocked()) {
        status = entity->upgradeOpen();
    } else if ((status = layer->upgradeOpen()) == Mx::eOk) {
        layer->setIsLocked(false);
        status = entity->upgradeOpen();
        layer->setIsLocked(true);
    }
    layer->close();
    return status;
}
