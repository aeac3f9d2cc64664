// SPDX-License-Identifier: MIT
// What the store keeps beside every object: its stub (what an id points at) and its record.
#pragma once

#include "host/db/object.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace merix::db {

class DatabaseImp;

/// What an MxDbObjectId points at. Lives as long as its database, never moves.
struct ObjectStub {
    MxDbHandle handle;
    DatabaseImp* database = nullptr;
    MxDbObject* object = nullptr; ///< null: the handle is reserved, nothing was read for it
    bool erased = false;
};

/// The text of the record an object was read from. It stays true to the byte until the object is changed, and is
/// what the next save is merged with then. Points into the file's buffer, which it keeps alive.
struct SourceText {
    std::shared_ptr<const std::string> buffer;
    std::string_view text;
    bool empty() const { return text.empty(); }
};

/// The store's record of one object. Rare things are null for most objects.
struct ObjectData {
    explicit ObjectData(bool entity = false)
        : isEntity(entity) {}
    ObjectData(const ObjectData&) = delete;
    ObjectData& operator=(const ObjectData&) = delete;

    ObjectStub* stub = nullptr;
    MxDbObjectId owner;
    MxDbObjectId extensionDictionary;
    std::vector<MxDbReactorEntry> reactors;
    SourceText source;
    std::unique_ptr<std::string> beforeImage; ///< taken at the first change of the open under way; null before

    std::uint16_t readers = 0;
    bool writer = false;
    const bool isEntity;        ///< the record is an EntityData
    bool restoring = false;     ///< the store itself is filling in the object: no before-image, no events
    bool erasedAtOpen = false;  ///< state when it was opened for write
    bool isNew = false;         ///< appended and not closed yet
    bool changedInOpen = false; ///< assertWriteEnabled was called in the open under way
    bool graphicsChangedInOpen = false;
    bool changedSinceSave = false;     ///< to be filed by the next save
    bool sourceStale = false;          ///< changed since `source` was read or written
    std::uint32_t graphicsVersion = 0; ///< counts recordGraphicsModified and changes; display lists compare it
};

} // namespace merix::db
