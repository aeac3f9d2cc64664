// SPDX-License-Identifier: MIT
#include "phonomark/entity/ps_reactor.h"

#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/geom_extents.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/dbutil/run_time_class.h"
#include "phonomark/entity/phonomark.h"

MxRxClass* PhonomarkPsReactor::gpDesc = nullptr;

namespace {
constexpr wchar_t kClassName[] = L"PhonomarkPsReactor";
constexpr int kDwgVersion = 33;
constexpr int kMaintenanceVersion = 55;
} // namespace

MxRxClass* PhonomarkPsReactor::rxInit() {
    return rxInit(nullptr);
}

MxRxClass* PhonomarkPsReactor::rxInit(MxRxAppNameChange appNameChange) {
    if (MxRxClass* found = registeredClass(gpDesc, kClassName))
        return found;
    gpDesc =
        requireClass(newMxRxClass(kClassName, MxDbObject::desc()->name(), kDwgVersion, kMaintenanceVersion, 0,
                                  &makeOnHostHeap<PhonomarkPsReactor>, kClassName, L"PERSISTREACTOR", appNameChange));
    return gpDesc;
}

void PhonomarkPsReactor::modified(const MxDbObject* object) try {
    if (!object || !object->isKindOf(MxDbEntity::desc()))
        return;
    const Opened<MxDbPhonomark> note(m_noteId, Mx::kForWrite);
    if (!note)
        return;
    if (note->attachObj() == object->objectId()) {
        MxDbExtents extents;
        getGeomExtentsEx(extents, static_cast<const MxDbEntity*>(object));
        // The before-image holds the recording: it is not taken for changes that leave the object where it is.
        if (extents.minPoint() != note->extents().minPoint() || extents.maxPoint() != note->extents().maxPoint()) {
            note->assertWriteEnabled();
            note->setExtents(extents);
        }
        note->recordGraphicsModified(true);
    }
} catch (...) {
    reportFailure("following an object");
}

Mx::ErrorStatus PhonomarkPsReactor::dwgInFields(MxDbDwgFiler* filer) try {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    filer->readSoftPointerId(m_noteId);
    return filer->filerStatus();
} catch (...) {
    return failed("reading an attachment", Mx::eItemUnreadable);
}

Mx::ErrorStatus PhonomarkPsReactor::dwgOutFields(MxDbDwgFiler* filer) const try {
    assertReadEnabled();
    if (const auto status = MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeSoftPointerId(m_noteId);
    return filer->filerStatus();
} catch (...) {
    return failed("writing an attachment", Mx::eItemUnreadable);
}

Mx::ErrorStatus PhonomarkPsReactor::dxfInFields(MxDbDxfFiler* filer) try {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dxfInFields(filer); status != Mx::eOk)
        return status;
    if (!filer->atSubclassData(kClassName))
        return Mx::eSubclassMissing;
    while (filer->readItem() == Mx::eOk) {
        if (filer->itemCode() != 330)
            return filer->pushBackItem();
        m_noteId = filer->itemObjectId();
    }
    return filer->filerStatus();
} catch (...) {
    return failed("reading an attachment", Mx::eItemUnreadable);
}

Mx::ErrorStatus PhonomarkPsReactor::dxfOutFields(MxDbDxfFiler* filer) const try {
    assertReadEnabled();
    if (const auto status = MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, kClassName);
    filer->writeObjectId(330, m_noteId);
    return filer->filerStatus();
} catch (...) {
    return failed("writing an attachment", Mx::eItemUnreadable);
}
