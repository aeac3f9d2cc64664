// SPDX-License-Identifier: MIT
#pragma once

#include "samples/dxf_drawing.h"

#include <cstddef>

namespace samples {

/// One floor of an office building, 30 by 15 metres, on an A3 sheet at 1:100, in millimetres.
DxfDrawing officePlan();

/// Rooms in a square grid, exactly as many entities in model space as asked for (at least 1).
DxfDrawing roomGrid(std::size_t entities);

} // namespace samples
