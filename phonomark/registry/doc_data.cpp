// SPDX-License-Identifier: MIT
#include "phonomark/registry/doc_data.h"

#include "phonomark/registry/object_watch.h"
#include "phonomark/tagwindow/pm_reactor.h"

#include <algorithm>

CDocData::CDocData(MxApDocument* document)
    : m_monitor(std::make_unique<PhonomarkPmReactor>(document)) {}

CDocData::~CDocData() = default;

void CDocData::AppendData(MxDbObjectId id) {
    m_ids.push_back(id);
    watchObject(id);
}

void CDocData::RemoveData(MxDbObjectId id) {
    if (const auto found = std::find(m_ids.begin(), m_ids.end(), id); found != m_ids.end())
        m_ids.erase(found);
    unwatchObject(id);
}

void CDocData::RemoveAllData() {
    for (const MxDbObjectId& id : m_ids)
        unwatchObject(id);
    m_ids.clear();
}
