// SPDX-License-Identifier: MIT
#include "host/db/kept_handles.h"

#include "merix/db/database_imp.h"

void mxdbKeepHandles(MxDbDatabase& database, const wchar_t* key, const std::vector<MxDbHandle>& handles) {
    auto& kept = database.imp().keptHandles;
    if (handles.empty())
        kept.erase(key);
    else
        kept.insert_or_assign(key, handles);
}

std::vector<MxDbHandle> mxdbKeptHandles(const MxDbDatabase& database, const wchar_t* key) {
    const auto& kept = database.imp().keptHandles;
    const auto found = kept.find(key);
    return found == kept.end() ? std::vector<MxDbHandle>() : found->second;
}
