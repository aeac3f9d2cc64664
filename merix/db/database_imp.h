// SPDX-License-Identifier: MIT
// The inside of MxDbDatabase: stubs by handle, the root objects, undo, and who is told of changes.
#pragma once

#include "host/db/database.h"
#include "merix/db/object_data.h"
#include "merix/db/undo.h"

#include <deque>
#include <functional>
#include <unordered_map>

namespace merix::db {

/// Told of every change that shows: the graphics and the document's "changed" mark follow it.
class DatabaseListener {
public:
    virtual ~DatabaseListener() = default;
    virtual void objectAppended(MxDbObject&) {}
    /// Closed after a change, or its graphics were marked modified; undo and redo too.
    virtual void objectModified(MxDbObject&) {}
    virtual void objectErased(MxDbObject&, bool /*erasing*/) {}
};

/// Everything of a drawing file that is no object: kept by the file readers and writers (floor io), opaque here.
class FileParts {
public:
    virtual ~FileParts() = default;
};

class DatabaseImp {
public:
    explicit DatabaseImp(MxDbDatabase& self);
    ~DatabaseImp();

    MxDbDatabase& self() { return m_self; }

    /// Makes the minimal drawing: tables, model and paper space, layouts, layer 0, line types ByBlock, ByLayer and
    /// Continuous, text style Standard, the named objects dictionary. For new drawings only.
    void createDefaults();

    // --- stubs
    ObjectStub* find(MxDbHandle handle) const;
    /// Finds or reserves.
    ObjectStub* reserve(MxDbHandle handle);
    MxDbHandle allocateHandle();
    std::uint64_t nextHandle() const { return m_nextHandle; }
    /// Handles below are never given out again.
    void raiseNextHandle(std::uint64_t next);
    /// All stubs in the order of their reservation.
    const std::deque<ObjectStub>& stubs() const { return m_stubs; }

    /// Puts an object that was just read behind its handle (a new one when null) without undo, events or marks.
    /// The object is owned by the database and closed. Null, and the object deleted, when the handle is taken.
    ObjectStub* adopt(MxDbObject* object, MxDbHandle handle, MxDbObjectId owner);
    /// Adds a new object with undo and events: open for write, owned by the database.
    Mx::ErrorStatus append(MxDbObject* object, MxDbObjectId owner, MxDbObjectId& id);
    /// Adds an entity that was read to the end of a block's entities.
    void adoptEntity(MxDbBlockTableRecord& block, MxDbObjectId id);

    // --- roots (null ids in a drawing that lacks them)
    struct Roots {
        MxDbObjectId viewportTable, linetypeTable, layerTable, textStyleTable, viewTable, ucsTable, appIdTable,
            dimStyleTable, blockTable, namedObjects, modelSpace, paperSpace;
    };
    Roots roots;
    /// Model space unless a layout's paper space was made current.
    MxDbObjectId currentSpace;

    /// The block of that name (case ignored), null when there is none. By layer, line type, style the same.
    MxDbObjectId blockNamed(std::wstring_view name) const;
    MxDbObjectId layerNamed(std::wstring_view name) const;
    MxDbObjectId linetypeNamed(std::wstring_view name) const;
    MxDbObjectId textStyleNamed(std::wstring_view name) const;
    MxDbBlockTableRecord* block(MxDbObjectId id) const;

    /// The resident object without opening it (drawing, saving, walking); null when there is none or it is erased.
    static MxDbObject* peek(MxDbObjectId id, bool erasedToo = false) {
        ObjectStub* stub = id.stub();
        return stub && stub->object && (erasedToo || !stub->erased) ? stub->object : nullptr;
    }

    UndoRecorder undo;

    void addListener(DatabaseListener* listener);
    void removeListener(DatabaseListener* listener);
    /// Used by objects and undo.
    void notifyAppended(MxDbObject& object);
    void notifyModified(MxDbObject& object);
    void notifyErased(MxDbObject& object, bool erasing);

    /// Objects opened for write since the last save, appended, erased or un-erased, in order, each once.
    const std::vector<MxDbObjectId>& changedSinceSave() const { return m_changed; }
    void markChanged(MxDbObject& object);
    /// After a save or a load.
    void clearChanged();
    bool isChanged() const { return !m_changed.empty(); }

    /// Header variables that the host itself uses, by name without `$`; points as three numbers.
    struct Header {
        MxGePoint3d extMin{1e20, 1e20, 0}, extMax{-1e20, -1e20, 0};
        std::wstring currentLayer = L"0";
        double linetypeScale = 1.0;
        double textSize = 2.5;
        std::int16_t insUnits = 4;
    } header;

    std::unique_ptr<FileParts> fileParts;

private:
    MxDbDatabase& m_self;
    std::deque<ObjectStub> m_stubs;
    std::unordered_map<std::uint64_t, ObjectStub*> m_byHandle;
    std::uint64_t m_nextHandle = 1;
    std::vector<MxDbObjectId> m_changed;
    std::vector<DatabaseListener*> m_listeners;
};

/// Sets what mxdbHostApplicationServices()->workingDatabase() answers. Readers set it to the drawing being read.
void setWorkingDatabase(MxDbDatabase* database);

/// Makes a drawing the working one for as long as the object lives.
class WorkingDatabaseScope {
public:
    explicit WorkingDatabaseScope(MxDbDatabase* database);
    ~WorkingDatabaseScope();
    WorkingDatabaseScope(const WorkingDatabaseScope&) = delete;
    WorkingDatabaseScope& operator=(const WorkingDatabaseScope&) = delete;

private:
    MxDbDatabase* m_before;
};

/// Files an object's fields into bytes and back with the binary filer.
std::string dwgImage(const MxDbObject& object, MxDbFilerType type);
Mx::ErrorStatus readDwgImage(MxDbObject& object, std::string_view image, MxDbFilerType type);

} // namespace merix::db
