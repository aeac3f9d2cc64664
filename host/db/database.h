// SPDX-License-Identifier: MIT
// The drawing database, its block table, and the host services that name the working database. Main thread only.
#pragma once

#include "host/db/dictionary.h"
#include "host/db/entity.h"
#include "host/db/symbol_table.h"

#include <memory>

class MxDbSortentsTable;

namespace merix::db {
class DatabaseImp;
}

/// A block: model space, a paper space, or a definition that inserts show.
class MxDbBlockTableRecord : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;

    /// Adds `entity`, which the database owns from then on and which stays open for write. The record must be open
    /// for write. eAlreadyInDatabase for an entity that has an id.
    Mx::ErrorStatus appendMxDbEntity(MxDbObjectId& id, MxDbEntity* entity);

    /// Opens the table that holds the block's draw order; the caller closes it. Without one it is made when
    /// `createIfNecessary`, else eKeyNotFound. The record must be open; it stays open for write when it had to be given
    /// an extension dictionary. eOpenForRead when that is kept from it by other readers.
    Mx::ErrorStatus getSortentsTable(MxDbSortentsTable*& table, Mx::OpenMode mode, bool createIfNecessary);

    /// The entities in the order in which they were added, erased ones included.
    const std::vector<MxDbObjectId>& entityIds() const { return m_entities; }
    const std::wstring& name() const { return m_name; }
    const MxGePoint3d& origin() const { return m_origin; }

    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

private:
    friend class merix::db::DatabaseImp;
    std::wstring m_name;
    MxGePoint3d m_origin;
    MxDbObjectId m_layoutId;
    std::vector<MxDbObjectId> m_entities;
};

/// One open drawing. Objects are reached by id; ids by handle.
class MxDbDatabase {
public:
    MxDbDatabase();
    ~MxDbDatabase();
    MxDbDatabase(const MxDbDatabase&) = delete;
    MxDbDatabase& operator=(const MxDbDatabase&) = delete;

    /// The id of `handle`. With `createIfNotFound` an unknown handle gets a reserved id behind which no object stands
    /// yet; else eUnknownHandle. `reserved` is 0.
    Mx::ErrorStatus getMxDbObjectId(MxDbObjectId& id, bool createIfNotFound, const MxDbHandle& handle,
                                    unsigned reserved = 0);
    /// The block table record that new entities go to: model space or the active layout's paper space.
    MxDbObjectId currentSpaceId() const;
    MxDbObjectId namedObjectsDictionaryId() const;
    /// Of the tables (MxDbSymbolTable) of blocks and of line types; null in a drawing that lacks them.
    MxDbObjectId blockTableId() const;
    MxDbObjectId linetypeTableId() const;
    Mx::ErrorStatus getNamedObjectsDictionary(MxDbDictionary*& dictionary, Mx::OpenMode mode);

    /// Adds the line type `name` as the line type file `file` defines it, with undo. A file name without a folder is
    /// looked for beside the program's data files; names are compared without regard to case. eDuplicateKey when the
    /// drawing has it already; eFileNotFound, eFileUnreadable; eKeyNotFound when the file has none of that name,
    /// eFileDamaged when it has lines without sense besides.
    Mx::ErrorStatus loadLineTypeFile(const wchar_t* name, const wchar_t* file);

    merix::db::DatabaseImp& imp() const { return *m_imp; }

private:
    std::unique_ptr<merix::db::DatabaseImp> m_imp;
};

/// What the host application tells of itself to database code.
class MxDbHostApplicationServices {
public:
    virtual ~MxDbHostApplicationServices() = default;
    /// The database of the drawing being worked on; null when none is open.
    virtual MxDbDatabase* workingDatabase() const = 0;
};

MxDbHostApplicationServices* mxdbHostApplicationServices();
