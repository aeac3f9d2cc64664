// SPDX-License-Identifier: MIT
// A clone is made in two steps. First every object is made anew with the fields of its original and put in its place;
// what it refers to may still be the originals', even of another drawing. When all are made, finishClones turns the
// references: to the clone where there is one, else to the original in the same drawing and to nothing in another.
#include "merix/db/clone.h"

#include "host/db/id_mapping.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/db/id_tape.h"
#include "merix/db/reactors.h"
#include "merix/db/tables.h"

#include <algorithm>
#include <set>
#include <utility>

namespace merix::db {

namespace {

template <class T> const T* as(const MxDbObject* object) {
    return object && object->isKindOf(T::desc()) ? static_cast<const T*>(object) : nullptr;
}

std::unique_ptr<MxDbObject> makeAnew(const MxDbObject& original) {
    std::unique_ptr<MxRxObject> made(original.isA()->create());
    // A kept record says what it is in the text of its file, with the handles of that file: it has no copy.
    const bool fits = made && made->isA() == original.isA() && !as<KeptEntity>(&original) && !as<KeptObject>(&original);
    return std::unique_ptr<MxDbObject>(fits ? static_cast<MxDbObject*>(made.release()) : nullptr);
}

/// A record refers to a line type, that one to a text style; what goes on longer is a damaged file's.
constexpr std::size_t kDeepestRecord = 8;
/// Things owned by things owned: deeper ones are not copied, so that a damaged file cannot use up the stack.
constexpr int kDeepestCopy = 200;

/// How many references an object files before its own fields: its extension dictionary and its reactors.
std::size_t linksOf(const MxDbObject& object) {
    const ObjectData& data = object.data();
    const auto listed = std::count_if(data.reactors.begin(), data.reactors.end(), mxdbIsPersistentReactor);
    return static_cast<std::size_t>(listed) + (data.extensionDictionary.isNull() ? 0 : 1);
}

/// A name beginning like `name` (that of an anonymous block, one letter behind the asterisk) that no block has.
std::wstring freeAnonymousName(const DatabaseImp& database, const std::wstring& name) {
    for (std::size_t number = 0;; ++number) {
        std::wstring candidate = name.substr(0, 2) + std::to_wstring(number);
        if (database.blockNamed(candidate).isNull())
            return candidate;
    }
}

/// Brings records that are referred to by name into the drawing `target`.
class Records {
public:
    Records(DatabaseImp& target, MxDbIdMapping& map)
        : m_target(target)
        , m_map(map) {}

    /// The record there that stands for `id`, which belongs to another drawing; null when it is no such record.
    MxDbObjectId bring(MxDbObjectId id) {
        const MxDbObject* record = DatabaseImp::peek(id);
        if (const auto* block = as<MxDbBlockTableRecord>(record))
            return bringBlock(*block);
        if (const auto* layer = as<LayerRecord>(record))
            return bringRecord(*layer, m_target.layerNamed(layer->name), m_target.roots.layerTable);
        if (const auto* linetype = as<LinetypeRecord>(record))
            return bringRecord(*linetype, m_target.linetypeNamed(linetype->name), m_target.roots.linetypeTable);
        if (const auto* style = as<TextStyleRecord>(record))
            return bringRecord(*style, m_target.textStyleNamed(style->name), m_target.roots.textStyleTable);
        return {};
    }

private:
    template <class T> MxDbObjectId bringRecord(const T& record, MxDbObjectId present, MxDbObjectId table) {
        const bool takesPart = m_underWay.size() < kDeepestRecord && !m_underWay.contains(record.objectId());
        if (present.isNull() && takesPart) {
            auto made = std::make_unique<T>();
            m_underWay.insert(record.objectId());
            const auto turn = [this, links = linksOf(record)](MxDbObjectId id) mutable {
                return links > 0 && links-- ? MxDbObjectId() : bring(id);
            };
            const auto status = copyFields(record, *made, &m_target.self(), turn);
            m_underWay.erase(record.objectId());
            if (status != Mx::eOk)
                return {};
            made->data().extensionDictionary = {};
            made->data().reactors.clear();
            if (MxDbObject* added = appendRecord(m_target, table, std::move(made))) {
                present = added->objectId();
                added->close();
            }
        }
        if (!present.isNull())
            m_map.assign(record.objectId(), present);
        return present;
    }

