// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"

#include <string>

namespace merix::db {

/// A layout: the sheet that shows a block (model space or a paper space). Its plot settings are kept with the record
/// they came from; a new layout gets the defaults of a millimetre sheet.
class Layout : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::wstring name;
    std::int16_t tabOrder = 0;
    MxDbObjectId block;
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

} // namespace merix::db
