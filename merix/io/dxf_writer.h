// SPDX-License-Identifier: MIT
#pragma once

#include "merix/io/drawing_file.h"

#include <string>

namespace merix::io {

/// Writes the drawing as DXF in the version that it came in, AC1021 when it never was a file; `form` as for
/// writeDrawing.
FileResult writeDxf(const std::string& path, MxDbDatabase& database, std::optional<DxfForm> form = {});

} // namespace merix::io
