// SPDX-License-Identifier: MIT
#include "merix/io/object_placement.h"

#include "host/db/dictionary.h"
#include "host/db/sortents_table.h"
#include "merix/db/access.h"
#include "merix/db/tables.h"
#include "merix/io/dxf_out_filer.h"
#include "merix/io/dxf_split.h"
#include "merix/io/dxf_value.h"
#include "merix/io/header_variables.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace merix::io {
namespace {

using db::ObjectStub;
using Role = Part::Role;

constexpr std::array<std::string_view, 6> kSections = {"HEADER", "CLASSES", "TABLES", "BLOCKS", "ENTITIES", "OBJECTS"};

std::size_t rankOf(std::string_view section) {
    return static_cast<std::size_t>(std::find(kSections.begin(), kSections.end(), section) - kSections.begin());
}

std::string_view sectionName(const Part& part) {
    return trimmed(readHead(part.text).subject);
}

std::vector<Part>::iterator findRole(DrawingParts& parts, Role role) {
    return std::find_if(parts.parts.begin(), parts.parts.end(), [role](const Part& part) { return part.role == role; });
}

std::vector<Part>::iterator findRun(DrawingParts& parts, Role role, const ObjectStub* owner) {
    return std::find_if(parts.parts.begin(), parts.parts.end(),
                        [&](const Part& part) { return part.role == role && part.owner == owner; });
}

/// The header of a drawing that has none yet.
std::string newDrawingText(const db::DatabaseImp& database) {
    std::string text;
    const auto tag = [&text](int code, std::string_view value) { appendTag(text, code, value, "\n"); };
    const auto variable = [&](std::string_view name, int code, std::string_view value) {
        tag(9, name);
        tag(code, value);
    };
    const auto point = [&](std::string_view name, const MxGePoint3d& value) {
        tag(9, name);
        tag(10, fromDouble(value.x));
        tag(20, fromDouble(value.y));
        tag(30, fromDouble(value.z));
    };
    const auto& header = database.header;
    tag(0, "SECTION");
    tag(2, "HEADER");
    variable("$ACADVER", 1, "AC1021");
    variable("$DWGCODEPAGE", 3, "ANSI_1252");
    variable("$HANDSEED", 5, "1");
    point("$INSBASE", {});
    point("$EXTMIN", header.extMin);
    point("$EXTMAX", header.extMax);
    variable("$LTSCALE", 40, fromDouble(header.linetypeScale));
    variable("$TEXTSIZE", 40, fromDouble(header.textSize));
    variable("$TEXTSTYLE", 7, "Standard");
    variable("$CLAYER", 8, DxfEncoding("AC1021", "").encode(header.currentLayer));
    variable("$CELTYPE", 6, DxfEncoding("AC1021", "").encode(header.currentLinetype));
    variable("$CECOLOR", 62, std::to_string(header.currentColor));
    variable("$INSUNITS", 70, std::to_string(header.insUnits));
    variable("$MEASUREMENT", 70, "1");
    tag(0, "ENDSEC");
    for (const std::string_view section : kSections) {
        if (section == "HEADER")
            continue;
        tag(0, "SECTION");
        tag(2, section);
        tag(0, "ENDSEC");
    }
    tag(0, "EOF");
    return text;
}

class Placer {
public:
    explicit Placer(db::DatabaseImp& database)
        : m_database(database) {
        if (const DrawingParts* old = drawingParts(database)) {
            m_parts = old->clone();
        } else {
            m_parts = splitDxf(std::make_shared<const std::string>(newDrawingText(database))).parts;
            m_isNew = true;
        }
    }

    std::unique_ptr<DrawingParts> run();

private:
    std::vector<ObjectStub*> candidates() const;
    void placeTable(ObjectStub* stub);
    void placeTableRecord(ObjectStub* stub);
    void placeBlock(ObjectStub* stub);
    void placeEntity(ObjectStub* stub);
    void placeObject(ObjectStub* stub);
    void changed() { m_parts->changedSinceOrigin = true; }
    std::string blockText(const MxDbBlockTableRecord& block, bool begin);

