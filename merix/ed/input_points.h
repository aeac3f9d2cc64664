// SPDX-License-Identifier: MIT
#pragma once

#include "host/ed/input_point.h"
#include "merix/ed/reactor_list.h"

namespace merix::ed {

/// Who watches the cursor over one document. The document's view reports the cursor here.
class InputPoints : public MxEdInputPointManager {
public:
    Mx::ErrorStatus addPointMonitor(MxEdInputPointMonitor* monitor) override;
    Mx::ErrorStatus removePointMonitor(MxEdInputPointMonitor* monitor) override;
    void notify(const MxEdInputPoint& input) const;

private:
    ReactorList<MxEdInputPointMonitor> m_monitors;
};

} // namespace merix::ed
