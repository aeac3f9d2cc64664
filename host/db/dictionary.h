// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"
#include "host/db/resbuf.h"

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

/// A container of named objects, which it owns. Keys are compared without regard to case and keep the form and the
/// order in which they were added.
class MxDbDictionary : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;

    /// eKeyNotFound when there is no such key, or what stands there is erased.
    Mx::ErrorStatus getAt(const wchar_t* key, MxDbObjectId& id) const;
    /// Adds `object` (open for write afterwards, owned by the database) under `key`; replaces the entry of that key.
    /// The key "*U" stands for a new name of the dictionary's own making.
    Mx::ErrorStatus setAt(const wchar_t* key, MxDbObject* object, MxDbObjectId& id);
    /// Gives an entry another key. eKeyNotFound, eDuplicateKey; eInvalidInput for an empty key.
    Mx::ErrorStatus rename(const wchar_t* key, const wchar_t* newKey);
    /// Keys with ids in order. Without `all`, entries of objects that are erased or do not exist are left out.
    std::vector<std::pair<std::wstring, MxDbObjectId>> entries(bool all = false) const;

    /// A copy holds copies of what the dictionary owns; what is never copied is not in it.
    Mx::ErrorStatus subDeepClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                 bool isPrimary = true) const override;
    Mx::ErrorStatus subWblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                   bool isPrimary = true) const override;

    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

private:
    friend class MxDbObject;
    void erasing(bool erasing);
    std::size_t find(const wchar_t* key) const;
    std::wstring unusedName() const;
    void cloneEntriesInto(MxDbDictionary& copy, MxDbIdMapping& map, bool wblock) const;

    std::vector<std::pair<std::wstring, MxDbObjectId>> m_entries;
    mutable std::unordered_map<std::wstring, std::size_t> m_index; // folded key to place; empty: not made
    bool m_hardOwner = false;
    std::int16_t m_cloning = 1;
};

/// An extended record: a chain of group codes and values that the drawing keeps for an application.
class MxDbXrecord : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;

    /// A copy of the contents that the caller frees with mxutRelRb; null for an empty record.
    Mx::ErrorStatus rbChain(resbuf** chain) const;
    /// Replaces the contents by a copy of the chain.
    Mx::ErrorStatus setFromRbChain(const resbuf& chain);

    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

private:
    std::vector<std::pair<short, MxDbValue>> m_items;
    std::int16_t m_cloning = 1;
};
