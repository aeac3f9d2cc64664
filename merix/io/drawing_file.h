// SPDX-License-Identifier: MIT
// Reading and writing drawing files. Kinds by suffix: .dxf (text or binary DXF), .merix (the native drawing). Every
// file is untrusted. No function throws.
#pragma once

#include "host/db/database.h"
#include "merix/io/dxf_form.h"

#include <optional>
#include <string>
#include <vector>

namespace merix::io {

/// The outcome of a file operation. `error` is one line that says what and where (file, line or object) and is empty
/// on success; `notes` are things the user should know although all went well, one line each.
struct FileResult {
    Mx::ErrorStatus status = Mx::eOk;
    std::string error;              ///< UTF-8
    std::vector<std::string> notes; ///< UTF-8
    explicit operator bool() const { return status == Mx::eOk; }
};

/// Reads `path` into an empty database (no defaults made). On failure the database is unusable and the file is as it
/// was.
FileResult readDrawing(const std::string& path, MxDbDatabase& database);

/// Writes the drawing under `path`: the old file or the new one, never a mixture. Saving a .merix drawing over the
/// file it came from writes what changed; everything else writes a new file and renames it into place.
/// `form` is that of a .dxf file: without it the one that the drawing was read or last written with, text for a new
/// drawing. kBinary means the form of group codes that the drawing's version has. What cannot be binary (a number that
/// does not fit, a damaged record) makes it fail with a line that names it.
FileResult writeDrawing(const std::string& path, MxDbDatabase& database, std::optional<DxfForm> form = {});

/// Writes what the drawing is now as a native drawing, whatever the suffix of `path`, for the case that the program
/// dies. The drawing stays as it was: what its next save writes, and where to, does not change. readDrawing reads such
/// a file under the suffix `.ms$`.
FileResult writeSnapshot(const std::string& path, MxDbDatabase& database);

} // namespace merix::io
