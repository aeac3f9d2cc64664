// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/blocks.h"

Mx::ErrorStatus openBlockTable(MxDbSymbolTable*& table) {
    table = nullptr;
    const MxDbDatabase* const database = mxdbHostApplicationServices()->workingDatabase();
    return database ? mxdbOpenObject(table, database->blockTableId(), Mx::kForRead) : Mx::eNoDatabase;
}

MxDbObjectId modelSpaceOf(const MxDbSymbolTable& table) {
    MxDbObjectId id;
    table.getAt(L"*Model_Space", id);
    return id;
}

MxDbObjectId modelSpace() {
    MxDbSymbolTable* table = nullptr;
    if (openBlockTable(table) != Mx::eOk)
        return {};
    const MxDbObjectId id = modelSpaceOf(*table);
    table->close();
    return id;
}
