// SPDX-License-Identifier: MIT
#include "merix/ui/fit_scene.h"

namespace merix::ui {

std::optional<ge::ViewTransform> showingAll(MxDbDatabase& database, gi::Scene& scene, MxDbObjectId space,
                                            const ge::ViewTransform& view) {
    return ge::fitMeasured(view, [&](const ge::ViewTransform& trial) {
        const MadeFor graphics(database, trial);
        return scene.extentsAnew(space);
    });
}

ge::ViewTransform firstView(MxDbDatabase& database, gi::Scene& scene, MxDbObjectId space, ge::ViewTransform view) {
    view.fit(kEmptySheet);
    return showingAll(database, scene, space, view).value_or(view);
}

} // namespace merix::ui
