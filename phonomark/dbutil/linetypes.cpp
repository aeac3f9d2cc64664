// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/linetypes.h"

#include "host/db/database.h"

namespace {

constexpr wchar_t kLinetypeFile[] = L"merix.lin";

Mx::ErrorStatus findLinetype(const MxDbDatabase& database, const wchar_t* name, MxDbObjectId& id) {
    MxDbSymbolTable* table = nullptr;
    if (const auto status = mxdbOpenObject(table, database.linetypeTableId(), Mx::kForRead); status != Mx::eOk)
        return status;
    const Mx::ErrorStatus found = table->getAt(name, id, true);
    table->close();
    return found;
}

} // namespace

Mx::ErrorStatus getLinetypeIdFromString(const wchar_t* name, MxDbObjectId& id) {
    MxDbDatabase* const database = mxdbHostApplicationServices()->workingDatabase();
    if (!database)
        return Mx::eNoDatabase;
    const Mx::ErrorStatus status = findLinetype(*database, name, id);
    if (status != Mx::eKeyNotFound)
        return status;
    database->loadLineTypeFile(name, kLinetypeFile);
    return findLinetype(*database, name, id);
}
