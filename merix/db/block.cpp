// SPDX-License-Identifier: MIT
#include "host/db/database.h"
#include "merix/db/database_imp.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/rx/class_registry.h"
#include "merix/rx/text.h"

using namespace merix::db;

MERIX_RX_CLASS(MxDbBlockTableRecord, "MxDbBlockTableRecord", MxDbObject, merix::rx::makeObject<MxDbBlockTableRecord>,
               "BLOCK_RECORD")

Mx::ErrorStatus MxDbBlockTableRecord::appendMxDbEntity(MxDbObjectId& id, MxDbEntity* entity) {
    if (!entity)
        return Mx::eNullEntity;
    ObjectData& own = data();
    if (!own.stub)
        return Mx::eNoDatabase;
    if (!own.writer)
        return Mx::eNotOpen;
    traits(*entity).paperSpace = merix::rx::foldCase(m_name).starts_with(L"*paper_space");
    if (const auto status = own.stub->database->append(entity, objectId(), id); status != Mx::eOk)
        return status;
    // No before-image: taking the append back erases the entity, which leaves the list as it is.
    m_entities.push_back(id);
    own.stub->database->markChanged(*this);
    own.changedInOpen = true;
    return Mx::eOk;
}

Mx::ErrorStatus MxDbBlockTableRecord::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    if (const auto status = readText(*filer, m_name); status != Mx::eOk)
        return status;
    filer->readPoint3d(m_origin);
    if (const auto status = filer->readSoftPointerId(m_layoutId);
        status != Mx::eOk || filer->filerType() == MxDbFilerType::kUndo)
        return status;
    return readIds(*filer, m_entities);
}

Mx::ErrorStatus MxDbBlockTableRecord::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(m_name.c_str());
    filer->writePoint3d(m_origin);
    // The list only grows while the drawing is open, so undo needs no copy of it.
    if (const auto status = filer->writeSoftPointerId(m_layoutId); filer->filerType() == MxDbFilerType::kUndo)
        return status;
    return writeIds(*filer, m_entities);
}

Mx::ErrorStatus MxDbBlockTableRecord::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dxfInFields(filer); status != Mx::eOk)
        return status;
    return readItems(filer, nullptr, [&](int code) {
        if (code == 2)
            m_name = filer->itemString().str();
        else if (code == 340)
            m_layoutId = filer->itemObjectId();
        return true;
    });
}

Mx::ErrorStatus MxDbBlockTableRecord::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbSymbolTableRecord");
    filer->writeString(100, L"AcDbBlockTableRecord");
    filer->writeString(2, m_name.c_str());
    return filer->writeObjectId(340, m_layoutId);
}
