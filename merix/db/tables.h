// SPDX-License-Identifier: MIT
// Symbol tables and their records: layers, line types, text styles; blocks are MxDbBlockTableRecord.
#pragma once

#include "host/db/database.h"

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

/// Common part of table records: name and standard flags.
class SymbolRecord : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::wstring name;
    std::int16_t flags = 0;
};

class LayerRecord : public SymbolRecord {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::int16_t color = 7; ///< 1 to 255; visible in `off`
    std::uint32_t trueColor = 0;
    bool hasTrueColor = false;
    bool off = false;
    MxDbObjectId linetype;
    std::int16_t lineWeight = -3;
    bool plottable = true;
    bool isLocked() const { return flags & 4; }
    bool isFrozen() const { return flags & 1; }
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

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
