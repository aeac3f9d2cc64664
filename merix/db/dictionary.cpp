// SPDX-License-Identifier: MIT
#include "host/db/dictionary.h"

#include "host/db/id_mapping.h"
#include "merix/db/access.h"
#include "merix/db/database_imp.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/rx/class_registry.h"
#include "merix/rx/text.h"

#include <algorithm>
#include <utility>

using namespace merix::db;
using merix::rx::foldCase;

MERIX_RX_CLASS(MxDbDictionary, "MxDbDictionary", MxDbObject, merix::rx::makeObject<MxDbDictionary>, "DICTIONARY")

/// The place of a key, the number of entries when there is none.
std::size_t MxDbDictionary::find(const wchar_t* key) const {
    if (m_index.empty()) {
        // Of keys that a damaged file repeats, the first counts.
        for (std::size_t i = 0; i < m_entries.size(); ++i)
            m_index.try_emplace(foldCase(m_entries[i].first), i);
    }
    const auto found = m_index.find(foldCase(key ? key : L""));
    return found == m_index.end() ? m_entries.size() : found->second;
}

Mx::ErrorStatus MxDbDictionary::getAt(const wchar_t* key, MxDbObjectId& id) const {
    assertReadEnabled();
    id = MxDbObjectId();
    const std::size_t place = find(key);
    if (place == m_entries.size() || !DatabaseImp::peek(m_entries[place].second))
        return Mx::eKeyNotFound;
    id = m_entries[place].second;
    return Mx::eOk;
}

/// *U1, *U2 and so on, beginning with the count of entries: one that is not there.
std::wstring MxDbDictionary::unusedName() const {
    for (std::size_t number = m_entries.size() + 1;; ++number) {
        const std::wstring name = L"*U" + std::to_wstring(number);
        if (find(name.c_str()) == m_entries.size())
            return name;
    }
}

Mx::ErrorStatus MxDbDictionary::setAt(const wchar_t* key, MxDbObject* object, MxDbObjectId& id) {
    if (!key || !*key || !object)
        return Mx::eInvalidInput;
    if (!data().stub)
        return Mx::eNoDatabase;
    if (object->data().stub)
        return Mx::eAlreadyInDatabase;
    assertWriteEnabled();
    if (const auto status = data().stub->database->append(object, objectId(), id); status != Mx::eOk)
        return status;
    const std::wstring name = foldCase(key) == L"*u" ? unusedName() : key;
    const std::size_t place = find(name.c_str());
    if (place == m_entries.size()) {
        m_entries.emplace_back(name, id);
        m_index.try_emplace(foldCase(name), place);
        return Mx::eOk;
    }
    const MxDbObjectId before = std::exchange(m_entries[place].second, id);
    MxDbObject* replaced = nullptr;
    if (mxdbOpenObject(replaced, before, Mx::kForWrite) == Mx::eOk) {
        replaced->erase();
        replaced->close();
    }
    return Mx::eOk;
}

Mx::ErrorStatus MxDbDictionary::rename(const wchar_t* key, const wchar_t* newKey) {
    if (!newKey || !*newKey)
        return Mx::eInvalidInput;
    const std::size_t place = find(key);
    if (place == m_entries.size() || !DatabaseImp::peek(m_entries[place].second))
        return Mx::eKeyNotFound;
    if (const std::size_t other = find(newKey); other != m_entries.size() && other != place) {
        if (DatabaseImp::peek(m_entries[other].second))
            return Mx::eDuplicateKey;
        assertWriteEnabled();
        m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(other)); // of an erased object
        m_index.clear();
        return rename(key, newKey);
    }
    assertWriteEnabled();
    m_entries[place].first = newKey;
    m_index.clear();
    return Mx::eOk;
}

std::vector<std::pair<std::wstring, MxDbObjectId>> MxDbDictionary::entries(bool all) const {
    assertReadEnabled();
    if (all)
        return m_entries;
    std::vector<std::pair<std::wstring, MxDbObjectId>> present;
    for (const auto& entry : m_entries) {
        if (DatabaseImp::peek(entry.second))
            present.push_back(entry);
    }
    return present;
}