    db::DatabaseImp& m_database;
    std::unique_ptr<DrawingParts> m_parts;
    bool m_isNew = false;
};

/// Living objects that stand in no run, in order of their making.
std::vector<ObjectStub*> Placer::candidates() const {
    std::vector<ObjectStub*> list;
    const auto consider = [&list](ObjectStub* stub) {
        if (stub && stub->object && !stub->erased && !stub->handle.isNull())
            list.push_back(stub);
    };
    if (m_isNew) {
        for (const ObjectStub& stub : m_database.stubs())
            consider(const_cast<ObjectStub*>(&stub));
    } else {
        for (const MxDbObjectId& id : m_database.changedSinceSave())
            consider(id.stub());
    }
    if (list.empty())
        return list;
    std::unordered_set<const ObjectStub*> missing(list.begin(), list.end());
    for (const Part& part : m_parts->parts) {
        for (const ObjectStub* stub : part.run)
            missing.erase(stub);
    }
    std::erase_if(list, [&](const ObjectStub* stub) { return !missing.contains(stub); });
    return list;
}

std::unique_ptr<DrawingParts> Placer::run() {
    const std::vector<ObjectStub*> stubs = candidates();
    const auto place = [&](auto belongs, void (Placer::*put)(ObjectStub*)) {
        for (ObjectStub* stub : stubs) {
            if (belongs(*stub->object))
                (this->*put)(stub);
        }
    };
    const auto isTable = [](const MxDbObject& o) { return o.isKindOf(db::SymbolTable::desc()); };
    const auto isBlock = [](const MxDbObject& o) { return o.isKindOf(MxDbBlockTableRecord::desc()); };
    const auto isEntity = [](const MxDbObject& o) { return o.data().isEntity; };
    const auto isRecord = [&](const MxDbObject& o) {
        const MxDbObject* owner = db::DatabaseImp::peek(o.data().owner);
        return !isTable(o) && !isEntity(o) && owner && isTable(*owner);
    };
    if (m_isNew)
        place(isTable, &Placer::placeTable);
    place(isRecord, &Placer::placeTableRecord);
    place(isBlock, &Placer::placeBlock);
    place(isEntity, &Placer::placeEntity);
    place([&](const MxDbObject& o) { return !isTable(o) && !isEntity(o) && !isRecord(o); }, &Placer::placeObject);
    return std::move(m_parts);
}

void Placer::placeTable(ObjectStub* stub) {
    ensureSection(*m_parts, "TABLES");
    std::string end;
    appendTag(end, 0, "ENDTAB", m_parts->lineEnd);
    const std::string_view endText = m_parts->keep(std::move(end));
    auto place = findRole(*m_parts, Role::kTablesEnd);
    place = m_parts->parts.insert(place, {Role::kText, endText, nullptr, {}});
    place = m_parts->parts.insert(place, {Role::kTableRun, {}, stub, {}});
    m_parts->parts.insert(place, {Role::kTable, {}, stub, {stub}});
    m_parts->implied.erase(stub);
    changed();
}

void Placer::placeTableRecord(ObjectStub* stub) {
    ObjectStub* table = stub->object->data().owner.stub();
    const bool block = stub->object->isKindOf(MxDbBlockTableRecord::desc());
    // A file whose blocks have no records of their own gets none.
    if (block && (m_parts->implied.contains(stub) || m_parts->implied.contains(table)))
        return;
    if (findRun(*m_parts, Role::kTableRun, table) == m_parts->parts.end())
        placeTable(table);
    findRun(*m_parts, Role::kTableRun, table)->run.push_back(stub);
    m_parts->implied.erase(stub);
}

std::string Placer::blockText(const MxDbBlockTableRecord& block, bool begin) {
    const std::string& lineEnd = m_parts->lineEnd;
    const DxfEncoding encoding = m_parts->encoding();
    const bool old = m_parts->isOldVersion();
    const std::string name = encoding.encode(block.name());
    std::string text;
    const auto tag = [&](int code, std::string_view value) { appendTag(text, code, value, lineEnd); };
    tag(0, begin ? "BLOCK" : "ENDBLK");
    if (!old) {
        tag(5, fromHandle(m_database.allocateHandle().value()));
        tag(330, fromHandle(block.objectId().handle().value()));
        tag(100, "AcDbEntity");
        if (block.objectId() == m_database.roots.paperSpace)
            tag(67, "1");
    }
    tag(8, "0");
    if (!old)
        tag(100, begin ? "AcDbBlockBegin" : "AcDbBlockEnd");
    if (!begin)
        return text;
    tag(2, name);
    tag(70, name.starts_with("*U") || name.starts_with("*D") ? "1" : "0");
    tag(10, fromDouble(block.origin().x));
    tag(20, fromDouble(block.origin().y));
    tag(30, fromDouble(block.origin().z));
    tag(3, name);
    tag(1, "");
    return text;
}

void Placer::placeBlock(ObjectStub* stub) {
    if (m_parts->implied.contains(stub) || findRun(*m_parts, Role::kBlockRun, stub) != m_parts->parts.end())
        return;
    ensureSection(*m_parts, "BLOCKS");
    const auto& block = static_cast<const MxDbBlockTableRecord&>(*stub->object);
    const std::string_view begin = m_parts->keep(blockText(block, true));
    const std::string_view end = m_parts->keep(blockText(block, false));
    auto place = findRole(*m_parts, Role::kBlocksEnd);
    place = m_parts->parts.insert(place, {Role::kBlockEnd, end, stub, {}});
    place = m_parts->parts.insert(place, {Role::kBlockRun, {}, stub, {}});
    m_parts->parts.insert(place, {Role::kBlockBegin, begin, stub, {}});
    changed();
}

void Placer::placeEntity(ObjectStub* stub) {
    const MxDbObjectId owner = stub->object->data().owner;
    const auto& roots = m_database.roots;
    if (owner != roots.modelSpace && owner != roots.paperSpace) {
        if (const auto run = findRun(*m_parts, Role::kBlockRun, owner.stub()); run != m_parts->parts.end())
            run->run.push_back(stub);
        return;
    }
    ensureSection(*m_parts, "ENTITIES");
    // Of several such sections the last: new entities are drawn over old ones.
    const auto last = std::find_if(m_parts->parts.rbegin(), m_parts->parts.rend(),
                                   [](const Part& part) { return part.role == Role::kEntityRun; });
    last->run.push_back(stub);
}

void Placer::placeObject(ObjectStub* stub) {
    ensureSection(*m_parts, "OBJECTS");
    auto& run = findRole(*m_parts, Role::kObjectRun)->run;
    const bool root = MxDbObjectId(stub) == m_database.roots.namedObjects;
    run.insert(root ? run.begin() : run.end(), stub);
    m_parts->implied.erase(stub);
}

/// The objects that `object` lists: its reactors, and what a dictionary or a draw order holds.
template <class Take> void forEachListed(const MxDbObject& object, Take take) {
    for (const MxDbReactorEntry& entry : object.data().reactors)
        take(entry.persistent.stub());
    if (object.data().isEntity)
        return;
    if (object.isKindOf(MxDbDictionary::desc())) {
        for (const auto& [key, id] : static_cast<const MxDbDictionary&>(object).entries(true))
            take(id.stub());
    } else if (object.isKindOf(MxDbSortentsTable::desc())) {
        for (const MxDbObjectId id : static_cast<const MxDbSortentsTable&>(object).listedEntities())
            take(id.stub());
    }
}

/// Lists keep erased objects, for the erasure may be undone; files do not hold them. What lists one that was erased or
/// came back since the last save is filed again.
void leaveOutErased(db::DatabaseImp& database, DrawingParts& parts) {
    std::unordered_set<const ObjectStub*> erased;
    for (const ObjectStub& stub : database.stubs()) {
        if (!stub.object)
            continue;
        const db::ReadAccess readable(*stub.object);
        bool differs = false;
        forEachListed(*stub.object, [&](const ObjectStub* listed) {
            const bool gone = listed && listed->object && listed->erased;
            if (gone)
                erased.insert(listed);
            differs = differs || gone != parts.leftOut.contains(listed);
        });
        if (differs)
            database.markChanged(*stub.object);
    }
    parts.leftOut = std::move(erased);
}

} // namespace

