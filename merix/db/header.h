// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/geometry.h"

#include <cstdint>
#include <string>

namespace merix::db {

/// The variables of a drawing's header that the host itself uses.
struct DrawingHeader {
    MxGePoint3d extMin{1e20, 1e20, 0}, extMax{-1e20, -1e20, 0};
    std::wstring currentLayer = L"0";
    std::wstring currentLinetype = L"ByLayer"; ///< a name of the line type table
    std::int16_t currentColor = 256;           ///< 1 to 255, 256 by layer, 0 by block
    std::int16_t currentLineWeight = -1;       ///< hundredths of a millimetre, -1 by layer, -2 by block, -3 the default
    double linetypeScale = 1.0;
    double currentLinetypeScale = 1.0; ///< of new entities
    double textSize = 2.5;
    std::int16_t insUnits = 4;
    bool operator==(const DrawingHeader&) const = default;
};

} // namespace merix::db
