// SPDX-License-Identifier: MIT
// Line type files: text in UTF-8, of which a definition takes two lines.
//
//   *NAME,description
//   A,length,length,...
//
// A length above zero is a dash, below zero a gap, zero a dot. A line that is empty or begins with ";" says nothing.
#pragma once

#include "host/db/database.h"

#include <string>
#include <string_view>
#include <vector>

namespace merix::db {

struct LinetypeDefinition {
    std::wstring name, description;
    std::vector<double> dashes; ///< drawing units; none for a solid line
};

struct LinetypeFile {
    std::vector<LinetypeDefinition> definitions;
    std::wstring problem; ///< "line 7: …" about the first line that makes no sense; the rest is read all the same
};

LinetypeFile parseLinetypeFile(std::string_view text);

/// MxDbDatabase::loadLineTypeFile with its message: what to tell the user, with file and line; empty when all is well.
/// A problem elsewhere in the file is told, too, but does not keep a sound definition from being loaded.
Mx::ErrorStatus loadLinetype(DatabaseImp& database, std::wstring_view name, std::wstring_view file,
                             std::wstring& message);

} // namespace merix::db
