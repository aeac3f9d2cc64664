// SPDX-License-Identifier: MIT
#include "merix/io/merix_writer.h"

#include "merix/db/access.h"
#include "merix/db/entities.h"
#include "merix/db/kept_records.h"
#include "merix/db/tables.h"
#include "merix/io/dxf_record.h"
#include "merix/io/dxf_value.h"
#include "merix/io/file_access.h"
#include "merix/io/merix_schema.h"
#include "merix/io/object_placement.h"
#include "merix/io/sqlite_file.h"
#include "merix/io/stream_tags.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <optional>
#include <sys/random.h>
#include <unistd.h>
#include <unordered_map>

namespace merix::io {
namespace {

using db::ObjectStub;

std::string newSaveId() {
    std::array<unsigned char, 16> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw SqliteError(std::strerror(errno), 0);
    return fromBytes(bytes.data(), bytes.size());
}

std::int64_t handleOf(const ObjectStub* stub) {
    return stub ? static_cast<std::int64_t>(stub->handle.value()) : 0;
}

/// What a row says of an object's content.
struct Content {
    std::string className, dxfName, stream;
    std::string tags; ///< packed DXF tags of a class that may be absent when the drawing is opened
};

/// The DXF text that the object came with says it all.
bool hasTrueText(const MxDbObject& object) {
    return !object.data().source.empty() && !object.data().sourceStale;
}

Content contentOf(const MxDbObject& object) {
    Content content;
    content.dxfName = dxfNameOf(object);
    if (object.isA() == db::KeptEntity::desc() || object.isA() == db::KeptObject::desc()) {
        content.stream = object.data().isEntity ? static_cast<const db::KeptEntity&>(object).image
                                                : static_cast<const db::KeptObject&>(object).image;
        if (!content.stream.empty()) {
            content.className = toUtf8(db::keptClassName(object));
            content.tags = packTags(tagsForKeeping(object), content.stream);
        }
        return content;
    }
    content.className = toUtf8(object.isA()->name());
    // The filing that leaves out which entities a block has: their order is that of their rows, so that one entity more
    // is one row more and not a new list.
    const bool block = object.isKindOf(MxDbBlockTableRecord::desc());
    content.stream = db::dwgImage(object, block ? MxDbFilerType::kUndo : MxDbFilerType::kFile);
    if (isModuleClass(object.isA()) && !hasTrueText(object))
        content.tags = packTags(tagsForKeeping(object), content.stream);
    return content;
}

/// Text appended to the drawing's text, piece by piece.
class TextWriter {
public:
    TextWriter(SqliteFile& file, Packer& packer, std::int64_t at)
        : m_insert(file, "INSERT INTO text(at, size, data) VALUES(?, ?, ?)")
        , m_packer(packer)
        , m_at(at) {}

    /// Where the text stands.
    std::int64_t append(std::string_view text) {
        const std::int64_t at = m_at + static_cast<std::int64_t>(m_pending.size());
        while (!text.empty()) {
            const std::string_view piece = text.substr(0, kTextPiece - m_pending.size());
            m_pending.append(piece);
            text.remove_prefix(piece.size());
            if (m_pending.size() == kTextPiece)
                flush();
        }
        return at;
    }
    void flush() {
        if (m_pending.empty())
            return;
        m_insert.bind(1, m_at).bind(2, static_cast<std::int64_t>(m_pending.size()));
        m_insert.bindBlob(3, m_packer.pack(m_pending)).execute();
        m_at += static_cast<std::int64_t>(m_pending.size());
        m_pending.clear();
    }
    std::int64_t end() const { return m_at + static_cast<std::int64_t>(m_pending.size()); }

private:
    SqliteStatement m_insert;
    Packer& m_packer;
    std::int64_t m_at;
    std::string m_pending;
};

/// Rows of one file, inside one transaction.
class RowWriter {
public:
    RowWriter(SqliteFile& file, db::DatabaseImp& database, DrawingParts& parts, std::int64_t textAt)
        : m_file(file)
        , m_database(database)
        , m_parts(parts)
        , m_text(file, m_packer, textAt)
        , m_insert(file, "INSERT INTO object(class, owner, stale, stream, handle, run, seq, text_at, text_size) "
                         "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)")
        , m_update(file, "UPDATE object SET class = ?, owner = ?, stale = ?, stream = ? WHERE handle = ?")
        , m_updateText(file, "UPDATE object SET text_at = ?, text_size = ? WHERE handle = ?")
        , m_delete(file, "DELETE FROM object WHERE handle = ?")
        , m_insertBytes(file, "INSERT INTO bytes(object, size, data) VALUES(?, ?, ?)")
        , m_deleteBytes(file, "DELETE FROM bytes WHERE object = ?")
        , m_insertClass(file, "INSERT INTO class(id, name, dxf) VALUES(?, ?, ?)") {}

