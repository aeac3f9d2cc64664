// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"

#include <vector>

class MxDbBlockTableRecord;

/// The draw order of one block's entities. An entity stands where its sort handle puts it, which is its own handle
/// unless the table says otherwise; a block without a table, or with an empty one, is drawn in the order of its list.
/// Changes need the table open for write and follow undo. Main thread only.
class MxDbSortentsTable : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;

    /// The block whose entities are sorted.
    MxDbObjectId blockId() const { return m_block; }
    /// Puts the entities below (drawn before) or above all others of the block; among themselves they keep their
    /// order. eInvalidInput, and nothing is changed, when one of them is no entity of the block.
    Mx::ErrorStatus moveToBottom(const std::vector<MxDbObjectId>& entities);
    Mx::ErrorStatus moveToTop(const std::vector<MxDbObjectId>& entities);
    /// The handle that puts the entity in its place.
    MxDbHandle sortHandle(MxDbObjectId entity) const;
    /// The entities whose sort handle is not their own.
    std::vector<MxDbObjectId> listedEntities() const;
    /// All entities of the block, the lowest first; erased ones too.
    std::vector<MxDbObjectId> fullDrawOrder() const;

    Mx::ErrorStatus subWblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                   bool isPrimary = true) const override;
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

private:
    friend class MxDbBlockTableRecord;
    struct Entry {
        MxDbObjectId entity;
        MxDbHandle sort;
    };
    Mx::ErrorStatus move(const std::vector<MxDbObjectId>& entities, bool toTop);
    void setOrder(const std::vector<MxDbObjectId>& order);

    MxDbObjectId m_block;
    std::vector<Entry> m_entries;
    /// What fullDrawOrder made of which list of the block; empty when the entries changed since.
    mutable std::vector<MxDbObjectId> m_sortedFrom, m_sorted;
};
