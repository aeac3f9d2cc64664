// SPDX-License-Identifier: MIT
// A new drawing with a few ways to fill it.
#pragma once

#include "host/db/database.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"

#include <memory>
#include <utility>

struct Drawing {
    MxDbDatabase database;
    merix::db::DatabaseImp& imp = database.imp();
    merix::db::WorkingDatabaseScope working{&database};

    Drawing() { imp.createDefaults(); }

    /// Adds an entity to a block (model space) and closes it.
    template <class T> MxDbObjectId add(std::unique_ptr<T> entity, MxDbObjectId block = {}) {
        MxDbBlockTableRecord* space = nullptr;
        mxdbOpenObject(space, block.isNull() ? imp.roots.modelSpace : block, Mx::kForWrite);
        MxDbObjectId id;
        T* added = entity.release();
        space->appendMxDbEntity(id, added);
        added->close();
        space->close();
        return id;
    }

    MxDbObjectId addLine(const MxGePoint3d& start = {}, const MxGePoint3d& end = {1, 0, 0}, MxDbObjectId block = {}) {
        auto line = std::make_unique<merix::db::Line>();
        line->start = start;
        line->end = end;
        return add(std::move(line), block);
    }

    MxDbObjectId addBlock(std::wstring name, const MxGePoint3d& origin = {}) {
        auto* record = new MxDbBlockTableRecord;
        imp.setBlock(*record, std::move(name), origin);
        const MxDbObjectId id(imp.adopt(record, {}, imp.roots.blockTable));
        table(imp.roots.blockTable).records.push_back(id);
        return id;
    }

    MxDbObjectId addLayer(std::wstring name, std::int16_t color = 7, std::int16_t flags = 0) {
        auto* layer = new merix::db::LayerRecord;
        layer->name = std::move(name);
        layer->color = color;
        layer->flags = flags;
        const MxDbObjectId id(imp.adopt(layer, {}, imp.roots.layerTable));
        table(imp.roots.layerTable).records.push_back(id);
        return id;
    }

    merix::db::SymbolTable& table(MxDbObjectId id) {
        return static_cast<merix::db::SymbolTable&>(*merix::db::DatabaseImp::peek(id));
    }

    template <class T> T& at(MxDbObjectId id) { return static_cast<T&>(*merix::db::DatabaseImp::peek(id, true)); }

    void moveLine(MxDbObjectId id, const MxGePoint3d& end) {
        merix::db::Line* line = nullptr;
        mxdbOpenObject(line, id, Mx::kForWrite);
        line->assertWriteEnabled();
        line->end = end;
        line->close();
    }

    Mx::ErrorStatus erase(MxDbObjectId id, bool erasing = true) {
        MxDbObject* object = nullptr;
        if (const auto status = mxdbOpenObject(object, id, Mx::kForWrite, !erasing); status != Mx::eOk)
            return status;
        const auto status = object->erase(erasing);
        object->close();
        return status;
    }
};
