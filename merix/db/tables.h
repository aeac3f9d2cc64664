// SPDX-License-Identifier: MIT
// Symbol tables and their records: layers, line types, text styles; blocks are MxDbBlockTableRecord.
#pragma once

#include "host/db/database.h"
#include "host/db/layer.h"
#include "host/db/symbol_table.h"

#include <string>
#include <vector>

namespace merix::db {

using SymbolTable = ::MxDbSymbolTable;
using SymbolRecord = ::MxDbSymbolTableRecord;
using LayerRecord = ::MxDbLayerTableRecord;

class LinetypeRecord : public SymbolRecord {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::wstring description;
    std::vector<double> dashes; ///< drawing units; positive pen down, negative up, 0 a dot
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

class TextStyleRecord : public SymbolRecord {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    double height = 0.0, widthFactor = 1.0, oblique = 0.0;
    std::wstring font = L"txt";
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

/// The name of a block or another table's record; null for any other object and for null.
const std::wstring* nameOfRecord(const MxDbObject* record);

} // namespace merix::db
