// SPDX-License-Identifier: MIT
#include "merix/ui/render.h"

#include "merix/ui/fit_scene.h"

#include <QPainter>

namespace merix::ui {

QImage renderToImage(MxDbDatabase& database, MxDbObjectId space, const QSize& size, const gi::PaintOptions& options) {
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull())
        return image;
    image.fill(options.background);
    if (space.isNull())
        space = database.currentSpaceId();
    gi::Scene scene(database);
    ge::ViewTransform view;
    view.width = size.width();
    view.height = size.height();
    view.pixelRatio = options.pixelRatio;
    view = firstView(database, scene, space, view);
    const MadeFor graphics(database, view);
    QPainter painter(&image);
    scene.paint(painter, view, space, options);
    return image;
}

} // namespace merix::ui
