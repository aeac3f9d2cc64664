// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/database.h"

#include <string>

/// A layout: the sheet that shows a block (model space or a paper space). Its plot settings are kept with the record
/// they came from; a new layout gets the defaults of a millimetre sheet. Main thread only.
class MxDbLayout : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::wstring name;
    std::int16_t tabOrder = 0; ///< 0 for model space
    MxDbObjectId block;        ///< the block table record that it shows
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

/// Opens the dictionary of the drawing's layouts; the caller closes it. eKeyNotFound, with null, in a drawing older
/// than layouts; else the statuses of mxdbOpenObject.
Mx::ErrorStatus mxdbOpenLayoutDictionary(MxDbDictionary*& dictionary, const MxDbDatabase& database, Mx::OpenMode mode);
