// SPDX-License-Identifier: MIT
#include "merix/io/database_filler.h"

#include "merix/db/tables.h"

#include <array>

namespace merix::io {
namespace {

using db::DatabaseImp;

constexpr std::array<std::string_view, 9> kTables = {"VPORT", "LTYPE", "LAYER",    "STYLE",       "VIEW",
                                                     "UCS",   "APPID", "DIMSTYLE", "BLOCK_RECORD"};

bool isDictionary(const MxDbObject* object) {
    return object && object->isKindOf(MxDbDictionary::desc());
}

} // namespace

MxDbObjectId* tableRoot(DatabaseImp::Roots& roots, std::string_view dxfType) {
    const std::array<MxDbObjectId*, 9> ids = {&roots.viewportTable,  &roots.linetypeTable, &roots.layerTable,
                                              &roots.textStyleTable, &roots.viewTable,     &roots.ucsTable,
                                              &roots.appIdTable,     &roots.dimStyleTable, &roots.blockTable};
    for (std::size_t i = 0; i < kTables.size(); ++i) {
        if (kTables[i] == dxfType)
            return ids[i];
    }
    return nullptr;
}

void addMissingTables(DatabaseImp& database, DrawingParts& parts) {
    for (const std::string_view name : kTables) {
        MxDbObjectId* root = tableRoot(database.roots, name);
        if (!root->isNull())
            continue;
        auto table = std::make_unique<db::SymbolTable>();
        table->dxfType = name;
        db::ObjectStub* stub = database.adopt(table.release(), MxDbHandle(), MxDbObjectId());
        *root = MxDbObjectId(stub);
        parts.implied.insert(stub);
    }
}

MxDbBlockTableRecord* addImpliedBlock(DatabaseImp& database, DrawingParts& parts, std::wstring name) {
    auto made = std::make_unique<MxDbBlockTableRecord>();
    MxDbBlockTableRecord* record = made.get();
    database.setBlock(*record, std::move(name), {});
    db::ObjectStub* stub = database.adopt(made.release(), MxDbHandle(), database.roots.blockTable);
    parts.implied.insert(stub);
    static_cast<db::SymbolTable*>(DatabaseImp::peek(database.roots.blockTable))->records.emplace_back(stub);
    return record;
}

void findSpaces(DatabaseImp& database, DrawingParts& parts) {
    const auto find = [&](const wchar_t* name, const wchar_t* oldName) {
        MxDbObjectId id = database.blockNamed(name);
        if (id.isNull())
            id = database.blockNamed(oldName);
        return id.isNull() ? addImpliedBlock(database, parts, name)->objectId() : id;
    };
    database.roots.modelSpace = find(L"*Model_Space", L"$MODEL_SPACE");
    database.roots.paperSpace = find(L"*Paper_Space", L"$PAPER_SPACE");
    database.currentSpace = database.roots.modelSpace;
}

void findNamedObjects(DatabaseImp& database, DrawingParts& parts) {
    MxDbObjectId first;
    for (const Part& part : parts.parts) {
        if (part.role != Part::Role::kObjectRun)
            continue;
        for (db::ObjectStub* stub : part.run) {
            if (!isDictionary(stub->object))
                continue;
            if (stub->object->ownerId().isNull()) {
                database.roots.namedObjects = MxDbObjectId(stub);
                return;
            }
            if (first.isNull())
                first = MxDbObjectId(stub);
        }
    }
    if (!first.isNull()) {
        database.roots.namedObjects = first;
        return;
    }
    db::ObjectStub* stub = database.adopt(new MxDbDictionary, MxDbHandle(), MxDbObjectId());
    database.roots.namedObjects = MxDbObjectId(stub);
    parts.implied.insert(stub);
}

} // namespace merix::io
