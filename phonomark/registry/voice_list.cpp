// SPDX-License-Identifier: MIT
// The note list inside the drawing, by which a drawing that is opened again knows its notes without being searched.
#include "phonomark/registry/phonomark_manager.h"

#include "host/db/dictionary.h"
#include "phonomark/dbutil/opened.h"

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

Opened<MxDbDictionary> namedObjects(MxDbDatabase& database, Mx::OpenMode mode) {
    MxDbDictionary* named = nullptr;
    database.getNamedObjectsDictionary(named, mode);
    return Opened<MxDbDictionary>(named);
}

/// The entry open for write, made when there is none; empty when it cannot be had.
template <class T>
Opened<T> entryForWrite(MxDbDictionary& dictionary, const wchar_t* key, Mx::ErrorStatus found, MxDbObjectId id) {
    if (found == Mx::eOk)
        return Opened<T>(id, Mx::kForWrite);
    auto made = std::make_unique<T>();
    return Opened<T>(dictionary.setAt(key, made.get(), id) == Mx::eOk ? made.release() : nullptr);
}

/// The notes' dictionary open for write, made when the drawing has none; empty when that fails.
Opened<MxDbDictionary> notesForWrite(MxDbDatabase& database) {
    Opened<MxDbDictionary> named = namedObjects(database, Mx::kForWrite);
    MxDbObjectId id;
    const Mx::ErrorStatus found = named ? named->getAt(kDictionaryKey, id) : Mx::eNotOpen;
    if (found != Mx::eOk && found != Mx::eKeyNotFound)
        return {};
    Opened<MxDbDictionary> notes = entryForWrite<MxDbDictionary>(*named, kDictionaryKey, found, id);
    if (named.close() != Mx::eOk)
        return {};
    return notes;
}

Opened<MxDbXrecord> listForWrite(MxDbDictionary& notes) {
    MxDbObjectId id;
    const Mx::ErrorStatus found = notes.getAt(kListKey, id);
    return entryForWrite<MxDbXrecord>(notes, kListKey, found, id);
}

/// The notes' dictionary open for read; empty when the drawing has none that can be read.
Opened<MxDbDictionary> notesForRead(MxDbDatabase& database) {
    const Opened<MxDbDictionary> named = namedObjects(database, Mx::kForRead);
    MxDbObjectId id;
    if (!named || named->getAt(kDictionaryKey, id) != Mx::eOk)
        return {};
    return Opened<MxDbDictionary>(id, Mx::kForRead);
}

/// Reads the list's chain; false when the drawing has no notes' dictionary.
bool readChain(MxDbDatabase& database, Chain& chain) {
    const Opened<MxDbDictionary> notes = notesForRead(database);
    if (!notes)
        return false;
    MxDbObjectId id;
    if (notes->getAt(kListKey, id) == Mx::eOk)
        if (const Opened<MxDbXrecord> list(id, Mx::kForRead); list)
            list->rbChain(&chain.first);
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
    MxApDocument* const document = manager ? manager->document(database) : nullptr;
    const auto entry = document ? m_documents.find(document) : m_documents.end();
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
    Opened<MxDbDictionary> notes = notesForWrite(*database);
    if (!notes)
        return false;
    if (Opened<MxDbXrecord> list = listForWrite(*notes)) {
        list->setFromRbChain(*chain.first);
        list.close();
    }
    notes.close();
    return true;
}

bool PhonomarkManager::ReadVoiceHandle(MxApDocument* document) {
    MxDbDatabase* database = document ? document->database() : nullptr;
    Chain chain;
    if (!database || !readChain(*database, chain))
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
