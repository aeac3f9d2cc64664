// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/documents.h"

#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/texts.h"

#include <algorithm>

bool IsValidDocument(const MxApDocument* document) {
    const MxApDocManager* manager = mxDocManagerPtr();
    if (!manager || !document)
        return false;
    const std::vector<MxApDocument*> open = manager->documents();
    return std::find(open.begin(), open.end(), document) != open.end();
}

MxApDocument* currentDocument() {
    const MxApDocManager* manager = mxDocManagerPtr();
    return manager ? manager->curDocument() : nullptr;
}

bool IsSeriesOfDragcmds(const wchar_t*) {
    return true;
}

DocumentLock::DocumentLock(MxApDocument* document, const wchar_t* globalName, unsigned localNameId, bool prompt) {
    MxApDocManager* manager = mxDocManagerPtr();
    if (!manager || !document)
        return;
    const std::wstring localName = LocalStr(localNameId, globalName);
    if (manager->lockDocument(document, MxApLockMode::kWrite, globalName, localName.c_str(), prompt) == Mx::eOk)
        m_document = document;
}

DocumentLock::~DocumentLock() {
    MxApDocManager* manager = m_document ? mxDocManagerPtr() : nullptr;
    if (manager)
        guarded("unlocking a drawing", [&] { manager->unlockDocument(m_document); });
}
