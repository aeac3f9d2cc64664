// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"

#include <string>

/// Common part of the records of symbol tables: name and standard flags as they are filed.
class MxDbSymbolTableRecord : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::wstring name;
    std::int16_t flags = 0;
};

/// A layer. Entities on a locked one cannot be opened for write. Main thread only.
class MxDbLayerTableRecord : public MxDbSymbolTableRecord {
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
    bool isFrozen() const { return flags & 1; }
    bool isLocked() const { return flags & 4; }
    /// The record must be open for write.
    void setIsLocked(bool locked);
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};
