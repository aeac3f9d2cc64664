// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace merix::ap {

/// Where the recovery file of a drawing goes: `<path>.recovered.merix` beside it, numbered when that exists; in the
/// user's data folder for a drawing never saved (`path` empty) or in a folder that cannot be written. Empty when there
/// is no place.
QString recoveryPath(const QString& path, const QString& title);

/// From now on mxrxShutdown writes the recovery files before the process ends, whichever thread calls it.
void writeRecoveryFilesAtShutdown();

} // namespace merix::ap
