// SPDX-License-Identifier: MIT
#include "merix/db/audit.h"

#include "merix/db/access.h"
#include "merix/db/database_imp.h"
#include "merix/db/draw_order.h"
#include "merix/db/entities.h"
#include "merix/db/id_tape.h"
#include "merix/db/kept_records.h"
#include "merix/db/tables.h"
#include "merix/rx/text.h"

#include <algorithm>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace merix::db {

namespace {

using Kind = AuditFinding::Kind;

template <class T> const T* as(const MxDbObject* object) {
    return object && object->isKindOf(T::desc()) ? static_cast<const T*>(object) : nullptr;
}

std::wstring hex(MxDbObjectId id) {
    wchar_t text[17];
    id.handle().getIntoAsciiBuffer(text);
    return text;
}

/// What is wrong with the object behind an id; null for one that is there.
const wchar_t* fault(MxDbObjectId id) {
    const ObjectStub* stub = id.stub();
    if (!stub->object)
        return L" does not exist";
    return stub->erased ? L" is erased" : nullptr;
}

std::wstring kindName(const MxDbObject& object) {
    if (const std::string_view kept = keptDxfName(object); !kept.empty())
        return rx::fromUtf8(kept);
    const wchar_t* dxfName = object.isA()->dxfName();
    return *dxfName ? dxfName : object.isA()->name();
}

class Audit {
public:
    explicit Audit(DatabaseImp& database)
        : m_database(database) {}

    std::vector<AuditFinding> run() {
        for (const ObjectStub& stub : m_database.stubs()) {
            if (stub.object && !stub.erased)
                note(*stub.object);
        }
        for (const ObjectStub& stub : m_database.stubs()) {
            if (stub.object && !stub.erased)
                check(*stub.object);
        }
        if (m_database.layerNamed(m_database.header.currentLayer).isNull())
            m_findings.push_back(
                {Kind::kBroken, {}, L"the current layer " + m_database.header.currentLayer + L" does not exist", L""});
        return std::move(m_findings);
    }

private:
    void tell(Kind kind, std::wstring what) {
        m_findings.push_back({kind, m_object->objectId().handle(), std::move(what), where()});
    }
    std::wstring where() const {
        const MxDbObject* owner = DatabaseImp::peek(m_object->ownerId(), true);
        const std::wstring* name = nameOfRecord(owner);
        std::wstring text = kindName(*m_object);
        if (name)
            text += L" in " + *name;
        else if (owner)
            text += L" in " + kindName(*owner) + L" " + hex(owner->objectId());
        if (const std::wstring* own = nameOfRecord(m_object))
            text += L": " + *own;
        return text;
    }

    // --- who lists whom, taken down before anything is checked
    void note(const MxDbObject& object) {
        if (const auto* block = as<MxDbBlockTableRecord>(&object))
            list(block->entityIds());
        else if (const auto* table = as<SymbolTable>(&object))
            list(table->records);
        else if (const auto* dictionary = as<MxDbDictionary>(&object)) {
            const ReadAccess readable(*dictionary);
            for (const auto& [key, id] : dictionary->entries())
                ++m_listed[id.stub()];
        }
    }
    void list(const std::vector<MxDbObjectId>& ids) {
        for (const MxDbObjectId& id : ids)
            ++m_listed[id.stub()];
    }

    // --- what every object is asked
    void check(const MxDbObject& object) {
        m_object = &object;
        checkOwner(object);
        checkLinks(object);
        if (const auto* block = as<MxDbBlockTableRecord>(&object))
            checkList(block->entityIds(), L"entity ");
        else if (const auto* table = as<SymbolTable>(&object))
            checkTable(*table);
        else if (const auto* dictionary = as<MxDbDictionary>(&object))
            checkDictionary(*dictionary);
        else
            checkReferences(object);
        if (object.data().isEntity)
            checkEntity(static_cast<const MxDbEntity&>(object));
        if (const auto* table = as<MxDbSortentsTable>(&object))
            checkSorting(*table);
    }

    bool isRoot(const MxDbObject& object) const {
        return object.objectId() == m_database.roots.namedObjects || as<SymbolTable>(&object);
    }

    void checkOwner(const MxDbObject& object) {
        const MxDbObjectId ownerId = object.ownerId();
        if (ownerId.isNull()) {
            if (!isRoot(object))
                tell(Kind::kBroken, L"it has no owner");
            return;
        }
        if (const wchar_t* wrong = fault(ownerId))
            return tell(Kind::kBroken, L"its owner " + hex(ownerId) + wrong);
        const MxDbObject& owner = *ownerId.stub()->object;
        if (owner.data().extensionDictionary == object.objectId())
            return;
        const auto found = m_listed.find(object.objectId().stub());
        const int times = found == m_listed.end() ? 0 : found->second;
        if (object.data().isEntity && !as<MxDbBlockTableRecord>(&owner))
            return tell(Kind::kBroken, L"its owner " + hex(ownerId) + L" is no block");
        // A layer that no table lists stands for a name that entities use.
        if (times == 0 && lists(owner) && !object.objectId().handle().isNull())
            tell(Kind::kBroken, L"its owner " + hex(ownerId) + L" does not list it");
        else if (times > 1)
            tell(Kind::kBroken, L"it is listed " + std::to_wstring(times) + L" times");
        else if (times == 0 && as<MxDbDictionary>(&object) && !as<KeptObject>(&owner))
            tell(Kind::kBroken, L"its owner " + hex(ownerId) + L" has another extension dictionary or none");
    }
    static bool lists(const MxDbObject& owner) {
        return as<MxDbBlockTableRecord>(&owner) || as<SymbolTable>(&owner) || as<MxDbDictionary>(&owner);
    }

