// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

namespace merix::app {

/// Writes a PNG file: the whole picture, or none and what stood there before. Empty, or one line that says why not.
QString writePicture(const QImage& picture, const QString& path);

} // namespace merix::app
