// SPDX-License-Identifier: MIT
// Objects are made in the order in which they name each other: line types, styles, layers, blocks, then entities and
// objects of the host's own kinds, then those of modules, which may open any other object while they are read.
#include "merix/io/dxf_reader.h"

#include "merix/db/tables.h"
#include "merix/io/database_filler.h"
#include "merix/io/dxf_binary.h"
#include "merix/io/dxf_record.h"
#include "merix/io/dxf_split.h"
#include "merix/io/dxf_value.h"

#include <algorithm>

namespace merix::io {
namespace {

using db::DatabaseImp;
using Role = Part::Role;

class Reader {
public:
    Reader(DxfSplit split, const PlaceNamer& placeName, const std::string& name, MxDbDatabase& database)
        : m_split(std::move(split))
        , m_placeName(placeName)
        , m_parts(*m_split.parts)
        , m_name(name)
        , m_database(database)
        , m_imp(database.imp())
        , m_encoding(m_parts.encoding()) {}

    FileResult run();

private:
    RecordPlace placeOf(const DxfRecord& record) const;
    void makeTables();
    void makeTableRecords(std::string_view kind);
    void makeBlocks();
    void makeRest(bool ofModules);
    void fillBlocks();
    void make(const DxfRecord& record, RecordPlace place, MxDbObjectId owner);
    /// True, with a note, when another object has the handle of the record.
    bool isTaken(const DxfRecord& record);
    MxDbObjectId ownerOf(const DxfRecord& record, RecordPlace place);
    void note(const DxfRecord& record, const std::string& what) {
        m_result.notes.push_back(m_name + ": " + m_placeName(record.line) + ": " + what);
    }

