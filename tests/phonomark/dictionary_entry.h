// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/dictionary.h"

/// What stands in a dictionary that nobody has open for write under a key; null when there is none.
inline MxDbObjectId dictionaryEntry(MxDbObjectId dictionaryId, const wchar_t* key) {
    MxDbObjectId id;
    MxDbDictionary* dictionary = nullptr;
    if (mxdbOpenObject(dictionary, dictionaryId, Mx::kForRead) == Mx::eOk) {
        dictionary->getAt(key, id);
        dictionary->close();
    }
    return id;
}
