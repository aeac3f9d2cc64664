// SPDX-License-Identifier: MIT
#include "merix/db/tables.h"

#include "merix/db/database_imp.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/rx/class_registry.h"
#include "merix/rx/text.h"

#include <cmath>
#include <cstdlib>

MERIX_RX_CLASS(MxDbSymbolTable, "MxDbSymbolTable", MxDbObject, merix::rx::makeObject<MxDbSymbolTable>, "TABLE")
MERIX_RX_CLASS(MxDbSymbolTableRecord, "MxDbSymbolTableRecord", MxDbObject, nullptr, "")
MERIX_RX_CLASS(MxDbLayerTableRecord, "MxDbLayerTableRecord", MxDbSymbolTableRecord,
               merix::rx::makeObject<MxDbLayerTableRecord>, "LAYER")

namespace merix::db {

MERIX_RX_CLASS(LinetypeRecord, "MxDbLinetypeTableRecord", SymbolRecord, rx::makeObject<LinetypeRecord>, "LTYPE")
MERIX_RX_CLASS(TextStyleRecord, "MxDbTextStyleTableRecord", SymbolRecord, rx::makeObject<TextStyleRecord>, "STYLE")

namespace {

Mx::ErrorStatus readHead(MxDbDwgFiler* filer, SymbolRecord& record) {
    record.assertWriteEnabled();
    if (const auto status = record.MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    if (const auto status = readText(*filer, record.name); status != Mx::eOk)
        return status;
    return filer->readInt16(record.flags);
}

Mx::ErrorStatus writeHead(MxDbDwgFiler* filer, const SymbolRecord& record) {
    if (const auto status = record.MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(record.name.c_str());
    return filer->writeInt16(record.flags);
}

/// Offers every item to the head (name and flags) and then to `take(code)`.
template <class Take> Mx::ErrorStatus readRecord(MxDbDxfFiler* filer, SymbolRecord& record, Take take) {
    record.assertWriteEnabled();
    if (const auto status = record.MxDbObject::dxfInFields(filer); status != Mx::eOk)
        return status;
    return readItems(filer, nullptr, [&](int code) {
        if (code == 2)
            record.name = filer->itemString().str();
        else if (code == 70)
            record.flags = filer->itemInt16();
        else
            take(code);
        return true;
    });
}

Mx::ErrorStatus writeHead(MxDbDxfFiler* filer, const SymbolRecord& record, const wchar_t* marker) {
    if (const auto status = record.MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbSymbolTableRecord");
    filer->writeString(100, marker);
    filer->writeString(2, record.name.c_str());
    return filer->writeInt16(70, record.flags);
}

} // namespace

Mx::ErrorStatus LinetypeRecord::dwgInFields(MxDbDwgFiler* filer) {
    if (const auto status = readHead(filer, *this); status != Mx::eOk)
        return status;
    if (const auto status = readText(*filer, description); status != Mx::eOk)
        return status;
    std::uint32_t count = 0;
    if (const auto status = readCount(*filer, count, 1 + sizeof(double)); status != Mx::eOk)
        return status;
    dashes.assign(count, 0.0);
    for (double& dash : dashes)
        filer->readDouble(dash);
    return filer->filerStatus();
}

Mx::ErrorStatus LinetypeRecord::dwgOutFields(MxDbDwgFiler* filer) const {
    if (const auto status = writeHead(filer, *this); status != Mx::eOk)
        return status;
    filer->writeString(description.c_str());
    filer->writeUInt32(static_cast<std::uint32_t>(dashes.size()));
    for (const double dash : dashes)
        filer->writeDouble(dash);
    return filer->filerStatus();
}

Mx::ErrorStatus LinetypeRecord::dxfInFields(MxDbDxfFiler* filer) {
    dashes.clear();
    return readRecord(filer, *this, [&](int code) {
        if (code == 3)
            description = filer->itemString().str();
        else if (code == 49)
            dashes.push_back(filer->itemDouble());
    });
}

Mx::ErrorStatus LinetypeRecord::dxfOutFields(MxDbDxfFiler* filer) const {
    if (const auto status = writeHead(filer, *this, L"AcDbLinetypeTableRecord"); status != Mx::eOk)
        return status;
    double length = 0.0;
    for (const double dash : dashes)
        length += std::fabs(dash);
    filer->writeString(3, description.c_str());
    filer->writeInt16(72, 'A');
    filer->writeInt16(73, static_cast<std::int16_t>(dashes.size()));
    filer->writeDouble(40, length);
    for (const double dash : dashes) {
        filer->writeDouble(49, dash);
        filer->writeInt16(74, 0);
    }
    return filer->filerStatus();
}

Mx::ErrorStatus TextStyleRecord::dwgInFields(MxDbDwgFiler* filer) {
    if (const auto status = readHead(filer, *this); status != Mx::eOk)
        return status;
    filer->readDouble(height);
    filer->readDouble(widthFactor);
    filer->readDouble(oblique);
    return readText(*filer, font);
}

Mx::ErrorStatus TextStyleRecord::dwgOutFields(MxDbDwgFiler* filer) const {
    if (const auto status = writeHead(filer, *this); status != Mx::eOk)
        return status;
    filer->writeDouble(height);
    filer->writeDouble(widthFactor);
    filer->writeDouble(oblique);
    return filer->writeString(font.c_str());
}

Mx::ErrorStatus TextStyleRecord::dxfInFields(MxDbDxfFiler* filer) {
    return readRecord(filer, *this, [&](int code) {
        if (code == 3)
            font = filer->itemString().str();
        else if (code == 40)
            height = filer->itemDouble();
        else if (code == 41)
            widthFactor = filer->itemDouble();
        else if (code == 50)
            oblique = radians(filer->itemDouble());
    });
}

Mx::ErrorStatus TextStyleRecord::dxfOutFields(MxDbDxfFiler* filer) const {
    if (const auto status = writeHead(filer, *this, L"AcDbTextStyleTableRecord"); status != Mx::eOk)
        return status;
    filer->writeDouble(40, height);
    filer->writeDouble(41, widthFactor);
    filer->writeDouble(50, degrees(oblique));
    filer->writeInt16(71, 0);
    filer->writeDouble(42, height > 0.0 ? height : 2.5);
    filer->writeString(3, font.c_str());
    return filer->writeString(4, L"");
}

} // namespace merix::db

using namespace merix::db;

Mx::ErrorStatus MxDbSymbolTable::getAt(const wchar_t* name, MxDbObjectId& id, bool erasedToo) const {
    assertReadEnabled();
    id = {};
    if (!name)
        return Mx::eInvalidInput;
    const DatabaseImp* const database = data().stub ? data().stub->database : nullptr;
    if (database && objectId() == database->roots.blockTable)
        id = database->blockNamed(name);
    else if (database && objectId() == database->roots.linetypeTable)
        id = database->linetypeNamed(name);
    const std::wstring sought = merix::rx::foldCase(name);
    const auto search = [&](bool erased) {
        for (std::size_t i = 0; id.isNull() && i < records.size(); ++i) {
            const std::wstring* const found = nameOfRecord(DatabaseImp::peek(records[i], erased));
            if (found && merix::rx::foldCase(*found) == sought)
                id = records[i];
        }
    };
    search(false);
    if (erasedToo)
        search(true);
    return id.isNull() ? Mx::eKeyNotFound : Mx::eOk;
}

Mx::ErrorStatus MxDbSymbolTable::dwgInFields(MxDbDwgFiler* filer) {
    if (const auto status = MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    if (const auto status = readBlob(*filer, dxfType); status != Mx::eOk)
        return status;
    return readIds(*filer, records);
}

Mx::ErrorStatus MxDbSymbolTable::dwgOutFields(MxDbDwgFiler* filer) const {
    if (const auto status = MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    writeBlob(*filer, dxfType);
    return writeIds(*filer, records);
}

Mx::ErrorStatus MxDbSymbolTable::dxfInFields(MxDbDxfFiler* filer) {
    if (const auto status = MxDbObject::dxfInFields(filer); status != Mx::eOk)
        return status;
    return readItems(filer, nullptr, [](int) { return true; });
}

Mx::ErrorStatus MxDbSymbolTable::dxfOutFields(MxDbDxfFiler* filer) const {
    if (const auto status = MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    std::int16_t present = 0;
    for (const MxDbObjectId& id : records)
        present = static_cast<std::int16_t>(present + (DatabaseImp::peek(id) ? 1 : 0));
    filer->writeString(100, L"AcDbSymbolTable");
    filer->writeInt16(70, present);
    if (dxfType == "DIMSTYLE")
        filer->writeString(100, L"AcDbDimStyleTable");
    return filer->filerStatus();
}

void MxDbLayerTableRecord::setIsLocked(bool locked) {
    assertWriteEnabled();
    flags = static_cast<std::int16_t>(locked ? flags | 4 : flags & ~4);
}

Mx::ErrorStatus MxDbLayerTableRecord::dwgInFields(MxDbDwgFiler* filer) {
    if (const auto status = readHead(filer, *this); status != Mx::eOk)
        return status;
    filer->readInt16(color);
    filer->readBool(hasTrueColor);
    filer->readUInt32(trueColor);
    filer->readBool(off);
    filer->readHardPointerId(linetype);
    filer->readInt16(lineWeight);
    return filer->readBool(plottable);
}

Mx::ErrorStatus MxDbLayerTableRecord::dwgOutFields(MxDbDwgFiler* filer) const {
    if (const auto status = writeHead(filer, *this); status != Mx::eOk)
        return status;
    filer->writeInt16(color);
    filer->writeBool(hasTrueColor);
    filer->writeUInt32(trueColor);
    filer->writeBool(off);
    filer->writeHardPointerId(linetype);
    filer->writeInt16(lineWeight);
    return filer->writeBool(plottable);
}

Mx::ErrorStatus MxDbLayerTableRecord::dxfInFields(MxDbDxfFiler* filer) {
    return readRecord(filer, *this, [&](int code) {
        switch (code) {
        case 6:
            if (filer->database())
                linetype = filer->database()->imp().linetypeNamed(filer->itemString().str());
            break;
        case 62:
            // A layer that is off has its colour negated.
            off = filer->itemInt16() < 0;
            color = static_cast<std::int16_t>(std::abs(filer->itemInt16()));
            break;
        case 290:
            plottable = filer->itemBool();
            break;
        case 370:
            lineWeight = filer->itemInt16();
            break;
        case 420:
            trueColor = filer->itemUInt32() & 0xFFFFFFU;
            hasTrueColor = true;
            break;
        default:
            break;
        }
    });
}

Mx::ErrorStatus MxDbLayerTableRecord::dxfOutFields(MxDbDxfFiler* filer) const {
    if (const auto status = writeHead(filer, *this, L"AcDbLayerTableRecord"); status != Mx::eOk)
        return status;
    filer->writeInt16(62, static_cast<std::int16_t>(off ? -color : color));
    if (hasTrueColor)
        filer->writeUInt32(420, trueColor);
    const std::wstring line = recordName(linetype);
    filer->writeString(6, line.empty() ? L"Continuous" : line.c_str());
    if (!plottable)
        filer->writeBool(290, false);
    return filer->writeInt16(370, lineWeight);
}