    void readClasses() {
        SqliteStatement rows(m_file, "SELECT id, name, dxf FROM class");
        while (rows.step()) {
            m_classes[{std::string(rows.bytes(1)), std::string(rows.bytes(2))}] = rows.integer(0);
            m_nextClass = std::max(m_nextClass, rows.integer(0) + 1);
        }
    }

    void insert(const ObjectStub& stub, std::int64_t run, std::int64_t seq) {
        const MxDbObject& object = *stub.object;
        const Content content = contentOf(object);
        const std::string_view text = currentText(stub, content);
        bindContent(m_insert, stub, content, text);
        m_insert.bind(5, handleOf(&stub)).bind(6, run).bind(7, seq).bind(8, m_text.append(text));
        m_insert.bind(9, static_cast<std::int64_t>(text.size())).execute();
        writeBytes(stub, content);
    }

    /// False when there is no such row.
    bool update(const ObjectStub& stub) {
        const Content content = contentOf(*stub.object);
        const std::string_view text = currentText(stub, content);
        bindContent(m_update, stub, content, text);
        m_update.bind(5, handleOf(&stub)).execute();
        if (m_file.changes() == 0)
            return false;
        if (m_newTexts.contains(&stub)) {
            m_updateText.bind(1, m_text.append(text)).bind(2, static_cast<std::int64_t>(text.size()));
            m_updateText.bind(3, handleOf(&stub)).execute();
        }
        removeBytes(stub);
        writeBytes(stub, content);
        return true;
    }

    void remove(const ObjectStub& stub) {
        m_delete.bind(1, handleOf(&stub)).execute();
        removeBytes(stub);
    }

    void writeParts() {
        m_file.run("DELETE FROM part");
        SqliteStatement row(m_file, "INSERT INTO part(id, seq, role, owner, text_at, text_size) "
                                    "VALUES(?, ?, ?, ?, ?, ?)");
        std::int64_t seq = 0;
        for (const Part& part : m_parts.parts) {
            row.bind(1, part.id).bind(2, seq++).bind(3, static_cast<std::int64_t>(part.role));
            row.bind(4, handleOf(part.owner)).bind(5, m_text.append(part.text));
            row.bind(6, static_cast<std::int64_t>(part.text.size())).execute();
        }
    }

    /// Everything else; gives what the next save has to know.
    DrawingParts::Origin finish(const std::string& path, std::int64_t nextSeq) {
        m_text.flush();
        DrawingParts::Origin origin{path, newSaveId(), m_text.end(), nextSeq};
        const auto& header = m_database.header;
        std::string extents;
        for (const double value :
             {header.extMin.x, header.extMin.y, header.extMin.z, header.extMax.x, header.extMax.y, header.extMax.z})
            extents += fromDouble(value) + " ";
        std::string classNames;
        for (const std::string& name : m_parts.classNames)
            classNames += name + "\n";
        const auto& roots = m_database.roots;
        const std::map<std::string, std::string> values = {
            {"class_names", classNames},
            {"code_page", m_parts.codePage},
            {"current_color", std::to_string(header.currentColor)},
            {"current_layer", toUtf8(header.currentLayer)},
            {"current_line_weight", std::to_string(header.currentLineWeight)},
            {"current_linetype", toUtf8(header.currentLinetype)},
            {"current_linetype_scale", fromDouble(header.currentLinetypeScale)},
            {"dxf_form", std::to_string(static_cast<int>(m_parts.form))},
            {"dxf_source_form", std::to_string(static_cast<int>(m_parts.sourceForm))},
            {"dxf_version", m_parts.version},
            {"extents", extents},
            {"hand_seed", fromHandle(m_parts.handSeed)},
            {"ins_units", std::to_string(header.insUnits)},
            {"line_end", m_parts.lineEnd == "\r\n" ? "crlf" : "lf"},
            {"linetype_scale", fromDouble(header.linetypeScale)},
            {"model_space", fromHandle(roots.modelSpace.handle().value())},
            {"named_objects", fromHandle(roots.namedObjects.handle().value())},
            {"next_handle", fromHandle(m_database.nextHandle())},
            {"next_seq", std::to_string(nextSeq)},
            {"paper_space", fromHandle(roots.paperSpace.handle().value())},
            {"save_id", origin.saveId},
            {"text_size", fromDouble(header.textSize)},
        };
        SqliteStatement row(m_file, "INSERT OR REPLACE INTO meta(key, value) VALUES(?, ?)");
        for (const auto& [key, value] : values)
            row.bindText(1, key).bindText(2, value).execute();
        return origin;
    }

