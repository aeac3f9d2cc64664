// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace merix::ap {

/// Asks for a path at the command line: quotes around it and a leading ~ are understood. Empty when none was given.
QString askPath(const QString& prompt);

} // namespace merix::ap
