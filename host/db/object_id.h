// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/handle.h"

class MxDbDatabase;

namespace merix::db {
struct ObjectStub;
}

/// Names one object of one open database: a small value, valid as long as the database is open. Whether an object
/// stands behind it shows when it is opened.
class MxDbObjectId {
public:
    constexpr MxDbObjectId() = default;
    explicit constexpr MxDbObjectId(merix::db::ObjectStub* stub)
        : m_stub(stub) {}

    constexpr bool isNull() const { return m_stub == nullptr; }
    /// True when an object, erased or not, stands behind the id.
    bool isValid() const;
    MxDbHandle handle() const;
    MxDbDatabase* database() const;

    constexpr merix::db::ObjectStub* stub() const { return m_stub; }
    bool operator==(const MxDbObjectId&) const = default;
    bool operator<(const MxDbObjectId& other) const { return m_stub < other.m_stub; }

private:
    merix::db::ObjectStub* m_stub = nullptr;
};
