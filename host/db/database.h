// SPDX-License-Identifier: MIT
// The drawing database, its block table, and the host services that name the working database. Main thread only.
#pragma once

#include "host/db/dictionary.h"
#include "host/db/entity.h"
#include "host/db/symbol_table.h"

#include <memory>

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

    /// The entities in drawing order, erased ones included.
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
