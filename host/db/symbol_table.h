// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"

#include <string>
#include <vector>

/// One of a drawing's tables of named records: blocks, layers, line types and so on. Names are compared without
/// regard to case. Main thread only.
class MxDbSymbolTable : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;

    /// The record of that name: eKeyNotFound when there is none. `erasedToo` finds an erased one when no other has the
    /// name.
    Mx::ErrorStatus getAt(const wchar_t* name, MxDbObjectId& id, bool erasedToo = false) const;

    std::string dxfType; ///< the table's name in DXF: "LAYER"
    std::vector<MxDbObjectId> records;
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};
