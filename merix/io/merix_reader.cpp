// SPDX-License-Identifier: MIT
#include "merix/io/merix_reader.h"

#include "merix/db/database_imp.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"
#include "merix/io/database_filler.h"
#include "merix/io/dxf_record.h"
#include "merix/io/dxf_split.h"
#include "merix/io/dxf_value.h"
#include "merix/io/file_access.h"
#include "merix/io/merix_schema.h"
#include "merix/io/sqlite_file.h"
#include "merix/io/stream_tags.h"

#include <algorithm>
#include <limits>
#include <map>
#include <sys/stat.h>
#include <unordered_map>

namespace merix::io {
namespace {

using db::ObjectStub;
using Role = Part::Role;

/// What a reader says of a file that is not as it should be.
class Damaged : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Ids and places in the order of rows count up from small numbers.
constexpr std::int64_t kIdBound = std::int64_t{1} << 53;

struct Row {
    MxDbHandle handle;
    std::int64_t classId = 0, run = 0;
    std::uint64_t owner = 0;
    bool stale = false;
    std::string_view text;
    std::string stream, tags;
    ObjectStub* stub = nullptr;
};

struct ClassName {
    std::string name, dxf;
};

DxfForm formOf(const std::string& text) {
    const std::int64_t value = toInteger(text);
    return value >= 0 && value <= static_cast<std::int64_t>(DxfForm::kShortBinary) ? static_cast<DxfForm>(value)
                                                                                   : DxfForm::kText;
}

/// The id of a part or class: there is room for more behind it.
std::int64_t checkedId(std::int64_t id) {
    if (id < 1 || id >= kIdBound)
        throw Damaged("the drawing is damaged: the id of a part or class is out of range");
    return id;
}

class Reader {
public:
    Reader(const std::string& path, MxDbDatabase& database)
        : m_path(path)
        , m_database(database)
        , m_imp(database.imp())
        , m_file(path, SqliteFile::Mode::kRead) {}

    FileResult run();

private:
    void checkFile();
    void readMeta();
    void readText();
    std::string_view takeText(std::int64_t at, std::int64_t size);
    void readParts();
    void readRows();
    void readStreams();
    void makeAll();
    void make(Row& row);
    std::unique_ptr<MxDbObject> makeObject(const Row& row, RecordPlace place, std::string& refusal);
    RecordPlace placeOf(const Row& row) const;
    bool isOfModule(const Row& row) const;
    void setRoots();
    void fillBlocks();
    ObjectStub* reserve(std::int64_t handle);
    std::string meta(const std::string& key) const {
        const auto found = m_meta.find(key);
        return found == m_meta.end() ? std::string() : found->second;
    }
    std::uint64_t unpackedBound() const;

