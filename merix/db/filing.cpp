// SPDX-License-Identifier: MIT
// What every object and every entity files before its own fields.
#include "host/db/entity.h"
#include "merix/db/database_imp.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"
#include "merix/rx/class_registry.h"

#include <algorithm>

using namespace merix::db;

MERIX_RX_CLASS(MxDbEntity, "MxDbEntity", MxDbObject, nullptr, "")

namespace {

void setPersistentReactors(ObjectData& data, const std::vector<MxDbObjectId>& ids) {
    std::erase_if(data.reactors, mxdbIsPersistentReactor);
    for (const MxDbObjectId& id : ids) {
        if (!id.isNull())
            data.reactors.push_back({nullptr, id});
    }
}

/// Those that are erased stay in the list of the object and in its before-images, but not in files.
std::vector<MxDbObjectId> persistentReactors(const ObjectData& data, MxDbFilerType type) {
    std::vector<MxDbObjectId> ids;
    for (const MxDbReactorEntry& entry : data.reactors) {
        const ObjectStub* reactor = entry.persistent.stub();
        const bool gone = reactor && reactor->object && reactor->erased;
        if (mxdbIsPersistentReactor(entry) && !(gone && type == MxDbFilerType::kFile))
            ids.push_back(entry.persistent);
    }
    return ids;
}

/// Reads a group in braces that belongs to an application; the two of the host are taken, others passed over.
void readApplicationGroup(ObjectData& data, MxDbDxfFiler* filer) {
    const std::wstring name = filer->itemString().str();
    const bool reactors = name == L"{ACAD_REACTORS", dictionary = name == L"{ACAD_XDICTIONARY";
    std::vector<MxDbObjectId> ids;
    while (filer->readItem() == Mx::eOk) {
        if (filer->itemCode() == 102 && filer->itemString().str() == L"}")
            break;
        if (filer->itemCode() == 330 && reactors)
            ids.push_back(filer->itemObjectId());
        if (filer->itemCode() == 360 && dictionary)
            data.extensionDictionary = filer->itemObjectId();
    }
    if (reactors)
        setPersistentReactors(data, ids);
}

/// Reads up to the first item that is not the base's. For a class of a module everything behind the base's own marker
/// and before the next one is: what is not known there is passed over. The built-in kinds pass unknown items over
/// themselves, so that they also read records whose own marker was left out.
Mx::ErrorStatus readBaseGroups(MxDbObject& object, MxDbEntity* entity, MxDbDxfFiler* filer) {
    const bool ownsMarker = entity && *entity->isA()->appName() != L'\0';
    bool marked = false;
    for (;;) {
        if (const auto status = filer->readItem(); status != Mx::eOk)
            return status == Mx::eEndOfItems ? Mx::eOk : status;
        const int code = filer->itemCode();
        if (code == 5 || code == 105 || code == 330)
            continue; // handle and owner are the reader's
        if (code == 102 && filer->itemString().str().starts_with(L'{')) {
            readApplicationGroup(object.data(), filer);
            continue;
        }
        if (entity && code == 100 && filer->itemString().str() == L"AcDbEntity") {
            marked = ownsMarker;
            continue;
        }
        const bool taken = entity && readEntityItem(*entity, filer);
        if (!taken && (!marked || code == 100)) {
            filer->pushBackItem();
            return Mx::eOk;
        }
    }
}

} // namespace

namespace merix::db {

bool readEntityItem(MxDbEntity& entity, MxDbDxfFiler* filer) {
    EntityTraits& t = traits(entity);
    DatabaseImp* database = filer->database() ? &filer->database()->imp() : nullptr;
    switch (filer->itemCode()) {
    case 6:
        if (database)
            t.linetype = database->linetypeNamed(filer->itemString().str());
        return true;
    case 8:
        if (database)
            t.layer = database->layerForName(filer->itemString().str());
        return true;
    case 48:
        t.linetypeScale = filer->itemDouble();
        return true;
    case 60:
        t.invisible = filer->itemInt16() != 0;
        return true;
    case 62:
        t.color = filer->itemInt16();
        return true;
    case 67:
        t.paperSpace = filer->itemInt16() != 0;
        return true;
    case 370:
        t.lineWeight = filer->itemInt16();
        return true;
    case 420:
        t.trueColor = filer->itemUInt32() & 0xFFFFFFU;
        t.hasTrueColor = true;
        return true;
    default:
        return false;
    }
}

std::wstring recordName(MxDbObjectId id) {
    const MxDbObject* record = DatabaseImp::peek(id, true);
    if (record && record->isKindOf(SymbolRecord::desc()))
        return static_cast<const SymbolRecord*>(record)->name;
    if (record && record->isKindOf(MxDbBlockTableRecord::desc()))
        return static_cast<const MxDbBlockTableRecord*>(record)->name();
    return {};
}

Mx::ErrorStatus writeNormal(MxDbDxfFiler* filer, const MxGeVector3d& normal) {
    if (normal == MxGeVector3d::kZAxis)
        return filer->filerStatus();
    return filer->writePoint3d(210, {normal.x, normal.y, normal.z});
}

Mx::ErrorStatus writeUnlessZero(MxDbDxfFiler* filer, int code, double value) {
    return value == 0.0 ? filer->filerStatus() : filer->writeDouble(code, value);
}

} // namespace merix::db

