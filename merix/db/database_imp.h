// SPDX-License-Identifier: MIT
// The inside of MxDbDatabase: stubs by handle, the root objects, undo, and who is told of changes.
#pragma once

#include "host/db/database.h"
#include "merix/db/header.h"
#include "merix/db/object_data.h"
#include "merix/db/undo.h"

#include <deque>
#include <map>
#include <unordered_map>

namespace merix::db {

/// Told of every change that shows: the graphics and the document's "changed" mark follow it.
class DatabaseListener {
public:
    virtual ~DatabaseListener() = default;
    virtual void objectAppended(MxDbObject&) {}
    /// Closed after a change; undo and redo too.
    virtual void objectModified(MxDbObject&) {}
    /// Nothing of it that is saved changed, but it has to be drawn anew.
    virtual void objectGraphicsModified(MxDbObject& object) { objectModified(object); }
    virtual void objectErased(MxDbObject&, bool /*erasing*/) {}
    /// Shown as one that is meant, or no longer.
    virtual void entityHighlighted(MxDbObject&, bool /*highlighted*/) {}
    /// Variables of the header were changed; undo and redo too.
    virtual void headerChanged() {}
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
    /// Fills in a block that was read.
    void setBlock(MxDbBlockTableRecord& block, std::wstring name, const MxGePoint3d& origin);
    void setBlockLayout(MxDbBlockTableRecord& block, MxDbObjectId layout);
    MxDbObjectId blockLayout(const MxDbBlockTableRecord& block) const;

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
    /// Names of table records were changed in place: what the lookups above remember is stale. Adding records to a
    /// table is noticed without this.
    void namesChanged() { ++m_namesVersion; }

    /// The layer of that name; one that is in no table is made outside the tables, so that an entity keeps the name
    /// of a layer that its drawing does not list. It has no handle.
    MxDbObjectId layerForName(std::wstring_view name);
    /// Gives handles to the layers made by layerForName and adds them to the layer table (which is made when there is
    /// none): for files that refer to layers by handle.
    void listImplicitLayers();

    /// The layouts in tab order, model space first.
    struct LayoutInfo {
        std::wstring name;
        MxDbObjectId space; ///< the block that the layout shows
        MxDbObjectId layout;
    };
    std::vector<LayoutInfo> layouts() const;

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
    void notifyGraphicsModified(MxDbObject& object);
    void notifyErased(MxDbObject& object, bool erasing);
    void notifyHighlighted(MxDbObject& entity, bool highlighted);

    /// Objects opened for write since the last save (or changed after upgradeOpen), appended, erased or un-erased, in
    /// order, each once.
    const std::vector<MxDbObjectId>& changedSinceSave() const { return m_changed; }
    void markChanged(MxDbObject& object);
    /// After a save or a load.
    void clearChanged();
    bool isChanged() const { return m_headerChanged || !m_changed.empty(); }

    /// Written directly while a drawing is read; later by changeHeader.
    using Header = DrawingHeader;
    Header header;
    /// Replaces the header's variables: a step that can be undone, told to listeners. The same values are no change.
    void changeHeader(const Header& changed);
    bool isHeaderChanged() const { return m_headerChanged; }
    /// The header was replaced by undo, redo or changeHeader.
    void notifyHeaderChanged();

    std::unique_ptr<FileParts> fileParts;
    /// What modules left here for the time they are away, by their keys.
    std::map<std::wstring, std::vector<MxDbHandle>> keptHandles;

    /// Replaces the object behind an id by one of another class, which takes over its place: owner, reactors, extension
    /// dictionary, source text. The old object is deleted.
    void replaceObject(MxDbObject& old, std::unique_ptr<MxDbObject> fresh);

private:
    struct NameIndex {
        std::unordered_map<std::wstring, MxDbObjectId> ids; // folded names
        std::size_t records = 0;
        std::uint64_t version = ~std::uint64_t{0};
    };
    MxDbObjectId named(MxDbObjectId table, NameIndex& index, std::wstring_view name) const;

    MxDbDatabase& m_self;
    std::deque<ObjectStub> m_stubs;
    std::unordered_map<std::uint64_t, ObjectStub*> m_byHandle;
    std::uint64_t m_nextHandle = 1;
    std::vector<MxDbObjectId> m_changed;
    bool m_headerChanged = false; ///< since the last save or load
    std::vector<DatabaseListener*> m_listeners;
    std::uint64_t m_namesVersion = 0;
    mutable NameIndex m_blockNames, m_layerNames, m_linetypeNames, m_textStyleNames;
    std::unordered_map<std::wstring, MxDbObjectId> m_implicitLayers; // folded names
};

/// All open databases, in order of their making.
const std::vector<DatabaseImp*>& openDatabases();

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

/// True for an entry of `container` whose object is erased: the drawing keeps it, for the erasure may be undone, files
/// do not. An entry of an object that was never there stays; so do all entries of a container that is in no drawing.
bool leavesFiles(const MxDbObject& container, MxDbObjectId entry);

/// Files an object's fields into bytes and back with the binary filer.
std::string dwgImage(const MxDbObject& object, MxDbFilerType type);
/// The state that undo goes back to, whoever has the object open.
std::string undoImage(const MxDbObject& object);
Mx::ErrorStatus readDwgImage(MxDbObject& object, std::string_view image, MxDbFilerType type);

} // namespace merix::db
