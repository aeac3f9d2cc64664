// SPDX-License-Identifier: MIT
// The store's own access to resident objects, outside the open/close rules: drawing, saving, undo.
#pragma once

#include "merix/db/object_data.h"

namespace merix::db {

/// Makes an object readable for as long as it lives, whether or not it is open: virtual operations of a class may
/// assert that they are.
class ReadAccess {
public:
    explicit ReadAccess(const MxDbObject& object)
        : m_data(object.data()) {
        ++m_data.readers;
    }
    ~ReadAccess() { --m_data.readers; }
    ReadAccess(const ReadAccess&) = delete;
    ReadAccess& operator=(const ReadAccess&) = delete;

private:
    ObjectData& m_data;
};

/// Makes an object writable for filling it in: no before-image, no marks, no events.
class FillAccess {
public:
    explicit FillAccess(MxDbObject& object)
        : m_data(object.data())
        , m_writer(m_data.writer)
        , m_restoring(m_data.restoring) {
        m_data.writer = m_data.restoring = true;
    }
    ~FillAccess() {
        m_data.writer = m_writer;
        m_data.restoring = m_restoring;
    }
    FillAccess(const FillAccess&) = delete;
    FillAccess& operator=(const FillAccess&) = delete;

private:
    ObjectData& m_data;
    const bool m_writer, m_restoring;
};

} // namespace merix::db
