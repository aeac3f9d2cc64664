// SPDX-License-Identifier: MIT
#include "merix/db/layout.h"

#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/rx/class_registry.h"

using merix::db::readItems;
using merix::db::readText;

MERIX_RX_CLASS(MxDbLayout, "MxDbLayout", MxDbObject, merix::rx::makeObject<MxDbLayout>, "LAYOUT")

namespace {

/// Plot settings that a reader expects to find: no plotter, no sheet chosen, millimetres.
void writePlotSettings(MxDbDxfFiler* filer, bool model) {
    constexpr std::int16_t kModelTab = 1024, kPlotPlotStyles = 32, kUseStandardScale = 16, kPrintLineWeights = 128,
                           kDrawViewportsFirst = 512;
    filer->writeString(100, L"AcDbPlotSettings");
    for (const int code : {1, 2, 4, 6})
        filer->writeString(code, L"");
    for (const int code : {40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 140, 141})
        filer->writeDouble(code, 0.0);
    filer->writeDouble(142, 1.0);
    filer->writeDouble(143, 1.0);
    const int flags = kUseStandardScale | kPlotPlotStyles | kPrintLineWeights | kDrawViewportsFirst;
    filer->writeInt16(70, static_cast<std::int16_t>(model ? flags | kModelTab : flags));
    filer->writeInt16(72, 1);
    filer->writeInt16(73, 0);
    filer->writeInt16(74, model ? 0 : 5);
    filer->writeString(7, L"");
    filer->writeInt16(75, 16);
    filer->writeDouble(147, 1.0);
    filer->writeDouble(148, 0.0);
    filer->writeDouble(149, 0.0);
}

} // namespace

Mx::ErrorStatus MxDbLayout::dwgInFields(MxDbDwgFiler* filer) {
    if (const auto status = MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    if (const auto status = readText(*filer, name); status != Mx::eOk)
        return status;
    filer->readInt16(tabOrder);
    return filer->readSoftPointerId(block);
}

Mx::ErrorStatus MxDbLayout::dwgOutFields(MxDbDwgFiler* filer) const {
    if (const auto status = MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(name.c_str());
    filer->writeInt16(tabOrder);
    return filer->writeSoftPointerId(block);
}

Mx::ErrorStatus MxDbLayout::dxfInFields(MxDbDxfFiler* filer) {
    if (const auto status = MxDbObject::dxfInFields(filer); status != Mx::eOk)
        return status;
    // The plot settings come first and use the same codes.
    bool own = false;
    return readItems(filer, nullptr, [&](int code) {
        if (code == 100)
            own = filer->itemString().str() == L"AcDbLayout";
        else if (own && code == 1)
            name = filer->itemString().str();
        else if (own && code == 71)
            tabOrder = filer->itemInt16();
        else if (own && code == 330)
            block = filer->itemObjectId();
        return true;
    });
}

Mx::ErrorStatus MxDbLayout::dxfOutFields(MxDbDxfFiler* filer) const {
    if (const auto status = MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    writePlotSettings(filer, tabOrder == 0);
    filer->writeString(100, L"AcDbLayout");
    filer->writeString(1, name.c_str());
    filer->writeInt16(70, 1);
    filer->writeInt16(71, tabOrder);
    filer->writePoint2d(10, {0, 0});
    filer->writePoint2d(11, {420, 297});
    filer->writePoint3d(12, {});
    filer->writePoint3d(14, {1e20, 1e20, 1e20});
    filer->writePoint3d(15, {-1e20, -1e20, -1e20});
    filer->writeDouble(146, 0.0);
    filer->writePoint3d(13, {});
    filer->writePoint3d(16, {1, 0, 0});
    filer->writePoint3d(17, {0, 1, 0});
    filer->writeInt16(76, 0);
    return filer->writeObjectId(330, block);
}

Mx::ErrorStatus mxdbOpenLayoutDictionary(MxDbDictionary*& dictionary, const MxDbDatabase& database, Mx::OpenMode mode) {
    dictionary = nullptr;
    MxDbDictionary* named = nullptr;
    MxDbObjectId id;
    Mx::ErrorStatus status = mxdbOpenObject(named, database.namedObjectsDictionaryId(), Mx::kForRead);
    if (status != Mx::eOk)
        return status;
    status = named->getAt(merix::db::kLayoutDictionary, id);
    named->close();
    return status == Mx::eOk ? mxdbOpenObject(dictionary, id, mode) : status;
}
