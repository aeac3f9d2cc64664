// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object_id.h"

#include <map>

/// What became of the objects of one copy: the clone of each original that has one. References between objects copied
/// together are turned to the clones when all of them are made. Main thread only.
class MxDbIdMapping {
public:
    /// Null when `original` has no clone.
    MxDbObjectId clone(MxDbObjectId original) const {
        const auto found = m_clones.find(original);
        return found == m_clones.end() ? MxDbObjectId() : found->second;
    }
    void assign(MxDbObjectId original, MxDbObjectId clone) { m_clones[original] = clone; }
    const std::map<MxDbObjectId, MxDbObjectId>& clones() const { return m_clones; }

private:
    std::map<MxDbObjectId, MxDbObjectId> m_clones;
};
