// SPDX-License-Identifier: MIT
#pragma once

#include "merix/io/drawing_file.h"

#include <string>

namespace merix::io {

/// Writes the drawing as text DXF in the version that it came in, AC1021 when it never was a file.
FileResult writeDxf(const std::string& path, MxDbDatabase& database);

} // namespace merix::io
