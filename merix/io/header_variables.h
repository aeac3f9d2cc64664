// SPDX-License-Identifier: MIT
#pragma once

#include "merix/io/drawing_parts.h"

namespace merix::io {

/// Writes the header's variables into the texts of the HEADER section, those only that say something else. A variable
/// that the section lacks is added when it has not the value that readers take without it.
void storeHeader(DrawingParts& parts, const db::DrawingHeader& header);

} // namespace merix::io
