// SPDX-License-Identifier: MIT
#pragma once

#include <QSettings>

namespace merix::ed {

/// What the program keeps for its user from one time to the next: ~/.config/merix/merix.conf. What a module keeps has
/// files of its own.
QSettings userSettings();

} // namespace merix::ed
