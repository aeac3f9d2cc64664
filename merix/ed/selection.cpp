// SPDX-License-Identifier: MIT
#include "merix/ed/selection.h"

namespace merix::ed {

Selection& Selection::instance() {
    static Selection selection;
    return selection;
}

bool Selection::contains(MxDbObjectId id) const {
    return m_known.contains(id);
}

void Selection::set(std::vector<MxDbObjectId> ids) {
    std::set<MxDbObjectId> known;
    std::erase_if(ids, [&](MxDbObjectId id) { return id.isNull() || !known.insert(id).second; });
    if (ids == m_ids)
        return;
    m_ids = std::move(ids);
    m_known = std::move(known);
    Q_EMIT changed();
}

void Selection::add(const std::vector<MxDbObjectId>& ids) {
    std::vector<MxDbObjectId> all = m_ids;
    all.insert(all.end(), ids.begin(), ids.end());
    set(std::move(all));
}

void Selection::remove(const std::vector<MxDbObjectId>& ids) {
    std::set<MxDbObjectId> gone;
    for (const MxDbObjectId id : ids)
        if (m_known.erase(id) > 0)
            gone.insert(id);
    if (gone.empty())
        return;
    std::erase_if(m_ids, [&](MxDbObjectId id) { return gone.contains(id); });
    Q_EMIT changed();
}

} // namespace merix::ed
