// SPDX-License-Identifier: MIT
// Pictures of drawings without a window.
#pragma once

#include "host/db/database.h"
#include "merix/gi/scene.h"

#include <QImage>

namespace merix::ui {

/// The whole of `space` (currentSpaceId when null), fitted into a picture of `size` pixels. An empty drawing gives the
/// background alone.
QImage renderToImage(MxDbDatabase& database, MxDbObjectId space, const QSize& size,
                     const gi::PaintOptions& options = {});

} // namespace merix::ui
