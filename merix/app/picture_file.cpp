// SPDX-License-Identifier: MIT
#include "merix/app/picture_file.h"

#include <QSaveFile>

namespace merix::app {

QString writePicture(const QImage& picture, const QString& path) {
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && picture.save(&file, "PNG") && file.commit())
        return {};
    return QStringLiteral("%1: %2").arg(path, file.errorString());
}

} // namespace merix::app
