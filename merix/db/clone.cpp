// SPDX-License-Identifier: MIT
#include "host/db/id_mapping.h"
#include "host/db/object.h"

Mx::ErrorStatus MxDbObject::deepClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map, bool isPrimary) const {
    assertReadEnabled();
    return subDeepClone(owner, clone, map, isPrimary);
}

Mx::ErrorStatus MxDbObject::wblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                        bool isPrimary) const {
    assertReadEnabled();
    return subWblockClone(owner, clone, map, isPrimary);
}

Mx::ErrorStatus MxDbObject::subDeepClone(MxDbObject*, MxDbObject*& clone, MxDbIdMapping&, bool) const {
    clone = nullptr;
    return Mx::eNotApplicable;
}

Mx::ErrorStatus MxDbObject::subWblockClone(MxDbObject*, MxDbObject*& clone, MxDbIdMapping&, bool) const {
    clone = nullptr;
    return Mx::eNotApplicable;
}