    /// Texts that records of absent classes have now, for their objects once all is written.
    std::unordered_map<const ObjectStub*, std::shared_ptr<const std::string>> takeTexts() {
        return std::move(m_newTexts);
    }

private:
    std::int64_t classId(const Content& content) {
        const auto [place, isNew] = m_classes.try_emplace({content.className, content.dxfName}, m_nextClass);
        if (isNew)
            m_insertClass.bind(1, m_nextClass++).bindText(2, content.className).bindText(3, content.dxfName).execute();
        return place->second;
    }

    /// The DXF text that belongs to the row. What has no stream says all it has to say in its text.
    std::string_view currentText(const ObjectStub& stub, const Content& content) {
        const db::ObjectData& data = stub.object->data();
        if (!content.stream.empty() || (!data.sourceStale && !data.source.empty()))
            return data.source.text;
        auto text = std::make_shared<const std::string>(currentRecord(*stub.object, m_parts));
        return *m_newTexts.insert_or_assign(&stub, std::move(text)).first->second;
    }

    void bindContent(SqliteStatement& row, const ObjectStub& stub, const Content& content, std::string_view text) {
        const db::ObjectData& data = stub.object->data();
        const bool stale = data.sourceStale && !text.empty() && !m_newTexts.contains(&stub);
        row.bind(1, classId(content)).bind(2, handleOf(data.owner.stub())).bind(3, stale ? 1 : 0);
        if (content.stream.size() <= kLongestInlineStream)
            row.bindBlob(4, content.stream);
        else
            row.bindNull(4);
    }

    void removeBytes(const ObjectStub& stub) {
        for (const std::int64_t key : {handleOf(&stub), tagsKey(handleOf(&stub))})
            m_deleteBytes.bind(1, key).execute();
    }

    void writeBytes(const ObjectStub& stub, const Content& content) {
        if (content.stream.size() > kLongestInlineStream)
            writeBytes(handleOf(&stub), content.stream);
        if (!content.tags.empty())
            writeBytes(tagsKey(handleOf(&stub)), content.tags);
    }
    void writeBytes(std::int64_t key, std::string_view bytes) {
        m_insertBytes.bind(1, key).bind(2, static_cast<std::int64_t>(bytes.size()));
        m_insertBytes.bindBlob(3, m_packer.pack(bytes)).execute();
    }

    SqliteFile& m_file;
    db::DatabaseImp& m_database;
    DrawingParts& m_parts;
    Packer m_packer;
    TextWriter m_text;
    SqliteStatement m_insert, m_update, m_updateText, m_delete, m_insertBytes, m_deleteBytes, m_insertClass;
    std::map<std::pair<std::string, std::string>, std::int64_t> m_classes;
    std::int64_t m_nextClass = 1;
    std::unordered_map<const ObjectStub*, std::shared_ptr<const std::string>> m_newTexts;
};

std::vector<ObjectStub*> unlistedLayers(db::DatabaseImp& database) {
    std::vector<ObjectStub*> unlisted;
    for (const ObjectStub& stub : database.stubs()) {
        if (stub.handle.isNull() && stub.object)
            unlisted.push_back(const_cast<ObjectStub*>(&stub));
    }
    return unlisted;
}

/// Lends layers that are only names handles that nobody has, and a place in their table, while a copy is written.
class LentHandles {
public:
    LentHandles(db::DatabaseImp& database, std::vector<ObjectStub*> layers)
        : m_layers(std::move(layers))
        , m_table(static_cast<db::SymbolTable*>(db::DatabaseImp::peek(database.roots.layerTable))) {
        std::uint64_t next = database.nextHandle();
        for (ObjectStub* stub : m_layers) {
            while (database.find(MxDbHandle(next)))
                ++next;
            stub->handle = MxDbHandle(next++);
            if (m_table)
                m_table->records.push_back(MxDbObjectId(stub));
        }
    }
    ~LentHandles() {
        for (ObjectStub* stub : m_layers)
            stub->handle = {};
        if (m_table)
            m_table->records.resize(m_table->records.size() - m_layers.size());
    }
    LentHandles(const LentHandles&) = delete;
    LentHandles& operator=(const LentHandles&) = delete;

private:
    const std::vector<ObjectStub*> m_layers;
    db::SymbolTable* const m_table;
};

class Writer {
public:
    Writer(const std::string& path, MxDbDatabase& database, bool snapshot)
        : m_path(finalPath(path))
        , m_imp(database.imp())
        , m_snapshot(snapshot) {}

