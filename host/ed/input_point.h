// SPDX-License-Identifier: MIT
// Watching the cursor. Main thread only.
#pragma once

#include "host/db/object_id.h"
#include "host/ge/geometry.h"
#include "host/rx/rx_class.h"
#include "host/rx/status.h"

#include <vector>

/// The state of the input point when the cursor has come to rest or moved.
struct MxEdInputPoint {
    bool pointComputed = false;               ///< the points below are valid
    MxGePoint3d rawPoint;                     ///< under the cursor, world coordinates
    std::vector<MxDbObjectId> pickedEntities; ///< entities in the pick aperture in drawing order: the last is on top
};

class MxEdInputPointMonitor : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    virtual Mx::ErrorStatus monitorInputPoint(const MxEdInputPoint& input) = 0;
};

/// One per document.
class MxEdInputPointManager {
public:
    virtual ~MxEdInputPointManager() = default;
    /// The manager does not own its monitors. Adding one twice has no effect.
    virtual Mx::ErrorStatus addPointMonitor(MxEdInputPointMonitor* monitor) = 0;
    virtual Mx::ErrorStatus removePointMonitor(MxEdInputPointMonitor* monitor) = 0;
};
