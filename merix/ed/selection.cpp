// SPDX-License-Identifier: MIT
#include "merix/ed/selection.h"

#include <algorithm>

namespace merix::ed {

Selection& Selection::instance() {
    static Selection selection;
    return selection;
}

bool Selection::contains(MxDbObjectId id) const {
    return std::find(m_ids.begin(), m_ids.end(), id) != m_ids.end();
}

void Selection::set(std::vector<MxDbObjectId> ids) {
    std::vector<MxDbObjectId> unique;
    for (const MxDbObjectId id : ids)
        if (!id.isNull() && std::find(unique.begin(), unique.end(), id) == unique.end())
            unique.push_back(id);
    if (unique == m_ids)
        return;
    m_ids = std::move(unique);
    Q_EMIT changed();
}

void Selection::add(const std::vector<MxDbObjectId>& ids) {
    std::vector<MxDbObjectId> all = m_ids;
    all.insert(all.end(), ids.begin(), ids.end());
    set(std::move(all));
}

void Selection::remove(const std::vector<MxDbObjectId>& ids) {
    std::vector<MxDbObjectId> left = m_ids;
    std::erase_if(left, [&](MxDbObjectId id) { return std::find(ids.begin(), ids.end(), id) != ids.end(); });
    set(std::move(left));
}

} // namespace merix::ed
