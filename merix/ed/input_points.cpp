// SPDX-License-Identifier: MIT
#include "merix/ed/input_points.h"

namespace merix::ed {

Mx::ErrorStatus InputPoints::addPointMonitor(MxEdInputPointMonitor* monitor) {
    if (!monitor)
        return Mx::eInvalidInput;
    m_monitors.add(monitor);
    return Mx::eOk;
}

Mx::ErrorStatus InputPoints::removePointMonitor(MxEdInputPointMonitor* monitor) {
    return m_monitors.remove(monitor) ? Mx::eOk : Mx::eKeyNotFound;
}

void InputPoints::notify(const MxEdInputPoint& input) const {
    m_monitors.forEach("An input-point monitor",
                       [&](MxEdInputPointMonitor& monitor) { monitor.monitorInputPoint(input); });
}

} // namespace merix::ed
