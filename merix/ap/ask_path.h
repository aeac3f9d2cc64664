// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace merix::ap {

/// Asks for a path at the command line: quotes around it and a leading ~ are understood. Empty when none was given.
QString askPath(const QString& prompt);

/// True when no file is there, or the user says at the command line that it is to be replaced.
bool mayReplace(const QString& path);

} // namespace merix::ap
