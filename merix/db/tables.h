// SPDX-License-Identifier: MIT
// Symbol tables and their records: layers, line types, text styles; blocks are MxDbBlockTableRecord.
#pragma once

#include "host/db/database.h"
#include "host/db/layer.h"

#include <string>
#include <vector>

namespace merix::db {

/// Any of the nine symbol tables: an ordered container of named records. `m_type` is its DXF name ("LAYER").
class SymbolTable : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::string dxfType;
    std::vector<MxDbObjectId> records;
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

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

} // namespace merix::db
