// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/database.h"

#include <QString>

#include <map>

namespace merix::ap {

/// What distinguishes two states of one drawing, by kind of object ("LINE", "PHONOMARK"; the rest, such as layers, as
/// "other").
struct DrawingDifference {
    std::map<QString, int> added, changed, erased;
    /// One line for the user: "2 LINE added; 1 PHONOMARK changed"; "nothing changed".
    QString text() const;
};

/// Compares by handle.
DrawingDifference compareDrawings(MxDbDatabase& before, MxDbDatabase& after);

} // namespace merix::ap
