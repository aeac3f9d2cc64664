// SPDX-License-Identifier: MIT
// The entities that are selected before a command is called: the view shows their grips, the next command that works on
// a selection takes them. Main thread only.
#pragma once

#include "host/db/object_id.h"

#include <QObject>

#include <set>
#include <vector>

namespace merix::ed {

class Selection : public QObject {
    Q_OBJECT
public:
    static Selection& instance();

    /// Of the active drawing, in the order of selection, each once.
    const std::vector<MxDbObjectId>& ids() const { return m_ids; }
    bool contains(MxDbObjectId id) const;
    void set(std::vector<MxDbObjectId> ids);
    void add(const std::vector<MxDbObjectId>& ids);
    void remove(const std::vector<MxDbObjectId>& ids);
    void clear() { set({}); }

Q_SIGNALS:
    void changed();

private:
    Selection() = default;
    std::vector<MxDbObjectId> m_ids;
    std::set<MxDbObjectId> m_known; ///< the same: drawings have many entities
};

} // namespace merix::ed
