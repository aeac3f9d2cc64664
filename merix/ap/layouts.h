// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/database.h"

#include <QString>

#include <vector>

namespace merix::ap {

struct Layout {
    QString name;
    MxDbObjectId space; ///< the block that holds its entities
};

/// "Model" first, then the drawing's layouts. A drawing of a version without layouts has one for its paper space.
std::vector<Layout> layoutsOf(const MxDbDatabase& database);

} // namespace merix::ap
