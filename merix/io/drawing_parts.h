// SPDX-License-Identifier: MIT
// The skeleton of a drawing file: everything that is no object as text, in order, with places where objects stand.
// Written out part by part it is the file again, byte for byte.
#pragma once

#include "merix/db/database_imp.h"
#include "merix/io/dxf_encoding.h"
#include "merix/io/dxf_form.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace merix::io {

struct Part {
    /// Values are stored in native drawings.
    enum class Role : std::uint8_t {
        kText = 0,       ///< written as it is
        kHandSeed = 1,   ///< the tag with the value of $HANDSEED
        kClassesEnd = 2, ///< class records are added here
        kTable = 3,      ///< the head of a symbol table, which is the owner
        kTableRun = 4,   ///< the records of a symbol table
        kTablesEnd = 5,  ///< tables are added here
        kBlockBegin = 6, ///< the BLOCK record of a block, which is the owner
        kBlockRun = 7,   ///< the entities between BLOCK and ENDBLK
        kBlockEnd = 8,   ///< the ENDBLK record
        kBlocksEnd = 9,  ///< blocks are added here
        kEntityRun = 10, ///< the entities of the ENTITIES section
        kObjectRun = 11, ///< the records of the OBJECTS section
        kEnd = 12,       ///< the EOF record and what follows it
        kSection = 13,   ///< text that begins with a SECTION record
    };
    static constexpr int kRoles = 14;

    Role role = Role::kText;
    std::string_view text;
    db::ObjectStub* owner = nullptr;
    std::vector<db::ObjectStub*> run; ///< objects in order; erased ones stay, for their erasure may be undone
    std::int64_t id = 0;              ///< its name in native drawings, 0 before it was in one
};

class DrawingParts : public db::FileParts {
public:
    std::vector<Part> parts;
    /// What the texts point into.
    std::vector<std::shared_ptr<const std::string>> buffers;

    std::string version = "AC1009"; ///< $ACADVER
    std::string codePage;           ///< $DWGCODEPAGE
    std::string lineEnd = "\n";
    DxfForm form = DxfForm::kText;       ///< as which it is written as DXF unless asked otherwise
    DxfForm sourceForm = DxfForm::kText; ///< of the file that the texts came from
    std::uint64_t handSeed = 0;          ///< 0: the file has none
    std::set<std::string> classNames;    ///< DXF names in the CLASSES section
    /// Objects that the program needs and the file lacks (a layer that is named but not defined). They enter the file
    /// when they are changed; block records of the kind never do.
    std::unordered_set<db::ObjectStub*> implied;
    /// What objects list and the file does not, for it was erased when the file was written.
    std::unordered_set<const db::ObjectStub*> leftOut;

    /// The native drawing that holds what this database was when it was last read or saved.
    struct Origin {
        std::string path;
        std::string saveId;        ///< of that save; another program's save has another one
        std::int64_t textSize = 0; ///< bytes of text in it
        std::int64_t nextSeq = 0;  ///< place for the next object
    };
    std::unique_ptr<Origin> origin;
    bool changedSinceOrigin = false; ///< the texts are no longer those of the native drawing

    DxfEncoding encoding() const { return {version, codePage}; }
    /// Handles and subclass markers came with AC1012.
    bool isOldVersion() const { return version < "AC1012"; }
    /// Keeps `text` for as long as the parts live.
    std::string_view keep(std::string text);
    /// A copy that shares the buffers.
    std::unique_ptr<DrawingParts> clone() const;
};

/// The parts of the database; null when it was neither read from a file nor saved.
DrawingParts* drawingParts(db::DatabaseImp& database);

} // namespace merix::io