    DxfSplit m_split;
    const PlaceNamer& m_placeName;
    DrawingParts& m_parts;
    const std::string& m_name;
    MxDbDatabase& m_database;
    DatabaseImp& m_imp;
    DxfEncoding m_encoding;
    FileResult m_result;
    std::vector<db::ObjectStub*> m_stubs; ///< by record
};

FileResult Reader::run() {
    for (const std::string& text : m_split.notes)
        m_result.notes.push_back(m_name + ": " + text);
    m_imp.raiseNextHandle(std::max(m_split.lastHandle + 1, m_parts.handSeed < kHandleBound ? m_parts.handSeed : 0));
    m_imp.header = m_split.header;
    if (!m_split.currentLayer.empty())
        m_imp.header.currentLayer = m_encoding.decode(m_split.currentLayer);
    if (!m_split.currentLinetype.empty())
        m_imp.header.currentLinetype = m_encoding.decode(m_split.currentLinetype);
    m_stubs.assign(m_split.records.size(), nullptr);
    // Handles that the file gives are taken before any is given out.
    for (const DxfRecord& record : m_split.records) {
        if (record.handle != 0)
            m_imp.reserve(MxDbHandle(record.handle));
    }
    makeTables();
    makeTableRecords("LTYPE");
    makeTableRecords("STYLE");
    makeTableRecords("LAYER");
    makeTableRecords("");
    makeBlocks();
    findSpaces(m_imp, m_parts);
    makeRest(false);
    // Blocks have their entities before modules read theirs: an attached note asks for the size of an insert.
    fillBlocks();
    makeRest(true);
    for (std::size_t i = 0; i < m_stubs.size(); ++i)
        m_parts.parts[m_split.records[i].part].run.push_back(m_stubs[i]);
    findNamedObjects(m_imp, m_parts);
    m_imp.clearChanged();
    m_imp.fileParts = std::move(m_split.parts);
    return std::move(m_result);
}

RecordPlace Reader::placeOf(const DxfRecord& record) const {
    switch (m_parts.parts[record.part].role) {
    case Role::kTable:
        return RecordPlace::kTable;
    case Role::kTableRun:
        return RecordPlace::kTableRecord;
    case Role::kObjectRun:
        return RecordPlace::kObject;
    default:
        return RecordPlace::kEntity;
    }
}

bool Reader::isTaken(const DxfRecord& record) {
    const db::ObjectStub* known = record.handle != 0 ? m_imp.find(MxDbHandle(record.handle)) : nullptr;
    if (!known || !known->object)
        return false;
    note(record, "the handle " + fromHandle(record.handle) + " of this " + std::string(record.name) +
                     " is taken; nothing refers to the record");
    return true;
}

void Reader::make(const DxfRecord& record, RecordPlace place, MxDbObjectId owner) {
    DxfObject made;
    if (record.damaged)
        made.object = makeKeptObject(m_database, m_encoding, record.text, place);
    else
        made = makeDxfObject(m_database, m_encoding, record.text, place);
    if (!made.refusal.empty())
        note(record, std::string(record.name) + " is kept as it came: " + made.refusal);
    readObjectLinks(m_database, record.text, made.object->data());
    made.object->data().source = {m_parts.buffers.front(), record.text};
    const MxDbHandle handle(isTaken(record) ? 0 : record.handle);
    db::ObjectStub* stub = m_imp.adopt(made.object.release(), handle, owner);
    m_stubs[static_cast<std::size_t>(&record - m_split.records.data())] = stub;
}

void Reader::makeTables() {
    for (const DxfRecord& record : m_split.records) {
        if (placeOf(record) != RecordPlace::kTable)
            continue;
        make(record, RecordPlace::kTable, MxDbObjectId());
        db::ObjectStub* stub = m_stubs[static_cast<std::size_t>(&record - m_split.records.data())];
        // The run of the table's records follows its head.
        m_parts.parts[record.part].owner = m_parts.parts[record.part + 1].owner = stub;
        MxDbObjectId* root = tableRoot(m_imp.roots, trimmed(record.subject));
        if (root && root->isNull() && stub->object->isKindOf(db::SymbolTable::desc()))
            *root = MxDbObjectId(stub);
    }
    addMissingTables(m_imp, m_parts);
}

/// The records of the kind, all that are left when it is empty.
void Reader::makeTableRecords(std::string_view kind) {
    for (std::size_t i = 0; i < m_stubs.size(); ++i) {
        const DxfRecord& record = m_split.records[i];
        if (m_stubs[i] || placeOf(record) != RecordPlace::kTableRecord || (!kind.empty() && record.name != kind))
            continue;
        db::ObjectStub* table = m_parts.parts[record.part].owner;
        make(record, RecordPlace::kTableRecord, MxDbObjectId(table));
        if (table->object->isKindOf(db::SymbolTable::desc()))
            static_cast<db::SymbolTable*>(table->object)->records.emplace_back(m_stubs[i]);
    }
}

void Reader::makeBlocks() {
    for (const DxfRecord& record : m_split.blocks) {
        const std::wstring name = m_encoding.decode(trimmed(record.subject));
        MxDbBlockTableRecord* block = nullptr;
        if (record.owner != 0)
            block = m_imp.block(MxDbObjectId(m_imp.find(MxDbHandle(record.owner))));
        if (!block)
            block = m_imp.block(m_imp.blockNamed(name));
        if (!block)
            block = addImpliedBlock(m_imp, m_parts, name);
        MxGePoint3d origin;
        DxfScanner scanner(record.text);
        for (DxfTag tag; scanner.next(tag) == DxfScanner::Result::kTag;) {
            if (tag.code == 10)
                origin.x = toDouble(tag.value);
            else if (tag.code == 20)
                origin.y = toDouble(tag.value);
            else if (tag.code == 30)
                origin.z = toDouble(tag.value);
        }
        m_imp.setBlock(*block, block->name().empty() ? name : block->name(), origin);
        for (std::size_t i = record.part; i < m_parts.parts.size() && i < record.part + 3; ++i) {
            const Role role = m_parts.parts[i].role;
            if (role == Role::kBlockBegin || role == Role::kBlockRun || role == Role::kBlockEnd)
                m_parts.parts[i].owner = block->data().stub;
        }
    }
}

MxDbObjectId Reader::ownerOf(const DxfRecord& record, RecordPlace place) {
    const MxDbObjectId named(record.owner != 0 ? m_imp.reserve(MxDbHandle(record.owner)) : nullptr);
    if (place != RecordPlace::kEntity)
        return named;
    if (db::ObjectStub* block = m_parts.parts[record.part].owner)
        return MxDbObjectId(block);
    if (m_imp.block(named))
        return named;
    return record.paper ? m_imp.roots.paperSpace : m_imp.roots.modelSpace;
}

void Reader::makeRest(bool ofModules) {
    for (std::size_t i = 0; i < m_stubs.size(); ++i) {
        const DxfRecord& record = m_split.records[i];
        const RecordPlace place = placeOf(record);
        if (m_stubs[i] || place == RecordPlace::kTable || place == RecordPlace::kTableRecord)
            continue;
        if (isModuleRecord(record.name, place) == ofModules)
            make(record, place, ownerOf(record, place));
    }
}

/// In file order; what is not made yet gets its handle now.
void Reader::fillBlocks() {
    for (std::size_t i = 0; i < m_stubs.size(); ++i) {
        DxfRecord& record = m_split.records[i];
        if (placeOf(record) != RecordPlace::kEntity)
            continue;
        const MxDbObjectId owner =
            m_stubs[i] ? m_stubs[i]->object->data().owner : ownerOf(record, RecordPlace::kEntity);
        if (!m_stubs[i] && (record.handle == 0 || isTaken(record)))
            record.handle = m_imp.allocateHandle().value();
        const MxDbObjectId id(m_stubs[i] ? m_stubs[i] : m_imp.reserve(MxDbHandle(record.handle)));
        if (MxDbBlockTableRecord* block = m_imp.block(owner))
            m_imp.adoptEntity(*block, id);
    }
}

FileResult damaged(const std::string& name, const std::string& error) {
    const bool drawing = error.find("no DXF drawing") == std::string::npos;
    return {drawing ? Mx::eFileDamaged : Mx::eFileNotADrawing, name + ": " + error, {}};
}

FileResult readTags(std::shared_ptr<const std::string> text, DxfForm form, const PlaceNamer& placeName,
                    const std::string& name, MxDbDatabase& database) {
    DxfSplit split = splitDxf(std::move(text), placeName);
    if (!split.error.empty())
        return damaged(name, split.error);
    split.parts->form = split.parts->sourceForm = form;
    const db::WorkingDatabaseScope working(&database);
    database.imp().undo.setEnabled(false);
    FileResult result = Reader(std::move(split), placeName, name, database).run();
    database.imp().undo.setEnabled(true);
    return result;
}

FileResult readBinaryDxf(std::shared_ptr<const std::string> buffer, const std::string& name, MxDbDatabase& database) {
    BinaryDxfText binary = binaryDxfToText(*buffer);
    buffer.reset();
    if (!binary.error.empty())
        return damaged(name, binary.error);
    const PlaceNamer nameByte = [&binary](std::uint32_t line) {
        const std::size_t tag = std::min<std::size_t>((line - 1) / 2, binary.offsets.size() - 1);
        return "byte " + std::to_string(binary.offsets[tag]);
    };
    return readTags(std::make_shared<const std::string>(std::move(binary.text)), binary.form, nameByte, name, database);
}

} // namespace

FileResult readDxf(std::shared_ptr<const std::string> buffer, const std::string& name, MxDbDatabase& database) {
    if (isBinaryDxf(*buffer))
        return readBinaryDxf(std::move(buffer), name, database);
    return readTags(std::move(buffer), DxfForm::kText, nameLine, name, database);
}

} // namespace merix::io