    std::string m_path;
    MxDbDatabase& m_database;
    db::DatabaseImp& m_imp;
    SqliteFile m_file;
    FileResult m_result;
    std::unique_ptr<DrawingParts> m_parts = std::make_unique<DrawingParts>();
    std::map<std::string, std::string> m_meta;
    std::map<std::int64_t, ClassName> m_classes;
    std::unordered_map<std::int64_t, std::size_t> m_partById;
    std::vector<Row> m_rows;
    std::uint64_t m_textTaken = 0;
    Packer m_packer;
};

/// Nothing real is packed thousandfold; what claims to be is made to exhaust the memory.
std::uint64_t Reader::unpackedBound() const {
    struct stat status {};
    const std::uint64_t size = ::stat(m_path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
    return size * 1024 + (std::uint64_t{16} << 20);
}

void Reader::checkFile() {
    const auto pragma = [this](const char* sql) {
        SqliteStatement statement(m_file, sql);
        const std::int64_t value = statement.step() ? statement.integer(0) : 0;
        statement.execute();
        return value;
    };
    if (pragma("PRAGMA application_id") != kMerixApplicationId)
        throw Damaged("this is no Merix drawing");
    if (pragma("PRAGMA user_version") > kMerixVersion)
        throw Damaged("the drawing was saved by a later version of Merix");
    SqliteStatement schema(m_file, "SELECT type, name, sql FROM sqlite_schema");
    std::size_t tables = 0;
    while (schema.step()) {
        const auto* expected = std::find_if(kMerixSchema.begin(), kMerixSchema.end(),
                                            [&](const SchemaTable& table) { return table.name == schema.bytes(1); });
        if (schema.bytes(0) != "table" || expected == kMerixSchema.end() || schema.bytes(2) != expected->sql)
            throw Damaged("the drawing holds what does not belong there: " +
                          std::string(schema.bytes(1).substr(0, 80)));
        ++tables;
    }
    if (tables != kMerixSchema.size())
        throw Damaged("the drawing lacks a table");
}

void Reader::readMeta() {
    SqliteStatement rows(m_file, "SELECT key, value FROM meta");
    while (rows.step())
        m_meta.emplace(rows.bytes(0), rows.bytes(1));
    m_parts->version = meta("dxf_version");
    m_parts->codePage = meta("code_page");
    m_parts->lineEnd = meta("line_end") == "crlf" ? "\r\n" : "\n";
    m_parts->form = formOf(meta("dxf_form"));
    m_parts->sourceForm = formOf(meta("dxf_source_form"));
    m_parts->handSeed = toHandle(meta("hand_seed"));
    std::string_view names = m_meta["class_names"];
    for (std::size_t end = names.find('\n'); end != std::string_view::npos; end = names.find('\n')) {
        m_parts->classNames.emplace(names.substr(0, end));
        names.remove_prefix(end + 1);
    }
    auto& header = m_imp.header;
    std::string_view extents = m_meta["extents"];
    for (double* value :
         {&header.extMin.x, &header.extMin.y, &header.extMin.z, &header.extMax.x, &header.extMax.y, &header.extMax.z}) {
        const std::size_t end = extents.find(' ');
        if (end == std::string_view::npos)
            break;
        *value = toDouble(extents.substr(0, end));
        extents.remove_prefix(end + 1);
    }
    header.currentLayer = fromUtf8(meta("current_layer"));
    if (const std::string linetype = meta("current_linetype"); !linetype.empty()) { // older drawings lack these four
        header.currentLinetype = fromUtf8(linetype);
        header.currentLinetypeScale = toDouble(meta("current_linetype_scale"));
        header.currentColor =
            static_cast<std::int16_t>(std::clamp<std::int64_t>(toInteger(meta("current_color")), 0, 256));
        header.currentLineWeight =
            static_cast<std::int16_t>(std::clamp<std::int64_t>(toInteger(meta("current_line_weight")), -3, 211));
    }
    header.linetypeScale = toDouble(meta("linetype_scale"));
    header.textSize = toDouble(meta("text_size"));
    header.insUnits = static_cast<std::int16_t>(std::clamp<std::int64_t>(toInteger(meta("ins_units")), 0, 100));
    if (const std::uint64_t next = toHandle(meta("next_handle")); next < kHandleBound)
        m_imp.raiseNextHandle(next);
    SqliteStatement classes(m_file, "SELECT id, name, dxf FROM class");
    while (classes.step())
        m_classes[checkedId(classes.integer(0))] = {std::string(classes.bytes(1)), std::string(classes.bytes(2))};
}

void Reader::readText() {
    std::string all;
    const std::uint64_t bound = unpackedBound();
    SqliteStatement rows(m_file, "SELECT at, size, data FROM text ORDER BY at");
    while (rows.step()) {
        const std::int64_t at = rows.integer(0), size = rows.integer(1);
        if (at != static_cast<std::int64_t>(all.size()) || size < 0 || size > static_cast<std::int64_t>(kTextPiece) ||
            all.size() + static_cast<std::size_t>(size) > bound ||
            !m_packer.unpack(rows.bytes(2), static_cast<std::size_t>(size), all))
            throw Damaged("the drawing is damaged: its text at " + std::to_string(at) + " cannot be read");
    }
    m_parts->keep(std::move(all));
}

/// A text of one row or part; writers give each its own.
std::string_view Reader::takeText(std::int64_t at, std::int64_t size) {
    const std::string& all = *m_parts->buffers.front();
    if (at < 0 || size < 0 || static_cast<std::uint64_t>(at) > all.size() ||
        static_cast<std::uint64_t>(size) > all.size() - static_cast<std::uint64_t>(at))
        throw Damaged("the drawing is damaged: a text ends behind its end");
    m_textTaken += static_cast<std::uint64_t>(size);
    if (m_textTaken > all.size())
        throw Damaged("the drawing is damaged: its texts overlap");
    return std::string_view(all).substr(static_cast<std::size_t>(at), static_cast<std::size_t>(size));
}

ObjectStub* Reader::reserve(std::int64_t handle) {
    if (handle < 0 || static_cast<std::uint64_t>(handle) >= kHandleBound)
        throw Damaged("the drawing is damaged: a handle is out of range");
    return handle == 0 ? nullptr : m_imp.reserve(MxDbHandle(static_cast<std::uint64_t>(handle)));
}

void Reader::readParts() {
    SqliteStatement rows(m_file, "SELECT id, role, owner, text_at, text_size FROM part ORDER BY seq");
    while (rows.step()) {
        const std::int64_t role = rows.integer(1);
        if (role < 0 || role >= Part::kRoles)
            throw Damaged("the drawing is damaged: a part of an unknown kind");
        Part part;
        part.role = static_cast<Role>(role);
        part.owner = reserve(rows.integer(2));
        part.text = takeText(rows.integer(3), rows.integer(4));
        part.id = checkedId(rows.integer(0));
        m_partById[part.id] = m_parts->parts.size();
        m_parts->parts.push_back(std::move(part));
    }
}

void Reader::readRows() {
    SqliteStatement rows(m_file, "SELECT handle, class, owner, run, stale, text_at, text_size, stream FROM object "
                                 "ORDER BY run, seq");
    while (rows.step()) {
        Row row;
        row.stub = reserve(rows.integer(0));
        if (!row.stub)
            throw Damaged("the drawing is damaged: an object without handle");
        row.handle = row.stub->handle;
        row.classId = rows.integer(1);
        const ObjectStub* owner = reserve(rows.integer(2));
        row.owner = owner ? owner->handle.value() : 0;
        row.run = rows.integer(3);
        row.stale = rows.integer(4) != 0;
        row.text = takeText(rows.integer(5), rows.integer(6));
        row.stream = rows.bytes(7);
        if (!m_classes.contains(row.classId) || (row.run != kImpliedRun && !m_partById.contains(row.run)))
            throw Damaged("the drawing is damaged: object " + fromHandle(row.handle.value()) + " belongs nowhere");
        m_rows.push_back(std::move(row));
    }
}

void Reader::readStreams() {
    std::unordered_map<std::uint64_t, Row*> byHandle;
    for (Row& row : m_rows)
        byHandle.emplace(row.handle.value(), &row);
    const std::uint64_t bound = unpackedBound();
    std::uint64_t total = 0;
    SqliteStatement rows(m_file, "SELECT object, size, data FROM bytes");
    while (rows.step()) {
        const bool ofTags = rows.integer(0) < 0 && rows.integer(0) > std::numeric_limits<std::int64_t>::min();
        const std::int64_t handle = ofTags ? tagsKey(rows.integer(0)) : rows.integer(0);
        const auto found = byHandle.find(static_cast<std::uint64_t>(handle));
        const std::int64_t size = rows.integer(1);
        if (size < 0 || size > std::numeric_limits<std::int32_t>::max())
            throw Damaged("the drawing is damaged: a stream is out of range");
        total += static_cast<std::uint64_t>(size);
        if (total > bound ||
            (found != byHandle.end() && !m_packer.unpack(rows.bytes(2), static_cast<std::size_t>(size),
                                                         ofTags ? found->second->tags : found->second->stream)))
            throw Damaged("the drawing is damaged: the stream of object " +
                          fromHandle(static_cast<std::uint64_t>(handle)) + " cannot be read");
    }
}

RecordPlace Reader::placeOf(const Row& row) const {
    if (row.run != kImpliedRun) {
        switch (m_parts->parts[m_partById.at(row.run)].role) {
        case Role::kTable:
            return RecordPlace::kTable;
        case Role::kTableRun:
            return RecordPlace::kTableRecord;
        case Role::kBlockRun:
        case Role::kEntityRun:
            return RecordPlace::kEntity;
        default:
            return RecordPlace::kObject;
        }
    }
    const ClassName& name = m_classes.at(row.classId);
    if (name.dxf == "TABLE")
        return RecordPlace::kTable;
    return name.dxf == "LAYER" || name.dxf == "BLOCK_RECORD" ? RecordPlace::kTableRecord : RecordPlace::kObject;
}

bool Reader::isOfModule(const Row& row) const {
    const ClassName& name = m_classes.at(row.classId);
    return isModuleClass(mxrxFindMxRxClass(fromUtf8(name.name).c_str())) || isModuleRecord(name.dxf, placeOf(row));
}

template <class Kept, class Base>
std::unique_ptr<MxDbObject> keepStream(MxDbDatabase& database, const ClassName& name, const Row& row) {
    auto kept = std::make_unique<Kept>();
    // What every object has stands at the beginning of its stream.
    db::DwgReader base(row.stream, MxDbFilerType::kFile, &database);
    kept->Base::dwgInFields(&base);
    kept->dxfName = name.dxf;
    kept->className = fromUtf8(name.name);
    kept->image = row.stream;
    unpackTags(row.tags, row.stream, kept->dxfTags);
    return kept;
}

std::unique_ptr<MxDbObject> Reader::makeObject(const Row& row, RecordPlace place, std::string& refusal) {
    const ClassName& name = m_classes.at(row.classId);
    const bool entity = place == RecordPlace::kEntity;
    if (row.stream.empty()) {
        DxfObject made = makeDxfObject(m_database, m_parts->encoding(), row.text, place);
        refusal = made.refusal;
        return std::move(made.object);
    }
    const MxRxClass* aClass = mxrxFindMxRxClass(fromUtf8(name.name).c_str());
    const bool fits =
        aClass && aClass->isDerivedFrom(MxDbObject::desc()) && aClass->isDerivedFrom(MxDbEntity::desc()) == entity;
    std::unique_ptr<MxDbObject> object(fits ? static_cast<MxDbObject*>(aClass->create()) : nullptr);
    if (object) {
        const bool block = object->isKindOf(MxDbBlockTableRecord::desc());
        const auto status = db::readDwgImage(*object, row.stream, block ? MxDbFilerType::kUndo : MxDbFilerType::kFile);
        if (status == Mx::eOk)
            return object;
        refusal = "status " + std::to_string(static_cast<int>(status));
    }
    if (!isModuleClass(aClass) && !row.text.empty() && !row.stale) {
        object = makeKeptObject(m_database, m_parts->encoding(), row.text, place);
        readObjectLinks(m_database, row.text, object->data());
        return object;
    }
    return entity ? keepStream<db::KeptEntity, MxDbEntity>(m_database, name, row)
                  : keepStream<db::KeptObject, MxDbObject>(m_database, name, row);
}

void Reader::make(Row& row) {
    std::string refusal;
    std::unique_ptr<MxDbObject> object = makeObject(row, placeOf(row), refusal);
    if (!refusal.empty())
        m_result.notes.push_back(m_path + ": object " + fromHandle(row.handle.value()) + ": " +
                                 m_classes.at(row.classId).dxf + " is kept as it came: " + refusal);
    db::ObjectData& data = object->data();
    if (row.stream.empty())
        readObjectLinks(m_database, row.text, data);
    if (!row.text.empty())
        data.source = {m_parts->buffers.front(), row.text};
    data.sourceStale = row.stale;
    const MxDbObjectId owner(row.owner != 0 ? m_imp.reserve(MxDbHandle(row.owner)) : nullptr);
    m_imp.adopt(object.release(), row.handle, owner);
}

void Reader::makeAll() {
    const auto makeWhere = [this](auto wanted) {
        for (Row& row : m_rows) {
            if (!row.stub->object && wanted(row))
                make(row);
        }
    };
    const auto is = [this](RecordPlace place) {
        return [this, place](const Row& row) { return placeOf(row) == place; };
    };
    makeWhere(is(RecordPlace::kTable));
    setRoots();
    makeWhere(is(RecordPlace::kTableRecord));
    makeWhere([this](const Row& row) { return !isOfModule(row); });
    fillBlocks();
    makeWhere([](const Row&) { return true; });
    for (Row& row : m_rows) {
        if (row.run == kImpliedRun)
            m_parts->implied.insert(row.stub);
        else
            m_parts->parts[m_partById[row.run]].run.push_back(row.stub);
    }
}

void Reader::setRoots() {
    for (const Row& row : m_rows) {
        if (!row.stub->object || !row.stub->object->isKindOf(db::SymbolTable::desc()))
            continue;
        MxDbObjectId* root = tableRoot(m_imp.roots, static_cast<db::SymbolTable&>(*row.stub->object).dxfType);
        if (root && root->isNull())
            *root = MxDbObjectId(row.stub);
    }
    addMissingTables(m_imp, *m_parts);
}

void Reader::fillBlocks() {
    const auto space = [this](const char* key) {
        MxDbObjectId id(m_imp.find(MxDbHandle(toHandle(meta(key)))));
        return m_imp.block(id) ? id : MxDbObjectId();
    };
    m_imp.roots.modelSpace = space("model_space");
    m_imp.roots.paperSpace = space("paper_space");
    if (m_imp.roots.modelSpace.isNull() || m_imp.roots.paperSpace.isNull())
        findSpaces(m_imp, *m_parts);
    m_imp.currentSpace = m_imp.roots.modelSpace;
    for (const Row& row : m_rows) {
        if (placeOf(row) != RecordPlace::kEntity)
            continue;
        const MxDbObjectId owner(m_imp.find(MxDbHandle(row.owner)));
        if (MxDbBlockTableRecord* block = m_imp.block(owner))
            m_imp.adoptEntity(*block, MxDbObjectId(row.stub));
    }
}

FileResult Reader::run() {
    checkFile();
    readMeta();
    readText();
    readParts();
    readRows();
    readStreams();
    makeAll();
    const MxDbObjectId named(m_imp.find(MxDbHandle(toHandle(meta("named_objects")))));
    const MxDbObject* root = db::DatabaseImp::peek(named);
    if (root && root->isKindOf(MxDbDictionary::desc()))
        m_imp.roots.namedObjects = named;
    else
        findNamedObjects(m_imp, *m_parts);
    m_imp.clearChanged();
    m_parts->origin = std::make_unique<DrawingParts::Origin>(DrawingParts::Origin{
        finalPath(m_path), meta("save_id"), static_cast<std::int64_t>(m_parts->buffers.front()->size()),
        std::clamp<std::int64_t>(toInteger(meta("next_seq")), 0, kIdBound)});
    m_imp.fileParts = std::move(m_parts);
    return std::move(m_result);
}

} // namespace

FileResult readMerix(const std::string& path, MxDbDatabase& database) {
    const db::WorkingDatabaseScope working(&database);
    database.imp().undo.setEnabled(false);
    FileResult result;
    try {
        result = Reader(path, database).run();
    } catch (const Damaged& damage) {
        result.status = Mx::eFileDamaged;
        result.error = path + ": " + damage.what();
    } catch (const SqliteError& error) {
        result.status = Mx::eFileDamaged;
        result.error = path + ": the drawing cannot be read: " + error.what();
    }
    database.imp().undo.setEnabled(true);
    return result;
}

} // namespace merix::io
