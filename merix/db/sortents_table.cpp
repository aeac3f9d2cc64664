// SPDX-License-Identifier: MIT
#include "host/db/sortents_table.h"

#include "host/db/id_mapping.h"
#include "merix/db/access.h"
#include "merix/db/database_imp.h"
#include "merix/db/draw_order.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/rx/class_registry.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

using namespace merix::db;

MERIX_RX_CLASS(MxDbSortentsTable, "MxDbSortentsTable", MxDbObject, merix::rx::makeObject<MxDbSortentsTable>,
               "SORTENTSTABLE")

namespace {

/// An id and a handle.
constexpr std::size_t kEntrySize = 9 + 9;

const MxDbBlockTableRecord* blockOf(MxDbObjectId id) {
    const MxDbObject* object = DatabaseImp::peek(id);
    return object && object->isKindOf(MxDbBlockTableRecord::desc()) ? static_cast<const MxDbBlockTableRecord*>(object)
                                                                    : nullptr;
}

} // namespace

MxDbHandle MxDbSortentsTable::sortHandle(MxDbObjectId entity) const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [entity](const Entry& entry) { return entry.entity == entity; });
    return found == m_entries.end() ? entity.handle() : found->sort;
}

std::vector<MxDbObjectId> MxDbSortentsTable::listedEntities() const {
    std::vector<MxDbObjectId> ids;
    for (const Entry& entry : m_entries)
        ids.push_back(entry.entity);
    return ids;
}

std::vector<MxDbObjectId> MxDbSortentsTable::fullDrawOrder() const {
    const MxDbBlockTableRecord* block = blockOf(m_block);
    if (!block)
        return {};
    std::vector<MxDbObjectId> order = block->entityIds();
    if (m_entries.empty() || order.empty())
        return order;
    // A block is drawn at every place where it is inserted.
    if (order == m_sortedFrom)
        return m_sorted;
    m_sortedFrom = order;
    std::unordered_map<const ObjectStub*, MxDbHandle> listed;
    for (const Entry& entry : m_entries)
        listed.try_emplace(entry.entity.stub(), entry.sort);
    std::vector<std::pair<MxDbHandle, MxDbObjectId>> keys;
    keys.reserve(order.size());
    for (const MxDbObjectId& id : order) {
        const auto found = listed.find(id.stub());
        keys.emplace_back(found == listed.end() ? id.handle() : found->second, id);
    }
    // Of the same handle, what was added later lies above.
    std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::transform(keys.begin(), keys.end(), order.begin(), [](const auto& key) { return key.second; });
    m_sorted = order;
    return order;
}

/// Gives the entities' own handles out anew, in ascending order; what then has its own is not listed.
void MxDbSortentsTable::setOrder(const std::vector<MxDbObjectId>& order) {
    std::vector<MxDbHandle> handles;
    handles.reserve(order.size());
    for (const MxDbObjectId& id : order)
        handles.push_back(id.handle());
    std::sort(handles.begin(), handles.end());
    m_entries.clear();
    m_sortedFrom.clear();
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (order[i].handle() != handles[i])
            m_entries.push_back({order[i], handles[i]});
    }
}

Mx::ErrorStatus MxDbSortentsTable::move(const std::vector<MxDbObjectId>& entities, bool toTop) {
    std::vector<MxDbObjectId> order = fullDrawOrder();
    const std::unordered_set<const ObjectStub*> present = [&order] {
        std::unordered_set<const ObjectStub*> stubs;
        for (const MxDbObjectId& id : order)
            stubs.insert(id.stub());
        return stubs;
    }();
    std::unordered_set<const ObjectStub*> moved;
    for (const MxDbObjectId& id : entities) {
        if (!present.contains(id.stub()))
            return Mx::eInvalidInput;
        moved.insert(id.stub());
    }
    if (moved.empty())
        return Mx::eOk;
    assertWriteEnabled();
    std::stable_partition(order.begin(), order.end(),
                          [&](const MxDbObjectId& id) { return moved.contains(id.stub()) != toTop; });
    setOrder(order);
    return Mx::eOk;
}

Mx::ErrorStatus MxDbSortentsTable::moveToBottom(const std::vector<MxDbObjectId>& entities) {
    return move(entities, false);
}

Mx::ErrorStatus MxDbSortentsTable::moveToTop(const std::vector<MxDbObjectId>& entities) {
    return move(entities, true);
}

/// The handles of another drawing say nothing there: the copies of the entities, made before, are sorted anew.
Mx::ErrorStatus MxDbSortentsTable::subWblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                                  bool isPrimary) const {
    const auto status = MxDbObject::subWblockClone(owner, clone, map, isPrimary);
    if (!clone)
        return status;
    std::vector<MxDbObjectId> order;
    for (const MxDbObjectId& id : fullDrawOrder()) {
        if (const MxDbObjectId copy = map.clone(id); !copy.isNull())
            order.push_back(copy);
    }
    static_cast<MxDbSortentsTable*>(clone)->setOrder(order);
    return status;
}

