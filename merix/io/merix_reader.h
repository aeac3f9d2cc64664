// SPDX-License-Identifier: MIT
#pragma once

#include "merix/io/drawing_file.h"

#include <string>

namespace merix::io {

/// Fills an empty database from a native drawing. Throws nothing but std::bad_alloc.
FileResult readMerix(const std::string& path, MxDbDatabase& database);

} // namespace merix::io