/// A dictionary takes what it owns with it, and brings back just that.
void MxDbDictionary::erasing(bool erasing) {
    if (erasing) {
        assertWriteEnabled();
        std::erase_if(m_entries,
                      [](const auto& entry) { return entry.second.isValid() && !DatabaseImp::peek(entry.second); });
        m_index.clear();
    }
    for (const auto& entry : m_entries) {
        MxDbObject* object = nullptr;
        if (mxdbOpenObject(object, entry.second, Mx::kForWrite, !erasing) != Mx::eOk)
            continue;
        if (object->ownerId() == objectId())
            object->erase(erasing);
        object->close();
    }
}

void MxDbDictionary::cloneEntriesInto(MxDbDictionary& copy, MxDbIdMapping& map, bool wblock) const {
    copy.m_entries.clear();
    copy.m_index.clear();
    for (const auto& [key, id] : m_entries) {
        const MxDbObject* part = DatabaseImp::peek(id);
        if (!part || part->ownerId() != objectId())
            continue;
        MxDbObject* clone = nullptr;
        const ReadAccess readable(*part);
        if (wblock)
            part->wblockClone(&copy, clone, map, false);
        else
            part->deepClone(&copy, clone, map, false);
        if (clone)
            clone->close();
    }
}

Mx::ErrorStatus MxDbDictionary::subDeepClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                             bool isPrimary) const {
    const auto status = MxDbObject::subDeepClone(owner, clone, map, isPrimary);
    if (clone)
        cloneEntriesInto(static_cast<MxDbDictionary&>(*clone), map, false);
    return status;
}

Mx::ErrorStatus MxDbDictionary::subWblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                               bool isPrimary) const {
    const auto status = MxDbObject::subWblockClone(owner, clone, map, isPrimary);
    if (clone)
        cloneEntriesInto(static_cast<MxDbDictionary&>(*clone), map, true);
    return status;
}

namespace {
/// An empty text and an id.
constexpr std::size_t kLeastEntrySize = 5 + 9;
} // namespace

Mx::ErrorStatus MxDbDictionary::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    std::uint32_t count = 0;
    filer->readBool(m_hardOwner);
    filer->readInt16(m_cloning);
    if (const auto status = readCount(*filer, count, kLeastEntrySize); status != Mx::eOk)
        return status;
    m_index.clear();
    m_entries.assign(count, {});
    for (auto& [key, id] : m_entries) {
        if (const auto status = readText(*filer, key); status != Mx::eOk)
            return status;
        filer->readSoftPointerId(id);
    }
    return filer->filerStatus();
}

Mx::ErrorStatus MxDbDictionary::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeBool(m_hardOwner);
    filer->writeInt16(m_cloning);
    const auto filed = [&](const auto& entry) {
        return filer->filerType() != MxDbFilerType::kFile || !leavesFiles(*this, entry.second);
    };
    filer->writeUInt32(static_cast<std::uint32_t>(std::count_if(m_entries.begin(), m_entries.end(), filed)));
    for (const auto& entry : m_entries) {
        if (!filed(entry))
            continue;
        filer->writeString(entry.first.c_str());
        filer->writeSoftPointerId(entry.second);
    }
    return filer->filerStatus();
}

Mx::ErrorStatus MxDbDictionary::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dxfInFields(filer); status != Mx::eOk)
        return status;
    m_index.clear();
    m_entries.clear();
    std::wstring key;
    return readItems(filer, nullptr, [&](int code) {
        switch (code) {
        case 3:
            key = filer->itemString().str();
            break;
        case 350:
        case 360:
            m_entries.emplace_back(std::exchange(key, {}), filer->itemObjectId());
            break;
        case 280:
            m_hardOwner = filer->itemInt16() != 0;
            break;
        case 281:
            m_cloning = filer->itemInt16();
            break;
        default:
            break;
        }
        return true;
    });
}

Mx::ErrorStatus MxDbDictionary::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbDictionary");
    if (m_hardOwner)
        filer->writeInt16(280, 1);
    filer->writeInt16(281, m_cloning);
    for (const auto& [key, id] : m_entries) {
        if (leavesFiles(*this, id))
            continue;
        filer->writeString(3, key.c_str());
        filer->writeObjectId(m_hardOwner ? 360 : 350, id);
    }
    return filer->filerStatus();
}