std::unique_ptr<DrawingParts> placedParts(db::DatabaseImp& database) {
    std::unique_ptr<DrawingParts> parts = Placer(database).run();
    leaveOutErased(database, *parts);
    if (database.isHeaderChanged())
        storeHeader(*parts, database.header);
    return parts;
}

void ensureSection(DrawingParts& parts, std::string_view name) {
    const std::size_t rank = rankOf(name);
    auto place = parts.parts.end();
    for (auto part = parts.parts.begin(); part != parts.parts.end(); ++part) {
        if (part->role == Role::kEnd && place == parts.parts.end())
            place = part;
        if (part->role != Role::kSection)
            continue;
        const std::string_view section = sectionName(*part);
        if (section == name)
            return;
        if (place == parts.parts.end() && rankOf(section) > rank)
            place = part;
    }
    std::string begin, end;
    appendTag(begin, 0, "SECTION", parts.lineEnd);
    appendTag(begin, 2, name, parts.lineEnd);
    appendTag(end, 0, "ENDSEC", parts.lineEnd);
    static constexpr std::array<Role, 6> kRoles = {Role::kText,      Role::kClassesEnd, Role::kTablesEnd,
                                                   Role::kBlocksEnd, Role::kEntityRun,  Role::kObjectRun};
    const std::array<Part, 3> added = {Part{Role::kSection, parts.keep(std::move(begin)), nullptr, {}},
                                       Part{kRoles.at(rank), {}, nullptr, {}},
                                       Part{Role::kText, parts.keep(std::move(end)), nullptr, {}}};
    parts.parts.insert(place, added.begin(), added.end());
    parts.changedSinceOrigin = true;
}

} // namespace merix::io
