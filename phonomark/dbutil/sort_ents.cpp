// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/sort_ents.h"

#include "host/ed/input.h"
#include "phonomark/dbutil/blocks.h"
#include "phonomark/dbutil/documents.h"

namespace {

constexpr wchar_t kLockName[] = L"GetSortEntsDict";
constexpr unsigned kLockText = 291;
constexpr wchar_t kNoBlockTable[] = L"\nCouldn't get the block table";
constexpr wchar_t kNoRecord[] = L"\nCouldn't get the MODEL_SPACE block record opened";
constexpr wchar_t kNoTable[] = L"\nCouldn't get or create MxDbSortentsTable of Model Space";

bool fail(const wchar_t* line) {
    mxutPrintText(line);
    return false;
}

} // namespace

bool getSortentsTable(MxDbSortentsTable*& table, MxDbObjectId blockRecord) {
    table = nullptr;
    MxDbBlockTableRecord* block = nullptr;
    if (mxdbOpenObject(block, blockRecord, Mx::kForRead) != Mx::eOk)
        return fail(kNoRecord);
    const Mx::ErrorStatus status = block->getSortentsTable(table, Mx::kForWrite, true);
    block->close();
    return status == Mx::eOk || fail(kNoTable);
}

bool getOrCreateSortEntsDictionary(MxDbSortentsTable*& table) {
    table = nullptr;
    const MxDbDatabase* const database = mxdbHostApplicationServices()->workingDatabase();
    const MxApDocManager* const manager = mxDocManagerPtr();
    DocumentLock lock(database && manager ? manager->document(database) : nullptr, kLockName, kLockText);
    lock.leaveLocked();
    MxDbSymbolTable* blocks = nullptr;
    if (openBlockTable(blocks) != Mx::eOk)
        return fail(kNoBlockTable);
    const MxDbObjectId model = modelSpaceOf(*blocks);
    blocks->close();
    return getSortentsTable(table, model);
}