    MxDbObjectId bringBlock(const MxDbBlockTableRecord& block) {
        const bool anonymous = block.name().starts_with(L'*');
        MxDbObjectId present = anonymous ? MxDbObjectId() : m_target.blockNamed(block.name());
        if (present.isNull()) {
            auto made = std::make_unique<MxDbBlockTableRecord>();
            m_target.setBlock(*made, anonymous ? freeAnonymousName(m_target, block.name()) : block.name(),
                              block.origin());
            // Stays open until it is filled, which is how finishClones knows it.
            if (const MxDbObject* added = appendRecord(m_target, m_target.roots.blockTable, std::move(made)))
                present = added->objectId();
        }
        m_map.assign(block.objectId(), present);
        return present;
    }

    DatabaseImp& m_target;
    MxDbIdMapping& m_map;
    std::set<MxDbObjectId> m_underWay; ///< a damaged record may refer to itself
};

std::wstring keyOf(const MxDbObject& original) {
    const auto* dictionary = as<MxDbDictionary>(DatabaseImp::peek(original.ownerId()));
    if (dictionary) {
        const ReadAccess readable(*dictionary);
        for (const auto& [key, id] : dictionary->entries()) {
            if (id == original.objectId())
                return key;
        }
    }
    return L"*U";
}

bool isExtensionDictionary(const MxDbObject& object) {
    const MxDbObject* owner = DatabaseImp::peek(object.ownerId());
    return owner && owner->extensionDictionary() == object.objectId();
}

/// Puts a new clone where its owner keeps such things. The clone belongs to the drawing from then on, unless the status
/// is not eOk.
Mx::ErrorStatus place(const MxDbObject& original, MxDbObject& clone, MxDbObject& owner) {
    MxDbObjectId id;
    if (isExtensionDictionary(original)) {
        if (!owner.extensionDictionary().isNull())
            return Mx::eHasExtensionDictionary;
        owner.assertWriteEnabled();
        const auto status = owner.data().stub->database->append(&clone, owner.objectId(), id);
        if (status == Mx::eOk)
            owner.data().extensionDictionary = id;
        return status;
    }
    if (owner.isKindOf(MxDbBlockTableRecord::desc()) && clone.data().isEntity)
        return static_cast<MxDbBlockTableRecord&>(owner).appendMxDbEntity(id, static_cast<MxDbEntity*>(&clone));
    if (owner.isKindOf(MxDbDictionary::desc()) && !clone.data().isEntity)
        return static_cast<MxDbDictionary&>(owner).setAt(keyOf(original).c_str(), &clone, id);
    return Mx::eNotApplicable;
}

void cloneExtension(const MxDbObject& original, MxDbObject& clone, MxDbIdMapping& map, bool wblock) {
    const MxDbObject* extension = DatabaseImp::peek(original.extensionDictionary());
    if (!extension)
        return;
    MxDbObject* copy = nullptr;
    const ReadAccess readable(*extension);
    if (wblock)
        extension->wblockClone(&clone, copy, map, false);
    else
        extension->deepClone(&clone, copy, map, false);
    if (copy)
        copy->close();
}

Mx::ErrorStatus cloneInto(const MxDbObject& original, MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                          bool wblock) {
    clone = nullptr;
    if (!owner || !owner->data().stub || !original.data().stub)
        return Mx::eNoDatabase;
    DatabaseImp& target = *owner->data().stub->database;
    if (!wblock && original.data().stub->database != &target)
        return Mx::eWrongDatabase;
    if (!map.clone(original.objectId()).isNull())
        return Mx::eOk;
    std::unique_ptr<MxDbObject> made = makeAnew(original);
    if (!made)
        return Mx::eNotApplicable;
    Records records(target, map);
    const auto turn = [&, links = linksOf(original)](MxDbObjectId id) mutable {
        // Reactors are left to finishClones: they come along only when they are copied themselves.
        const bool isLink = links > 0 && links--;
        if (isLink || id.stub()->database == &target)
            return id;
        if (const MxDbObjectId known = map.clone(id); !known.isNull())
            return known;
        const MxDbObjectId brought = records.bring(id);
        return brought.isNull() ? id : brought;
    };
    if (const auto status = copyFields(original, *made, &target.self(), turn); status != Mx::eOk)
        return status;
    made->data().extensionDictionary = {};
    if (const auto status = place(original, *made, *owner); status != Mx::eOk)
        return status;
    clone = made.release();
    map.assign(original.objectId(), clone->objectId());

    cloneExtension(original, *clone, map, wblock);
    tellPersistent(original, [&](MxDbObject& reactor) { reactor.copied(&original, clone); });
    return Mx::eOk;
}

void closeAll(const std::vector<MxDbObject*>& objects) {
    for (MxDbObject* object : objects)
        object->close();
}

/// Copies the entities of a definition that came along into its copy, which is open and empty.
void fillBlock(const MxDbBlockTableRecord& original, MxDbBlockTableRecord& copy, MxDbIdMapping& map) {
    std::vector<MxDbObject*> made;
    for (const MxDbObjectId& id : original.entityIds()) {
        const MxDbObject* entity = DatabaseImp::peek(id);
        if (!entity)
            continue;
        const ReadAccess readable(*entity);
        MxDbObject* clone = nullptr;
        if (entity->wblockClone(&copy, clone, map, false) == Mx::eOk && clone)
            made.push_back(clone);
    }
    // What hangs on the block may sort its entities.
    cloneExtension(original, copy, map, true);
    closeAll(made);
    copy.close();
}

/// Turns what one clone refers to, now that all are made.
void turnReferences(MxDbObject& clone, const MxDbIdMapping& map, const std::set<MxDbObjectId>& clones,
                    DatabaseImp& target) {
    const MxDbObjectId extension = clone.data().extensionDictionary;
    const auto turn = [&](MxDbObjectId id) {
        const MxDbObjectId known = map.clone(id);
        if (!known.isNull())
            return known;
        return id.stub()->database == &target ? id : MxDbObjectId();
    };
    const auto& entries = referencesOf(clone).entries;
    if (std::any_of(entries.begin(), entries.end(),
                    [&](const IdTape::Entry& entry) { return !entry.id.isNull() && turn(entry.id) != entry.id; }))
        copyFields(clone, clone, &target.self(), turn);
    clone.data().extensionDictionary = extension;
    std::erase_if(clone.data().reactors, [&clones](const MxDbReactorEntry& entry) {
        return mxdbIsPersistentReactor(entry) && !clones.contains(entry.persistent);
    });
}

struct Unit {
    explicit Unit(UndoRecorder& recorder)
        : undo(recorder) {
        undo.begin(L"Copy");
    }
    ~Unit() { undo.end(); }
    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;
    UndoRecorder& undo;
};

int g_copyDepth = 0;

/// One more level of a copy for as long as it lives.
struct CopyLevel {
    CopyLevel() { ++g_copyDepth; }
    ~CopyLevel() { --g_copyDepth; }
    CopyLevel(const CopyLevel&) = delete;
    CopyLevel& operator=(const CopyLevel&) = delete;
    bool isTooDeep() const { return g_copyDepth > kDeepestCopy; }
};

} // namespace

MxDbObject* appendRecord(DatabaseImp& database, MxDbObjectId tableId, std::unique_ptr<MxDbObject> record) {
    SymbolTable* table = nullptr;
    if (mxdbOpenObject(table, tableId, Mx::kForWrite) != Mx::eOk)
        return nullptr;
    table->assertWriteEnabled();
    MxDbObjectId id;
    MxDbObject* added = nullptr;
    if (database.append(record.get(), tableId, id) == Mx::eOk) {
        added = record.release();
        table->records.push_back(id);
        database.namesChanged();
    }
    table->close();
    return added;
}

void finishClones(MxDbIdMapping& map, DatabaseImp& target) {
    // Filling one definition may bring others along.
    for (bool more = true; std::exchange(more, false);) {
        for (const auto& [original, clone] : std::map(map.clones())) {
            const auto* block = as<MxDbBlockTableRecord>(DatabaseImp::peek(original));
            auto* copy = target.block(clone);
            if (!block || !copy || !copy->data().isNew)
                continue;
            fillBlock(*block, *copy, map);
            more = true;
        }
    }
    std::set<MxDbObjectId> clones;
    for (const auto& [original, clone] : map.clones())
        clones.insert(clone);
    for (const auto& [original, clone] : map.clones()) {
        MxDbObject* object = DatabaseImp::peek(clone);
        if (object && !as<SymbolRecord>(object) && !as<MxDbBlockTableRecord>(object))
            turnReferences(*object, map, clones, target);
    }
}

std::vector<MxDbObjectId> cloneEntities(const std::vector<MxDbObjectId>& entities, MxDbObjectId ownerBlock,
                                        const MxGeMatrix3d& map) {
    MxDbBlockTableRecord* owner = nullptr;
    if (mxdbOpenObject(owner, ownerBlock, Mx::kForWrite) != Mx::eOk)
        return {};
    DatabaseImp& target = *owner->data().stub->database;
    const WorkingDatabaseScope working(&target.self());
    const Unit unit(target.undo);
    MxDbIdMapping made;
    std::vector<MxDbObject*> clones;
    for (const MxDbObjectId& id : entities) {
        MxDbEntity* entity = nullptr;
        if (mxdbOpenObject(entity, id, Mx::kForRead) != Mx::eOk)
            continue;
        MxDbObject* clone = nullptr;
        const bool here = id.stub()->database == &target;
        const auto status = here ? entity->deepClone(owner, clone, made) : entity->wblockClone(owner, clone, made);
        if (status == Mx::eOk && clone)
            clones.push_back(clone);
        entity->close();
    }
    finishClones(made, target);
    std::vector<MxDbObjectId> ids;
    for (MxDbObject* clone : clones) {
        if (map == MxGeMatrix3d() || static_cast<MxDbEntity*>(clone)->transformBy(map) == Mx::eOk)
            ids.push_back(clone->objectId());
        else
            clone->erase();
    }
    closeAll(clones);
    owner->close();
    return ids;
}

std::vector<MxDbObjectId> wblockEntities(const std::vector<MxDbObjectId>& entities, MxDbDatabase& target,
                                         const MxGePoint3d& base) {
    return cloneEntities(entities, target.imp().roots.modelSpace,
                         MxGeMatrix3d::translation({-base.x, -base.y, -base.z}));
}

} // namespace merix::db

using namespace merix::db;

Mx::ErrorStatus MxDbObject::deepClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map, bool isPrimary) const {
    assertReadEnabled();
    clone = nullptr;
    const CopyLevel level;
    return level.isTooDeep() ? Mx::eNotApplicable : subDeepClone(owner, clone, map, isPrimary);
}

Mx::ErrorStatus MxDbObject::wblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                        bool isPrimary) const {
    assertReadEnabled();
    clone = nullptr;
    const CopyLevel level;
    return level.isTooDeep() ? Mx::eNotApplicable : subWblockClone(owner, clone, map, isPrimary);
}

Mx::ErrorStatus MxDbObject::subDeepClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map, bool) const {
    return cloneInto(*this, owner, clone, map, false);
}

Mx::ErrorStatus MxDbObject::subWblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map, bool) const {
    return cloneInto(*this, owner, clone, map, true);
}
