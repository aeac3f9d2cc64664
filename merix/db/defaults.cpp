// SPDX-License-Identifier: MIT
// The minimal drawing: what every DXF reader since release 2000 expects to find.
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/db/layout.h"
#include "merix/db/tables.h"
#include "merix/rx/text.h"

namespace merix::db {

namespace {

/// Builds the objects; each is made, put behind a new handle and named in its container.
class Defaults {
public:
    explicit Defaults(DatabaseImp& database)
        : m_database(database) {}

    void makeTables();
    void makeSpaces();
    void makeRecords();
    void makeDictionaries();

private:
    template <class T> T* adopt(std::unique_ptr<T> object, MxDbObjectId owner) {
        return static_cast<T*>(m_database.adopt(object.release(), {}, owner)->object);
    }
    MxDbObjectId makeTable(const char* dxfType) {
        auto table = std::make_unique<SymbolTable>();
        table->dxfType = dxfType;
        return adopt(std::move(table), {})->objectId();
    }
    template <class T> T* addRecord(MxDbObjectId tableId, std::unique_ptr<T> record) {
        T* added = adopt(std::move(record), tableId);
        static_cast<SymbolTable*>(DatabaseImp::peek(tableId))->records.push_back(added->objectId());
        return added;
    }
    void addSpace(MxDbObjectId& root, const wchar_t* name) {
        auto* record = addRecord(m_database.roots.blockTable, std::make_unique<MxDbBlockTableRecord>());
        m_database.setBlock(*record, name, {});
        root = record->objectId();
    }
    LinetypeRecord* addLinetype(const wchar_t* name) {
        auto record = std::make_unique<LinetypeRecord>();
        record->name = name;
        return addRecord(m_database.roots.linetypeTable, std::move(record));
    }
    /// A record of which only its text matters; `tags` follow its handle and owner.
    void addKept(MxDbObjectId tableId, const char* dxfName, int handleCode, const std::string& tags);
    MxDbDictionary* addDictionary(MxDbDictionary& parent, const wchar_t* key);
    void addLayout(MxDbDictionary& parent, const wchar_t* name, std::int16_t order, MxDbObjectId space);
    /// Containers are closed objects here: filling them in needs no open and leaves no trace in undo.
    MxDbObjectId setEntry(MxDbDictionary& parent, const wchar_t* key, std::unique_ptr<MxDbObject> object);

    DatabaseImp& m_database;
};

std::string hex(MxDbHandle handle) {
    wchar_t text[17];
    handle.getIntoAsciiBuffer(text);
    return rx::toUtf8(text);
}

void Defaults::addKept(MxDbObjectId tableId, const char* dxfName, int handleCode, const std::string& tags) {
    auto* kept = addRecord(tableId, std::make_unique<KeptObject>());
    kept->dxfName = dxfName;
    kept->dxfTags = std::to_string(handleCode) + "\n" + hex(kept->objectId().handle()) + "\n330\n" +
                    hex(tableId.handle()) + "\n100\nAcDbSymbolTableRecord\n" + tags;
}

void Defaults::makeTables() {
    auto& roots = m_database.roots;
    roots.viewportTable = makeTable("VPORT");
    roots.linetypeTable = makeTable("LTYPE");
    roots.layerTable = makeTable("LAYER");
    roots.textStyleTable = makeTable("STYLE");
    roots.viewTable = makeTable("VIEW");
    roots.ucsTable = makeTable("UCS");
    roots.appIdTable = makeTable("APPID");
    roots.dimStyleTable = makeTable("DIMSTYLE");
    roots.blockTable = makeTable("BLOCK_RECORD");
}

void Defaults::makeSpaces() {
    addSpace(m_database.roots.modelSpace, L"*Model_Space");
    addSpace(m_database.roots.paperSpace, L"*Paper_Space");
    m_database.currentSpace = m_database.roots.modelSpace;
}

void Defaults::makeRecords() {
    const auto& roots = m_database.roots;
    addLinetype(L"ByBlock");
    addLinetype(L"ByLayer");
    auto* continuous = addLinetype(L"Continuous");
    continuous->description = L"Solid line";
    auto layer = std::make_unique<LayerRecord>();
    layer->name = L"0";
    layer->linetype = continuous->objectId();
    addRecord(roots.layerTable, std::move(layer));
    auto style = std::make_unique<TextStyleRecord>();
    style->name = L"Standard";
    addRecord(roots.textStyleTable, std::move(style));
    addKept(roots.appIdTable, "APPID", 5, "100\nAcDbRegAppTableRecord\n2\nACAD\n70\n0\n");
    addKept(roots.dimStyleTable, "DIMSTYLE", 105, "100\nAcDbDimStyleTableRecord\n2\nStandard\n70\n0\n");
    addKept(
        roots.viewportTable, "VPORT", 5,
        "100\nAcDbViewportTableRecord\n2\n*Active\n70\n0\n10\n0.0\n20\n0.0\n11\n1.0\n21\n1.0\n12\n210.0\n22\n148.5\n"
        "13\n0.0\n23\n0.0\n14\n10.0\n24\n10.0\n15\n10.0\n25\n10.0\n16\n0.0\n26\n0.0\n36\n1.0\n17\n0.0\n27\n0.0\n"
        "37\n0.0\n40\n297.0\n41\n1.5\n42\n50.0\n43\n0.0\n44\n0.0\n50\n0.0\n51\n0.0\n71\n0\n72\n1000\n73\n1\n74\n3\n"
        "75\n0\n76\n0\n77\n0\n78\n0\n");
}

MxDbObjectId Defaults::setEntry(MxDbDictionary& parent, const wchar_t* key, std::unique_ptr<MxDbObject> object) {
    MxDbObject* open = nullptr;
    mxdbOpenObject(open, parent.objectId(), Mx::kForWrite);
    MxDbObjectId id;
    MxDbObject* added = object.release();
    parent.setAt(key, added, id);
    added->close();
    parent.close();
    return id;
}

MxDbDictionary* Defaults::addDictionary(MxDbDictionary& parent, const wchar_t* key) {
    const MxDbObjectId id = setEntry(parent, key, std::make_unique<MxDbDictionary>());
    return static_cast<MxDbDictionary*>(DatabaseImp::peek(id));
}

void Defaults::addLayout(MxDbDictionary& parent, const wchar_t* name, std::int16_t order, MxDbObjectId space) {
    auto layout = std::make_unique<Layout>();
    layout->name = name;
    layout->tabOrder = order;
    layout->block = space;
    const MxDbObjectId id = setEntry(parent, name, std::move(layout));
    m_database.setBlockLayout(*m_database.block(space), id);
}

void Defaults::makeDictionaries() {
    auto* root = adopt(std::make_unique<MxDbDictionary>(), {});
    m_database.roots.namedObjects = root->objectId();
    addDictionary(*root, L"ACAD_GROUP");
    MxDbDictionary* layouts = addDictionary(*root, kLayoutDictionary);
    addLayout(*layouts, L"Model", 0, m_database.roots.modelSpace);
    addLayout(*layouts, L"Layout1", 1, m_database.roots.paperSpace);
}

} // namespace

void DatabaseImp::createDefaults() {
    undo.setEnabled(false);
    Defaults defaults(*this);
    defaults.makeTables();
    defaults.makeSpaces();
    defaults.makeRecords();
    defaults.makeDictionaries();
    undo.setEnabled(true);
    clearChanged();
}

} // namespace merix::db
