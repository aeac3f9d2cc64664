// SPDX-License-Identifier: MIT
#pragma once

#include "merix/io/drawing_file.h"

#include <string>

namespace merix::io {

/// Writes the drawing as a native one. Over the file that it came from, or was last saved to, only what changed is
/// written, in one transaction.
FileResult writeMerix(const std::string& path, MxDbDatabase& database);

/// The same as a whole new file, with the drawing left as it was: see writeSnapshot.
FileResult writeMerixSnapshot(const std::string& path, MxDbDatabase& database);

} // namespace merix::io
