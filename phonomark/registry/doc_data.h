// SPDX-License-Identifier: MIT
#pragma once

#include "host/ap/document.h"
#include "host/db/object_id.h"

#include <memory>
#include <vector>

class PhonomarkPmReactor;

/// The notes of one open document in the order of their insertion, and the document's hover monitor. An id may be
/// listed twice, and may name nothing: whoever uses the list opens each id anew. Main thread only.
class CDocData {
public:
    /// Begins to monitor the document.
    explicit CDocData(MxApDocument* document);
    ~CDocData();
    CDocData(const CDocData&) = delete;
    CDocData& operator=(const CDocData&) = delete;

    /// Lists the id at the end and watches its object for erasure, if it can be opened.
    void AppendData(MxDbObjectId id);
    /// Takes the first such id off the list and stops watching the object, if it can be opened.
    void RemoveData(MxDbObjectId id);
    void RemoveAllData();

    const std::vector<MxDbObjectId>& ids() const { return m_ids; }

private:
    std::vector<MxDbObjectId> m_ids;
    std::unique_ptr<PhonomarkPmReactor> m_monitor;
};