Mx::ErrorStatus MxDbObject::dwgInFields(MxDbDwgFiler* filer) {
    if (!filer)
        return Mx::eInvalidInput;
    std::vector<MxDbObjectId> reactors;
    MxDbObjectId dictionary;
    if (const auto status = filer->readSoftPointerId(dictionary); status != Mx::eOk)
        return status;
    if (const auto status = readIds(*filer, reactors); status != Mx::eOk)
        return status;
    m_data->extensionDictionary = dictionary;
    setPersistentReactors(*m_data, reactors);
    return Mx::eOk;
}

Mx::ErrorStatus MxDbObject::dwgOutFields(MxDbDwgFiler* filer) const {
    if (!filer)
        return Mx::eInvalidInput;
    filer->writeSoftPointerId(m_data->extensionDictionary);
    return writeIds(*filer, persistentReactors(*m_data, filer->filerType()));
}

Mx::ErrorStatus MxDbObject::dxfInFields(MxDbDxfFiler* filer) {
    return filer ? readBaseGroups(*this, nullptr, filer) : Mx::eInvalidInput;
}

Mx::ErrorStatus MxDbObject::dxfOutFields(MxDbDxfFiler* filer) const {
    if (!filer)
        return Mx::eInvalidInput;
    if (m_data->stub && !m_data->stub->handle.isNull()) {
        wchar_t text[17];
        m_data->stub->handle.getIntoAsciiBuffer(text);
        filer->writeString(5, text);
    }
    if (const auto reactors = persistentReactors(*m_data, filer->filerType()); !reactors.empty()) {
        filer->writeString(102, L"{ACAD_REACTORS");
        for (const MxDbObjectId& id : reactors)
            filer->writeObjectId(330, id);
        filer->writeString(102, L"}");
    }
    // What a file said stays said, even when the dictionary is another object's.
    if (const MxDbObjectId id = m_data->extensionDictionary; DatabaseImp::peek(id)) {
        filer->writeString(102, L"{ACAD_XDICTIONARY");
        filer->writeObjectId(360, id);
        filer->writeString(102, L"}");
    }
    return filer->writeObjectId(330, m_data->owner);
}

MxDbEntity::MxDbEntity()
    : MxDbObject(new EntityData) {}

MxDbObjectId MxDbEntity::layerId() const {
    return traits(*this).layer;
}

void MxDbEntity::recordGraphicsModified(bool modified) {
    ObjectData& d = data();
    if (!modified)
        return;
    ++d.graphicsVersion;
    if (!d.stub)
        return;
    if (d.writer)
        d.graphicsChangedInOpen = true;
    else
        d.stub->database->notifyGraphicsModified(*this);
}

Mx::ErrorStatus MxDbEntity::getGeomExtents(MxDbExtents& extents) const {
    assertReadEnabled();
    MxDbExtents box;
    if (const auto status = subGetGeomExtents(box); status != Mx::eOk)
        return status;
    if (box.isEmpty())
        return Mx::eInvalidExtents;
    extents = box;
    return Mx::eOk;
}

bool MxDbEntity::subWorldDraw(MxGiWorldDraw*) {
    return true;
}

Mx::ErrorStatus MxDbEntity::subGetGeomExtents(MxDbExtents&) const {
    return Mx::eInvalidExtents;
}

Mx::ErrorStatus MxDbEntity::dwgInFields(MxDbDwgFiler* filer) {
    if (const auto status = MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    EntityTraits& t = traits(*this);
    filer->readHardPointerId(t.layer);
    filer->readHardPointerId(t.linetype);
    filer->readInt16(t.color);
    filer->readBool(t.hasTrueColor);
    filer->readUInt32(t.trueColor);
    filer->readBool(t.invisible);
    filer->readBool(t.paperSpace);
    filer->readInt16(t.lineWeight);
    return filer->readDouble(t.linetypeScale);
}

Mx::ErrorStatus MxDbEntity::dwgOutFields(MxDbDwgFiler* filer) const {
    if (const auto status = MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    const EntityTraits& t = traits(*this);
    filer->writeHardPointerId(t.layer);
    filer->writeHardPointerId(t.linetype);
    filer->writeInt16(t.color);
    filer->writeBool(t.hasTrueColor);
    filer->writeUInt32(t.trueColor);
    filer->writeBool(t.invisible);
    filer->writeBool(t.paperSpace);
    filer->writeInt16(t.lineWeight);
    return filer->writeDouble(t.linetypeScale);
}

Mx::ErrorStatus MxDbEntity::dxfInFields(MxDbDxfFiler* filer) {
    return filer ? readBaseGroups(*this, this, filer) : Mx::eInvalidInput;
}

Mx::ErrorStatus MxDbEntity::dxfOutFields(MxDbDxfFiler* filer) const {
    if (const auto status = MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    const EntityTraits& t = traits(*this);
    filer->writeString(100, L"AcDbEntity");
    if (t.paperSpace)
        filer->writeInt16(67, 1);
    const std::wstring layer = recordName(t.layer);
    filer->writeString(8, layer.empty() ? L"0" : layer.c_str());
    if (const std::wstring linetype = recordName(t.linetype); !linetype.empty())
        filer->writeString(6, linetype.c_str());
    if (t.color != 256)
        filer->writeInt16(62, t.color);
    if (t.hasTrueColor)
        filer->writeUInt32(420, t.trueColor);
    if (t.lineWeight != -1)
        filer->writeInt16(370, t.lineWeight);
    if (t.linetypeScale != 1.0)
        filer->writeDouble(48, t.linetypeScale);
    if (t.invisible)
        filer->writeInt16(60, 1);
    return filer->filerStatus();
}