Mx::ErrorStatus MxDbSortentsTable::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    m_sortedFrom.clear();
    filer->readSoftPointerId(m_block);
    std::uint32_t count = 0;
    if (const auto status = readCount(*filer, count, kEntrySize); status != Mx::eOk)
        return status;
    m_entries.assign(count, {});
    for (auto& [entity, sort] : m_entries) {
        filer->readSoftPointerId(entity);
        filer->readHandle(sort);
    }
    return filer->filerStatus();
}

Mx::ErrorStatus MxDbSortentsTable::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeSoftPointerId(m_block);
    const auto filed = [&](const Entry& entry) {
        return filer->filerType() != MxDbFilerType::kFile || !merix::db::leavesFiles(*this, entry.entity);
    };
    filer->writeUInt32(static_cast<std::uint32_t>(std::count_if(m_entries.begin(), m_entries.end(), filed)));
    for (const Entry& entry : m_entries) {
        if (!filed(entry))
            continue;
        filer->writeSoftPointerId(entry.entity);
        filer->writeHandle(entry.sort);
    }
    return filer->filerStatus();
}

Mx::ErrorStatus MxDbSortentsTable::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dxfInFields(filer); status != Mx::eOk)
        return status;
    m_entries.clear();
    m_sortedFrom.clear();
    return readItems(filer, nullptr, [&](int code) {
        if (code == 330)
            m_block = filer->itemObjectId();
        else if (code == 331)
            m_entries.push_back({filer->itemObjectId(), {}});
        else if (code == 5 && !m_entries.empty())
            m_entries.back().sort = MxDbHandle(filer->itemString().text());
        return true;
    });
}

Mx::ErrorStatus MxDbSortentsTable::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbSortentsTable");
    filer->writeObjectId(330, m_block);
    for (const auto& [entity, sort] : m_entries) {
        if (merix::db::leavesFiles(*this, entity))
            continue;
        wchar_t text[17];
        sort.getIntoAsciiBuffer(text);
        filer->writeObjectId(331, entity);
        filer->writeString(5, text);
    }
    return filer->filerStatus();
}

namespace merix::db {

const MxDbSortentsTable* sortentsTable(const MxDbBlockTableRecord& block) {
    const MxDbObject* extension = DatabaseImp::peek(block.extensionDictionary());
    if (!extension || !extension->isKindOf(MxDbDictionary::desc()))
        return nullptr;
    const ReadAccess readable(*extension);
    MxDbObjectId id;
    static_cast<const MxDbDictionary*>(extension)->getAt(kSortentsKey, id);
    const MxDbObject* table = DatabaseImp::peek(id);
    return table && table->isKindOf(MxDbSortentsTable::desc()) ? static_cast<const MxDbSortentsTable*>(table) : nullptr;
}

const std::vector<MxDbObjectId>& drawOrder(const MxDbBlockTableRecord& block, std::vector<MxDbObjectId>& sorted) {
    const MxDbSortentsTable* table = sortentsTable(block);
    if (!table || table->blockId() != block.objectId())
        return block.entityIds();
    sorted = table->fullDrawOrder();
    return sorted;
}

} // namespace merix::db

namespace {

/// Opens the block's extension dictionary for write; made when there is none.
Mx::ErrorStatus openExtension(MxDbBlockTableRecord& block, bool create, MxDbDictionary*& extension) {
    if (block.extensionDictionary().isNull()) {
        if (!create)
            return Mx::eKeyNotFound;
        if (const auto status = block.upgradeOpen(); status != Mx::eOk)
            return status;
        if (const auto status = block.createExtensionDictionary(); status != Mx::eOk)
            return status;
    }
    return mxdbOpenObject(extension, block.extensionDictionary(), create ? Mx::kForWrite : Mx::kForRead);
}

} // namespace

Mx::ErrorStatus MxDbBlockTableRecord::getSortentsTable(MxDbSortentsTable*& table, Mx::OpenMode mode,
                                                       bool createIfNecessary) {
    table = nullptr;
    assertReadEnabled();
    MxDbDictionary* extension = nullptr;
    if (const auto status = openExtension(*this, false, extension); status == Mx::eOk) {
        MxDbObjectId id;
        const auto found = extension->getAt(kSortentsKey, id);
        extension->close();
        if (found == Mx::eOk)
            return mxdbOpenObject(table, id, mode);
    } else if (status != Mx::eKeyNotFound) {
        return status;
    }
    if (!createIfNecessary)
        return Mx::eKeyNotFound;
    if (const auto status = openExtension(*this, true, extension); status != Mx::eOk)
        return status;
    auto* made = new MxDbSortentsTable;
    made->m_block = objectId();
    MxDbObjectId id;
    const auto status = extension->setAt(kSortentsKey, made, id);
    extension->close();
    if (status != Mx::eOk) {
        delete made;
        return status;
    }
    if (mode == Mx::kForWrite) {
        table = made;
        return Mx::eOk;
    }
    made->close();
    return mxdbOpenObject(table, id, mode);
}
