// SPDX-License-Identifier: MIT
#include "merix/ed/user_settings.h"

#include <QStandardPaths>

namespace merix::ed {

QSettings userSettings() {
    return {QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                QStringLiteral("/merix/merix.conf"),
            QSettings::IniFormat};
}

} // namespace merix::ed