    void checkLinks(const MxDbObject& object) {
        if (const MxDbObjectId extension = object.data().extensionDictionary; !extension.isNull()) {
            if (const wchar_t* wrong = fault(extension))
                tell(Kind::kBroken, L"its extension dictionary " + hex(extension) + wrong);
            else if (extension.stub()->object->ownerId() != object.objectId())
                tell(Kind::kBroken, L"its extension dictionary " + hex(extension) + L" belongs to another object");
        }
        for (const MxDbReactorEntry& entry : object.data().reactors) {
            if (!mxdbIsPersistentReactor(entry))
                continue;
            // One that is erased comes back with undo, and is in no file.
            if (const wchar_t* wrong = fault(entry.persistent))
                tell(entry.persistent.isValid() ? Kind::kLoose : Kind::kBroken,
                     L"its reactor " + hex(entry.persistent) + wrong);
        }
    }

    void checkReferences(const MxDbObject& object) {
        std::set<MxDbObjectId> told; // by the checks of links
        told.insert(object.data().extensionDictionary);
        for (const MxDbReactorEntry& entry : object.data().reactors)
            told.insert(entry.persistent);
        const auto* sorting = as<MxDbSortentsTable>(&object);
        for (const IdTape::Entry& entry : referencesOf(object).entries) {
            if (entry.id.isNull() || told.contains(entry.id))
                continue;
            if (entry.id.stub()->database != &m_database)
                tell(Kind::kBroken, L"it refers to another drawing");
            else if (const wchar_t* wrong = fault(entry.id); wrong && !(sorting && entry.id.isValid()))
                tell(entry.hard ? Kind::kBroken : Kind::kLoose, L"it refers to " + hex(entry.id) + L", which" + wrong);
            told.insert(entry.id);
        }
    }

    // --- what the kinds are asked
    /// Erased ones stay in a list, for undo.
    void checkList(const std::vector<MxDbObjectId>& ids, const wchar_t* what) {
        for (const MxDbObjectId& id : ids) {
            if (id.isNull() || !id.isValid())
                tell(Kind::kBroken, std::wstring(L"its ") + what + hex(id) + L" does not exist");
            else if (!id.stub()->erased && id.stub()->object->ownerId() != m_object->objectId())
                tell(Kind::kBroken, std::wstring(L"its ") + what + hex(id) + L" has another owner");
        }
    }

    void checkTable(const SymbolTable& table) {
        checkList(table.records, L"record ");
        std::unordered_set<std::wstring> names;
        for (const MxDbObjectId& id : table.records) {
            const std::wstring* name = nameOfRecord(DatabaseImp::peek(id));
            if (name && !names.insert(rx::foldCase(*name)).second)
                tell(Kind::kBroken, L"it has two records of the name " + *name);
        }
    }

    void checkDictionary(const MxDbDictionary& dictionary) {
        std::unordered_set<std::wstring> keys;
        const ReadAccess readable(dictionary);
        for (const auto& [key, id] : dictionary.entries(true)) {
            if (id.isNull() || !id.isValid())
                tell(Kind::kBroken, L"its entry " + key + L", " + hex(id) + L", does not exist");
            else if (!id.stub()->erased && id.stub()->object->ownerId() != dictionary.objectId())
                tell(Kind::kBroken, L"its entry " + key + L", " + hex(id) + L", has another owner");
            if (!keys.insert(rx::foldCase(key)).second)
                tell(Kind::kBroken, L"it has two entries of the name " + key);
        }
    }
    void checkEntity(const MxDbEntity& entity) {
        const EntityTraits& own = traits(entity);
        const MxDbObject* layer = DatabaseImp::peek(own.layer);
        if (own.layer.isNull())
            tell(Kind::kBroken, L"it has no layer");
        else if (layer && !as<LayerRecord>(layer))
            tell(Kind::kBroken, L"its layer " + hex(own.layer) + L" is none");
        const MxDbObject* linetype = DatabaseImp::peek(own.linetype);
        if (linetype && !as<LinetypeRecord>(linetype))
            tell(Kind::kBroken, L"its line type " + hex(own.linetype) + L" is none");
        if (const auto* insert = as<Insert>(&entity)) {
            const MxDbObject* block = DatabaseImp::peek(insert->block);
            if (insert->block.isNull())
                tell(Kind::kBroken, L"it shows no block");
            else if (block && !as<MxDbBlockTableRecord>(block))
                tell(Kind::kBroken, L"its block " + hex(insert->block) + L" is none");
        }
    }

    void checkSorting(const MxDbSortentsTable& table) {
        const auto* block = as<MxDbBlockTableRecord>(DatabaseImp::peek(table.blockId()));
        if (!block)
            return tell(Kind::kBroken, L"it sorts no block");
        if (sortentsTable(*block) != &table)
            tell(Kind::kBroken, L"the block that it sorts does not know it");
        const auto& present = block->entityIds();
        const std::set<MxDbObjectId> members(present.begin(), present.end());
        for (const MxDbObjectId& id : table.listedEntities()) {
            if (id.isValid() && !members.contains(id))
                tell(Kind::kBroken, L"it sorts " + hex(id) + L", which is not in its block");
        }
    }

    DatabaseImp& m_database;
    const MxDbObject* m_object = nullptr;
    std::unordered_map<const ObjectStub*, int> m_listed;
    std::vector<AuditFinding> m_findings;
};

} // namespace

std::vector<AuditFinding> audit(MxDbDatabase& database) {
    return Audit(database.imp()).run();
}

} // namespace merix::db
