// SPDX-License-Identifier: MIT
// What the readers of both file kinds do once objects are behind their handles: root objects, and the objects that the
// program needs and the file lacks.
#pragma once

#include "merix/io/drawing_parts.h"

#include <string_view>

namespace merix::io {

/// A root of the database by the DXF name of a symbol table, null for unknown names.
MxDbObjectId* tableRoot(db::DatabaseImp::Roots& roots, std::string_view dxfType);

/// Makes the symbol tables that are missing. They are implied.
void addMissingTables(db::DatabaseImp& database, DrawingParts& parts);
/// Finds model and paper space among the blocks, makes those that are missing.
void findSpaces(db::DatabaseImp& database, DrawingParts& parts);
/// The named objects dictionary: the first dictionary of the file that no other object owns, made when there is none.
void findNamedObjects(db::DatabaseImp& database, DrawingParts& parts);
/// A block that a file of an old version defines without a record of its own.
MxDbBlockTableRecord* addImpliedBlock(db::DatabaseImp& database, DrawingParts& parts, std::wstring name);
} // namespace merix::io
