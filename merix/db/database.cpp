// SPDX-License-Identifier: MIT
#include "merix/db/database_imp.h"

#include "merix/db/entities.h"
#include "merix/db/layout.h"
#include "merix/db/reactors.h"
#include "merix/db/tables.h"
#include "merix/rx/text.h"

#include <algorithm>
#include <utility>

namespace merix::db {

namespace {

std::vector<DatabaseImp*>& databases() {
    static auto* const all = new std::vector<DatabaseImp*>;
    return *all;
}

class HostApplicationServices final : public MxDbHostApplicationServices {
public:
    MxDbDatabase* workingDatabase() const override { return m_working; }
    MxDbDatabase* m_working = nullptr;
};

HostApplicationServices& services() {
    static auto* const instance = new HostApplicationServices;
    return *instance;
}

} // namespace

const std::wstring* nameOfRecord(const MxDbObject* record) {
    if (!record)
        return nullptr;
    if (record->isKindOf(MxDbBlockTableRecord::desc()))
        return &static_cast<const MxDbBlockTableRecord*>(record)->name();
    if (record->isKindOf(SymbolRecord::desc()))
        return &static_cast<const SymbolRecord*>(record)->name;
    return nullptr;
}

const std::vector<DatabaseImp*>& openDatabases() {
    return databases();
}

DatabaseImp::DatabaseImp(MxDbDatabase& self)
    : undo(*this)
    , m_self(self) {
    databases().push_back(this);
}

DatabaseImp::~DatabaseImp() {
    undo.setEnabled(false);
    for (ObjectStub& stub : m_stubs) {
        if (!stub.object)
            continue;
        tellTransient(*stub.object, [&](MxDbObjectReactor& reactor) { reactor.goodbye(stub.object); });
        stub.object->data().reactors.clear();
    }
    for (ObjectStub& stub : m_stubs)
        delete std::exchange(stub.object, nullptr);
    std::erase(databases(), this);
    if (services().m_working == &m_self)
        services().m_working = nullptr;
}

ObjectStub* DatabaseImp::find(MxDbHandle handle) const {
    const auto found = m_byHandle.find(handle.value());
    return found == m_byHandle.end() ? nullptr : found->second;
}

ObjectStub* DatabaseImp::reserve(MxDbHandle handle) {
    const auto [place, isNew] = m_byHandle.try_emplace(handle.value(), nullptr);
    if (isNew) {
        ObjectStub& stub = m_stubs.emplace_back();
        stub.handle = handle;
        stub.database = this;
        place->second = &stub;
    }
    return place->second;
}

MxDbHandle DatabaseImp::allocateHandle() {
    while (m_nextHandle == 0 || m_byHandle.contains(m_nextHandle))
        ++m_nextHandle;
    return MxDbHandle(m_nextHandle++);
}

void DatabaseImp::raiseNextHandle(std::uint64_t next) {
    m_nextHandle = std::max(m_nextHandle, next);
}

ObjectStub* DatabaseImp::adopt(MxDbObject* object, MxDbHandle handle, MxDbObjectId owner) {
    std::unique_ptr<MxDbObject> owned(object);
    if (!owned || owned->data().stub)
        mxrx_abort(L"only a new object can be put behind a handle");
    ObjectStub* stub = reserve(handle.isNull() ? allocateHandle() : handle);
    if (stub->object)
        return nullptr;
    stub->object = owned.release();
    ObjectData& data = object->data();
    data.stub = stub;
    data.owner = owner;
    if (data.isEntity) {
        if (auto& layer = static_cast<EntityData&>(data).traits.layer; layer.isNull())
            layer = layerForName(L"0");
    } else if (nameOfRecord(object)) {
        ++m_namesVersion;
    }
    return stub;
}

Mx::ErrorStatus DatabaseImp::append(MxDbObject* object, MxDbObjectId owner, MxDbObjectId& id) {
    if (!object)
        return Mx::eNullEntity;
    ObjectData& data = object->data();
    if (data.stub)
        return Mx::eAlreadyInDatabase;
    ObjectStub* stub = reserve(allocateHandle());
    stub->object = object;
    data.stub = stub;
    data.owner = owner;
    data.writer = data.isNew = true;
    data.erasedAtOpen = false;
    id = MxDbObjectId(stub);
    if (data.isEntity) {
        if (auto& layer = static_cast<EntityData&>(data).traits.layer; layer.isNull())
            layer = layerForName(header.currentLayer);
    }
    markChanged(*object);
    undo.record({UndoStep::Kind::kAppend, id, {}, {}});
    return Mx::eOk;
}

void DatabaseImp::adoptEntity(MxDbBlockTableRecord& record, MxDbObjectId id) {
    record.m_entities.push_back(id);
}

void DatabaseImp::setBlock(MxDbBlockTableRecord& record, std::wstring name, const MxGePoint3d& origin) {
    record.m_name = std::move(name);
    record.m_origin = origin;
    namesChanged();
}

void DatabaseImp::setBlockLayout(MxDbBlockTableRecord& record, MxDbObjectId layout) {
    record.m_layoutId = layout;
}

MxDbObjectId DatabaseImp::blockLayout(const MxDbBlockTableRecord& record) const {
    return record.m_layoutId;
}

MxDbObjectId DatabaseImp::named(MxDbObjectId tableId, NameIndex& index, std::wstring_view name) const {
    const MxDbObject* table = peek(tableId);
    if (!table || !table->isKindOf(SymbolTable::desc()))
        return {};
    const auto& records = static_cast<const SymbolTable*>(table)->records;
    if (index.records != records.size() || index.version != m_namesVersion) {
        index.ids.clear();
        for (const MxDbObjectId& id : records) {
            if (const std::wstring* recordName = nameOfRecord(peek(id)))
                index.ids.try_emplace(rx::foldCase(*recordName), id);
        }
        index.records = records.size();
        index.version = m_namesVersion;
    }
    const auto found = index.ids.find(rx::foldCase(name));
    return found == index.ids.end() || !peek(found->second) ? MxDbObjectId() : found->second;
}

MxDbObjectId DatabaseImp::blockNamed(std::wstring_view name) const {
    return named(roots.blockTable, m_blockNames, name);
}
MxDbObjectId DatabaseImp::linetypeNamed(std::wstring_view name) const {
    return named(roots.linetypeTable, m_linetypeNames, name);
}
MxDbObjectId DatabaseImp::textStyleNamed(std::wstring_view name) const {
    return named(roots.textStyleTable, m_textStyleNames, name);
}

MxDbObjectId DatabaseImp::layerNamed(std::wstring_view name) const {
    if (const MxDbObjectId listed = named(roots.layerTable, m_layerNames, name); !listed.isNull())
        return listed;
    const auto implicit = m_implicitLayers.find(rx::foldCase(name));
    return implicit == m_implicitLayers.end() ? MxDbObjectId() : implicit->second;
}

MxDbObjectId DatabaseImp::layerForName(std::wstring_view name) {
    if (const MxDbObjectId known = layerNamed(name); !known.isNull())
        return known;
    ObjectStub& stub = m_stubs.emplace_back();
    stub.database = this;
    auto layer = std::make_unique<LayerRecord>();
    layer->name = name;
    layer->linetype = linetypeNamed(L"Continuous");
    layer->data().stub = &stub;
    layer->data().owner = roots.layerTable;
    stub.object = layer.release();
    return m_implicitLayers[rx::foldCase(name)] = MxDbObjectId(&stub);
}

void DatabaseImp::listImplicitLayers() {
    if (m_implicitLayers.empty())
        return;
    auto* table = static_cast<SymbolTable*>(peek(roots.layerTable));
    if (!table) {
        auto made = std::make_unique<SymbolTable>();
        made->dxfType = "LAYER";
        table = made.get();
        roots.layerTable = MxDbObjectId(adopt(made.release(), {}, {}));
    }
    // In the order in which they were made, so that the same drawing gives the same file.
    for (ObjectStub& stub : m_stubs) {
        if (!stub.handle.isNull() || !stub.object)
            continue;
        stub.handle = allocateHandle();
        m_byHandle[stub.handle.value()] = &stub;
        stub.object->data().owner = roots.layerTable;
        table->records.push_back(MxDbObjectId(&stub));
        markChanged(*stub.object);
    }
    m_implicitLayers.clear();
    markChanged(*table);
}

MxDbBlockTableRecord* DatabaseImp::block(MxDbObjectId id) const {
    MxDbObject* object = peek(id);
    return object && object->isKindOf(MxDbBlockTableRecord::desc()) ? static_cast<MxDbBlockTableRecord*>(object)
                                                                    : nullptr;
}

std::vector<DatabaseImp::LayoutInfo> DatabaseImp::layouts() const {
    std::vector<std::pair<int, LayoutInfo>> found;
    const auto* table = static_cast<const SymbolTable*>(peek(roots.blockTable));
    for (const MxDbObjectId& id : table ? table->records : std::vector<MxDbObjectId>()) {
        const MxDbBlockTableRecord* record = block(id);
        const MxDbObject* object = record ? peek(record->m_layoutId) : nullptr;
        if (!object || !object->isKindOf(Layout::desc()))
            continue;
        const auto* layout = static_cast<const Layout*>(object);
        const int order = id == roots.modelSpace ? -1 : layout->tabOrder;
        found.push_back({order, {layout->name, id, record->m_layoutId}});
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<LayoutInfo> all;
    // A drawing older than layouts has its model space all the same.
    if (found.empty() || found.front().first != -1)
        all.push_back({L"Model", roots.modelSpace, {}});
    for (auto& [order, info] : found)
        all.push_back(std::move(info));
    return all;
}

void DatabaseImp::replaceObject(MxDbObject& old, std::unique_ptr<MxDbObject> fresh) {
    ObjectData& from = old.data();
    ObjectData& to = fresh->data();
    ObjectStub* stub = from.stub;
    to.stub = stub;
    to.owner = from.owner;
    to.extensionDictionary = from.extensionDictionary;
    to.reactors = std::move(from.reactors);
    to.source = std::move(from.source);
    to.changedSinceSave = from.changedSinceSave;
    to.sourceStale = from.sourceStale;
    to.graphicsVersion = from.graphicsVersion + 1;
    from.reactors.clear();
    if (to.isEntity && from.isEntity)
        static_cast<EntityData&>(to).traits = static_cast<EntityData&>(from).traits;
    stub->object = fresh.release();
    delete &old;
    if (!stub->erased)
        notifyModified(*stub->object);
}

void DatabaseImp::addListener(DatabaseListener* listener) {
    m_listeners.push_back(listener);
}
void DatabaseImp::removeListener(DatabaseListener* listener) {
    std::erase(m_listeners, listener);
}

void DatabaseImp::notifyAppended(MxDbObject& object) {
    for (std::size_t i = 0; i < m_listeners.size(); ++i)
        m_listeners[i]->objectAppended(object);
}
void DatabaseImp::notifyModified(MxDbObject& object) {
    for (std::size_t i = 0; i < m_listeners.size(); ++i)
        m_listeners[i]->objectModified(object);
}
void DatabaseImp::notifyGraphicsModified(MxDbObject& object) {
    for (std::size_t i = 0; i < m_listeners.size(); ++i)
        m_listeners[i]->objectGraphicsModified(object);
}
void DatabaseImp::notifyErased(MxDbObject& object, bool erasing) {
    for (std::size_t i = 0; i < m_listeners.size(); ++i)
        m_listeners[i]->objectErased(object, erasing);
}

void DatabaseImp::notifyHighlighted(MxDbObject& entity, bool highlighted) {
    for (std::size_t i = 0; i < m_listeners.size(); ++i)
        m_listeners[i]->entityHighlighted(entity, highlighted);
}

void DatabaseImp::changeHeader(const Header& changed) {
    if (changed == header)
        return;
    undo.record({UndoStep::Kind::kHeader, {}, {}, {}, std::make_shared<Header>(header)});
    header = changed;
    notifyHeaderChanged();
}

void DatabaseImp::notifyHeaderChanged() {
    m_headerChanged = true;
    for (std::size_t i = 0; i < m_listeners.size(); ++i)
        m_listeners[i]->headerChanged();
}

void DatabaseImp::markChanged(MxDbObject& object) {
    ObjectData& data = object.data();
    data.sourceStale = true;
    if (!data.isEntity && nameOfRecord(&object))
        ++m_namesVersion;
    if (!std::exchange(data.changedSinceSave, true))
        m_changed.push_back(object.objectId());
}

void DatabaseImp::clearChanged() {
    for (const MxDbObjectId& id : m_changed) {
        if (MxDbObject* object = peek(id, true))
            object->data().changedSinceSave = false;
    }
    m_changed.clear();
    m_headerChanged = false;
}

void setWorkingDatabase(MxDbDatabase* database) {
    services().m_working = database;
}

bool leavesFiles(const MxDbObject& container, MxDbObjectId entry) {
    return container.data().stub && entry.isValid() && !DatabaseImp::peek(entry);
}

WorkingDatabaseScope::WorkingDatabaseScope(MxDbDatabase* database)
    : m_before(std::exchange(services().m_working, database)) {}

WorkingDatabaseScope::~WorkingDatabaseScope() {
    services().m_working = m_before;
}

} // namespace merix::db

MxDbHostApplicationServices* mxdbHostApplicationServices() {
    return &merix::db::services();
}

MxDbDatabase::MxDbDatabase()
    : m_imp(std::make_unique<merix::db::DatabaseImp>(*this)) {}

MxDbDatabase::~MxDbDatabase() = default;

Mx::ErrorStatus MxDbDatabase::getMxDbObjectId(MxDbObjectId& id, bool createIfNotFound, const MxDbHandle& handle,
                                              unsigned) {
    id = MxDbObjectId();
    if (handle.isNull())
        return Mx::eUnknownHandle;
    merix::db::ObjectStub* stub = createIfNotFound ? m_imp->reserve(handle) : m_imp->find(handle);
    if (!stub)
        return Mx::eUnknownHandle;
    id = MxDbObjectId(stub);
    return Mx::eOk;
}

MxDbObjectId MxDbDatabase::currentSpaceId() const {
    return m_imp->currentSpace.isNull() ? m_imp->roots.modelSpace : m_imp->currentSpace;
}

MxDbObjectId MxDbDatabase::namedObjectsDictionaryId() const {
    return m_imp->roots.namedObjects;
}

MxDbObjectId MxDbDatabase::blockTableId() const {
    return m_imp->roots.blockTable;
}

MxDbObjectId MxDbDatabase::linetypeTableId() const {
    return m_imp->roots.linetypeTable;
}

Mx::ErrorStatus MxDbDatabase::getNamedObjectsDictionary(MxDbDictionary*& dictionary, Mx::OpenMode mode) {
    return mxdbOpenObject(dictionary, m_imp->roots.namedObjects, mode);
}
