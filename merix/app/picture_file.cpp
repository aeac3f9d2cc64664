// SPDX-License-Identifier: MIT
#include "merix/app/picture_file.h"

#include "merix/io/file_access.h"

#include <QBuffer>

namespace merix::app {

QString writePicture(const QImage& picture, const QString& path) {
    // Encoded first: the encoder would tell of a full disk in words of its own.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !picture.save(&buffer, "PNG"))
        return QStringLiteral("%1: the picture cannot be encoded").arg(path);
    io::ReplacementFile file;
    if (file.create(path.toStdString()) && file.write({bytes.constData(), std::size_t(bytes.size())}) && file.commit())
        return {};
    return QString::fromStdString(file.error());
}

} // namespace merix::app