    void run();

private:
    void listLayers();
    void writeWhole();
    /// False when the file is not the one that this drawing knows, or when rows would have to move.
    bool writeChanges();
    std::optional<std::vector<std::pair<const ObjectStub*, std::int64_t>>> newRows(SqliteFile& file) const;
    void commit(RowWriter& rows, DrawingParts::Origin origin);

    std::string m_path;
    db::DatabaseImp& m_imp;
    const bool m_snapshot; ///< a copy beside the drawing: its marks and its origin stay as they are
    std::unique_ptr<DrawingParts> m_parts;
    std::optional<LentHandles> m_lent;
};

/// References are handles here, so layers that were only names so far get one. They stay out of the DXF text.
void Writer::listLayers() {
    const std::vector<ObjectStub*> unlisted = unlistedLayers(m_imp);
    if (unlisted.empty())
        return;
    if (m_snapshot)
        m_lent.emplace(m_imp, unlisted);
    else
        m_imp.listImplicitLayers();
    m_parts->implied.insert(unlisted.begin(), unlisted.end());
    m_parts->origin.reset();
}

void Writer::run() {
    m_parts = placedParts(m_imp);
    listLayers();
    std::int64_t lastId = 0;
    for (const Part& part : m_parts->parts)
        lastId = std::max(lastId, part.id);
    for (Part& part : m_parts->parts) {
        if (part.id == 0)
            part.id = ++lastId;
    }
    if (m_snapshot || !writeChanges())
        writeWhole();
}

void Writer::commit(RowWriter& rows, DrawingParts::Origin origin) {
    if (m_snapshot)
        return;
    for (auto& [stub, text] : rows.takeTexts()) {
        db::ObjectData& data = stub->object->data();
        data.source.text = *text;
        data.source.buffer = std::move(text);
        data.sourceStale = false;
    }
    m_parts->origin = std::make_unique<DrawingParts::Origin>(std::move(origin));
    m_parts->changedSinceOrigin = false;
    m_imp.fileParts = std::move(m_parts);
    m_imp.clearChanged();
}

void Writer::writeWhole() {
    ReplacementFile target;
    // A copy is the user's own affair, wherever it has to stand: it is never easier to read than its drawing.
    const auto readers = m_snapshot ? ReplacementFile::Readers::kOwner : ReplacementFile::Readers::kAsBefore;
    if (!target.create(m_path, readers))
        throw std::runtime_error(target.error());
    {
        SqliteFile file(target.temporaryPath(), SqliteFile::Mode::kReadWrite);
        file.run("PRAGMA page_size = 65536");
        file.run("PRAGMA locking_mode = EXCLUSIVE");
        file.run("PRAGMA journal_mode = OFF");
        file.run("PRAGMA synchronous = OFF");
        file.run(("PRAGMA application_id = " + std::to_string(kMerixApplicationId)).c_str());
        file.run(("PRAGMA user_version = " + std::to_string(kMerixVersion)).c_str());
        file.run("BEGIN");
        for (const SchemaTable& table : kMerixSchema)
            file.run(table.sql);
        RowWriter rows(file, m_imp, *m_parts, 0);
        rows.writeParts();
        std::int64_t seq = 0;
        for (const Part& part : m_parts->parts) {
            for (const ObjectStub* stub : part.run) {
                if (stub->object && !stub->erased)
                    rows.insert(*stub, part.id, seq);
                ++seq;
            }
        }
        for (const ObjectStub& stub : m_imp.stubs()) {
            if (stub.object && !stub.erased && m_parts->implied.contains(const_cast<ObjectStub*>(&stub)))
                rows.insert(stub, kImpliedRun, seq++);
        }
        DrawingParts::Origin origin = rows.finish(m_path, seq);
        file.run("COMMIT");
        // A journal that a dead process left would be taken for one of the new file: the old one is brought in order.
        if (::access((m_path + "-journal").c_str(), F_OK) == 0) {
            try {
                SqliteFile old(m_path, SqliteFile::Mode::kRead);
                old.run("SELECT count(*) FROM sqlite_schema");
            } catch (const SqliteError&) {
                // It is being replaced anyway.
            }
            ::unlink((m_path + "-journal").c_str());
        }
        if (!target.commit())
            throw std::runtime_error(target.error());
        commit(rows, std::move(origin));
    }
}

/// Objects without a row, with their runs; nothing when one of them does not stand at the end of its run.
std::optional<std::vector<std::pair<const ObjectStub*, std::int64_t>>> Writer::newRows(SqliteFile& file) const {
    SqliteStatement find(file, "SELECT 1 FROM object WHERE handle = ?");
    std::unordered_set<const ObjectStub*> missing;
    for (const MxDbObjectId& id : m_imp.changedSinceSave()) {
        const ObjectStub* stub = id.stub();
        if (!stub->object || stub->erased)
            continue;
        const bool found = find.bind(1, handleOf(stub)).step();
        if (found)
            find.step();
        else
            missing.insert(stub);
    }
    std::vector<std::pair<const ObjectStub*, std::int64_t>> rows;
    for (const Part& part : m_parts->parts) {
        auto first = part.run.end();
        while (first != part.run.begin() && (missing.contains(*(first - 1)) || (*(first - 1))->erased))
            --first;
        for (; first != part.run.end(); ++first) {
            if (!(*first)->erased) {
                missing.erase(*first);
                rows.emplace_back(*first, part.id);
            }
        }
    }
    if (!missing.empty())
        return std::nullopt;
    return rows;
}

bool Writer::writeChanges() {
    const DrawingParts::Origin* known = m_parts->origin.get();
    if (!known || known->path != m_path || ::access(m_path.c_str(), W_OK) != 0)
        return false;
    std::optional<SqliteFile> file;
    try {
        file.emplace(m_path, SqliteFile::Mode::kReadWrite);
        file->run("PRAGMA journal_mode = DELETE");
        file->run("PRAGMA synchronous = FULL");
        file->run("BEGIN IMMEDIATE");
        SqliteStatement id(*file, "SELECT value FROM meta WHERE key = 'save_id'");
        if (!id.step() || id.bytes(0) != known->saveId)
            return false;
    } catch (const SqliteError&) {
        return false; // a file of that name which is no drawing any more
    }
    const auto added = newRows(*file);
    if (!added)
        return false;
    RowWriter rows(*file, m_imp, *m_parts, known->textSize);
    rows.readClasses();
    std::int64_t seq = known->nextSeq;
    for (const MxDbObjectId& id : m_imp.changedSinceSave()) {
        const ObjectStub* stub = id.stub();
        if (!stub->object || stub->erased)
            rows.remove(*stub);
        else
            rows.update(*stub);
    }
    for (const auto& [stub, run] : *added)
        rows.insert(*stub, run, seq++);
    if (m_parts->changedSinceOrigin)
        rows.writeParts();
    DrawingParts::Origin origin = rows.finish(m_path, seq);
    file->run("COMMIT");
    commit(rows, std::move(origin));
    return true;
}

FileResult write(const std::string& path, MxDbDatabase& database, bool snapshot) {
    FileResult result;
    try {
        Writer(path, database, snapshot).run();
    } catch (const SqliteError& error) {
        result.status = Mx::eFileUnwritable;
        result.error = path + ": cannot be written: " + error.what();
    } catch (const std::runtime_error& error) {
        result.status = Mx::eFileUnwritable;
        result.error = error.what();
    }
    return result;
}

} // namespace

FileResult writeMerix(const std::string& path, MxDbDatabase& database) {
    return write(path, database, false);
}

FileResult writeMerixSnapshot(const std::string& path, MxDbDatabase& database) {
    return write(path, database, true);
}

} // namespace merix::io
