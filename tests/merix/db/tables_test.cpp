// SPDX-License-Identifier: MIT
#include "merix/db/tables.h"

#include "merix/db/layout.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using namespace merix::db;

template <class T> std::unique_ptr<T> refiled(const T& record) {
    const std::string image = dwgImage(record, MxDbFilerType::kFile);
    auto copy = std::make_unique<T>();
    EXPECT_EQ(readDwgImage(*copy, image, MxDbFilerType::kFile), Mx::eOk);
    EXPECT_EQ(dwgImage(*copy, MxDbFilerType::kFile), image);
    return copy;
}

TEST(Tables, ALayerFilesItsStateAndAppearance) {
    Drawing drawing;
    LayerRecord layer;
    layer.name = L"Wände";
    layer.flags = 4 | 1;
    layer.color = 3;
    layer.off = true;
    layer.lineWeight = 50;
    layer.linetype = drawing.imp.linetypeNamed(L"Continuous");
    const auto copy = refiled(layer);
    EXPECT_EQ(copy->name, layer.name);
    EXPECT_TRUE(copy->isLocked());
    EXPECT_TRUE(copy->isFrozen());
    EXPECT_TRUE(copy->off);
    EXPECT_EQ(copy->linetype, layer.linetype);
}

TEST(Tables, ALinetypeFilesItsDashes) {
    Drawing drawing;
    LinetypeRecord linetype;
    linetype.dashes = {0.5, -0.25, 0, -0.25};
    EXPECT_EQ(refiled(linetype)->dashes, linetype.dashes);
}

TEST(Tables, TextStylesTablesAndLayoutsFileThemselves) {
    Drawing drawing;
    TextStyleRecord style;
    style.font = L"romans.shx";
    EXPECT_EQ(refiled(style)->font, style.font);
    SymbolTable table;
    table.dxfType = "LAYER";
    table.records = {drawing.imp.layerNamed(L"0")};
    EXPECT_EQ(refiled(table)->records, table.records);
    Layout layout;
    layout.name = L"Blatt 1";
    layout.block = drawing.imp.roots.paperSpace;
    EXPECT_EQ(refiled(layout)->block, layout.block);
}

TEST(Tables, TheLayoutsStandInADictionaryOfTheDrawing) {
    Drawing drawing;
    MxDbDictionary* layouts = nullptr;
    ASSERT_EQ(mxdbOpenLayoutDictionary(layouts, drawing.database, Mx::kForWrite), Mx::eOk);
    std::vector<std::pair<std::wstring, MxDbObjectId>> blocks;
    for (const auto& [name, id] : layouts->entries())
        blocks.emplace_back(name, drawing.at<MxDbLayout>(id).block);
    EXPECT_EQ(blocks, (std::vector<std::pair<std::wstring, MxDbObjectId>>{{L"Model", drawing.imp.roots.modelSpace},
                                                                          {L"Layout1", drawing.imp.roots.paperSpace}}));
    MxDbDictionary* second = layouts;
    EXPECT_EQ(mxdbOpenLayoutDictionary(second, drawing.database, Mx::kForRead), Mx::eOpenForWrite);
    EXPECT_FALSE(second);
    layouts->erase();
    layouts->close();
    EXPECT_EQ(mxdbOpenLayoutDictionary(layouts, drawing.database, Mx::kForRead), Mx::eKeyNotFound);
    EXPECT_FALSE(layouts);
    const MxDbDatabase empty;
    EXPECT_EQ(mxdbOpenLayoutDictionary(layouts, empty, Mx::kForRead), Mx::eNullObjectId);
}

TEST(Tables, ABlockFilesItsEntitiesInTheirOrder) {
    Drawing drawing;
    const MxDbObjectId a = drawing.addLine(), b = drawing.addLine();
    const auto& space = drawing.at<MxDbBlockTableRecord>(drawing.imp.roots.modelSpace);
    const auto copy = refiled(space);
    EXPECT_EQ(copy->entityIds(), (std::vector<MxDbObjectId>{a, b}));
    EXPECT_EQ(copy->name(), L"*Model_Space");
}

TEST(Tables, RecordsAreFoundByNameWhateverItsCase) {
    Drawing drawing;
    MxDbSymbolTable* table = nullptr;
    ASSERT_EQ(mxdbOpenObject(table, drawing.database.blockTableId(), Mx::kForRead), Mx::eOk);
    MxDbObjectId id;
    EXPECT_EQ(table->getAt(L"*MODEL_space", id), Mx::eOk);
    EXPECT_EQ(id, drawing.imp.roots.modelSpace);
    EXPECT_EQ(table->getAt(L"nowhere", id), Mx::eKeyNotFound);
    EXPECT_TRUE(id.isNull());
    EXPECT_EQ(table->getAt(nullptr, id), Mx::eInvalidInput);
    table->close();
}

TEST(Tables, AnErasedRecordIsFoundOnlyWhenAskedFor) {
    Drawing drawing;
    for (const MxDbObjectId& tableId : {drawing.database.linetypeTableId(), drawing.imp.roots.layerTable}) {
        MxDbObjectId wanted = tableId == drawing.imp.roots.layerTable ? drawing.imp.layerNamed(L"0")
                                                                      : drawing.imp.linetypeNamed(L"Continuous");
        MxDbObject* record = nullptr;
        ASSERT_EQ(mxdbOpenObject(record, wanted, Mx::kForWrite), Mx::eOk);
        const std::wstring name = *nameOfRecord(record);
        record->erase();
        record->close();
        MxDbSymbolTable* table = nullptr;
        ASSERT_EQ(mxdbOpenObject(table, tableId, Mx::kForRead), Mx::eOk);
        MxDbObjectId id;
        EXPECT_EQ(table->getAt(name.c_str(), id), Mx::eKeyNotFound);
        EXPECT_EQ(table->getAt(name.c_str(), id, true), Mx::eOk);
        EXPECT_EQ(id, wanted);
        table->close();
    }
}

} // namespace
