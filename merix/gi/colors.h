// SPDX-License-Identifier: MIT
// The 255 colour indices of drawings.
#pragma once

#include <QColor>

namespace merix::gi {

/// The colour of index 1 to 255; white for any other. Index 7 is the one that contrasts with the background: white
/// here, see `contrasting`.
QRgb colorOfIndex(int index);

/// White on a dark background, black on a light one.
QRgb contrasting(const QColor& background);

} // namespace merix::gi
