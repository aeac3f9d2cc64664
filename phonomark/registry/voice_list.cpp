// SPDX-License-Identifier: MIT
// The note list inside the drawing, by which a drawing that is opened again knows its notes without being searched.
#include "phonomark/registry/phonomark_manager.h"

#include "host/db/dictionary.h"

#include <array>

namespace {

constexpr wchar_t kDictionaryKey[] = L"PHONO_MARK";
constexpr wchar_t kListKey[] = L"VOICE_LIST";
constexpr short kHandleCode = 102;

/// A chain that is freed with this object.
class Chain {
public:
    Chain() = default;
    ~Chain() { mxutRelRb(first); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    resbuf* first = nullptr;
};

resbuf* handleElement(MxDbObjectId id) {
    std::array<wchar_t, 17> text{};
    id.handle().getIntoAsciiBuffer(text.data());
    return mxutBuildList(kHandleCode, text.data());
}

/// The notes' dictionary open for write, made when the drawing has none; null when that fails.
MxDbDictionary* notesDictionaryForWrite(MxDbDatabase* database) {
    MxDbDictionary* named = nullptr;
    if (database->getNamedObjectsDictionary(named, Mx::kForWrite) != Mx::eOk)
        return nullptr;
    MxDbDictionary* notes = nullptr;
    MxDbObjectId id;
    const Mx::ErrorStatus found = named->getAt(kDictionaryKey, id);
    if (found == Mx::eOk) {
        mxdbOpenObject(notes, id, Mx::kForWrite);
    } else if (found == Mx::eKeyNotFound) {
        auto made = std::make_unique<MxDbDictionary>();
        if (named->setAt(kDictionaryKey, made.get(), id) == Mx::eOk)
            notes = made.release();
    }
    if (named->close() != Mx::eOk && notes) {
        notes->close();
        return nullptr;
    }
    return notes;
}

/// The list open for write, made when there is none; null when it cannot be had.
MxDbXrecord* listForWrite(MxDbDictionary& notes) {
    MxDbObjectId id;
    MxDbXrecord* list = nullptr;
    if (notes.getAt(kListKey, id) == Mx::eOk) {
        mxdbOpenObject(list, id, Mx::kForWrite);
        return list;
    }
    auto made = std::make_unique<MxDbXrecord>();
    return notes.setAt(kListKey, made.get(), id) == Mx::eOk ? made.release() : nullptr;
}

/// Reads the list's chain; false when the drawing has no notes' dictionary.
bool readChain(MxDbDatabase* database, Chain& chain) {
    MxDbDictionary* named = nullptr;
    if (database->getNamedObjectsDictionary(named, Mx::kForRead) != Mx::eOk)
        return false;
    MxDbObjectId id;
    MxDbDictionary* notes = nullptr;
    if (named->getAt(kDictionaryKey, id) == Mx::eOk)
        mxdbOpenObject(notes, id, Mx::kForRead);
    named->close();
    if (!notes)
        return false;
    MxDbXrecord* list = nullptr;
    if (notes->getAt(kListKey, id) == Mx::eOk && mxdbOpenObject(list, id, Mx::kForRead) == Mx::eOk) {
        list->rbChain(&chain.first);
        list->close();
    }
    notes->close();
    return true;
}

/// A handle in whichever form the record's reader kept it.
MxDbHandle handleOf(const MxDbValue& value) {
    if (const auto* text = std::get_if<std::wstring>(&value))
        return MxDbHandle(text->c_str());
    if (const auto* handle = std::get_if<MxDbHandle>(&value))
        return *handle;
    return {};
}

} // namespace

void PhonomarkManager::CrtRbChain(resbuf*& chain, const MxDbDatabase* database, long& count) {
    const MxApDocManager* manager = mxDocManagerPtr();
    const auto entry = manager ? m_documents.find(manager->document(database)) : m_documents.end();
    if (entry == m_documents.end() || !entry->second)
        return;
    const std::vector<MxDbObjectId> ids = entry->second->ids();
    count = static_cast<long>(ids.size());
    resbuf** next = &chain;
    for (const MxDbObjectId& id : ids) {
        *next = handleElement(id);
        if (!*next)
            return;
        next = &(*next)->rbnext;
    }
}

bool PhonomarkManager::SaveVoiceHandle(MxDbDatabase* database) {
    Chain chain;
    long count = 0;
    CrtRbChain(chain.first, database, count);
    if (count == 0 || !chain.first)
        return false;
    MxDbDictionary* notes = notesDictionaryForWrite(database);
    if (!notes)
        return false;
    if (MxDbXrecord* list = listForWrite(*notes)) {
        list->setFromRbChain(*chain.first);
        list->close();
    }
    notes->close();
    return true;
}

bool PhonomarkManager::ReadVoiceHandle(MxApDocument* document) {
    MxDbDatabase* database = document ? document->database() : nullptr;
    Chain chain;
    if (!database || !readChain(database, chain))
        return false;
    std::vector<MxDbObjectId> ids;
    for (const resbuf* element = chain.first; element; element = element->rbnext) {
        MxDbObjectId id;
        if (database->getMxDbObjectId(id, true, handleOf(element->resval), 0) == Mx::eOk)
            ids.push_back(id);
    }
    for (const MxDbObjectId& id : ids)
        AppendPhonomark(id, document);
    return true;
}
