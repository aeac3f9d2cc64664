// SPDX-License-Identifier: MIT
#pragma once

#include "merix/io/drawing_file.h"

#include <memory>
#include <string>

namespace merix::io {

/// Fills an empty database from a text or binary DXF. `name` stands in front of messages. Throws nothing but
/// std::bad_alloc.
FileResult readDxf(std::shared_ptr<const std::string> buffer, const std::string& name, MxDbDatabase& database);

} // namespace merix::io
