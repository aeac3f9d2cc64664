// SPDX-License-Identifier: MIT
#include "merix/ap/layouts.h"

#include "merix/db/database_imp.h"
#include "merix/db/tables.h"

#include <map>

namespace merix::ap {

namespace {

template <class T> const T* peek(MxDbObjectId id) {
    MxDbObject* object = db::DatabaseImp::peek(id);
    return object && object->isKindOf(T::desc()) ? static_cast<const T*>(object) : nullptr;
}

std::map<MxDbObjectId, MxDbObjectId> spacesByLayout(const db::DatabaseImp& database) {
    std::map<MxDbObjectId, MxDbObjectId> spaces;
    if (const auto* table = peek<db::SymbolTable>(database.roots.blockTable))
        for (const MxDbObjectId id : table->records)
            if (const auto* block = peek<MxDbBlockTableRecord>(id); block && !block->layoutId().isNull())
                spaces.emplace(block->layoutId(), id);
    return spaces;
}

} // namespace

std::vector<Layout> layoutsOf(const MxDbDatabase& database) {
    const db::DatabaseImp& imp = database.imp();
    std::vector<Layout> layouts{{QStringLiteral("Model"), imp.roots.modelSpace}};
    MxDbObjectId listId;
    if (const auto* names = peek<MxDbDictionary>(imp.roots.namedObjects))
        names->getAt(L"ACAD_LAYOUT", listId);
    if (const auto* list = peek<MxDbDictionary>(listId)) {
        const auto spaces = spacesByLayout(imp);
        for (const auto& [name, id] : list->entries())
            if (const auto space = spaces.find(id); space != spaces.end() && space->second != imp.roots.modelSpace)
                layouts.push_back({QString::fromStdWString(name), space->second});
    }
    if (layouts.size() == 1 && !imp.roots.paperSpace.isNull())
        layouts.push_back({QStringLiteral("Layout1"), imp.roots.paperSpace});
    return layouts;
}

} // namespace merix::ap
