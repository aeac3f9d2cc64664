// SPDX-License-Identifier: MIT
#include "merix/db/database_imp.h"

#include "host/db/dictionary.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using merix::db::DatabaseImp;
using merix::db::LayerRecord;

TEST(Database, ANewDrawingHasItsTablesSpacesAndLayouts) {
    Drawing drawing;
    EXPECT_EQ(drawing.database.currentSpaceId(), drawing.imp.blockNamed(L"*MODEL_SPACE"));
    EXPECT_FALSE(drawing.imp.blockNamed(L"*Paper_Space").isNull());
    EXPECT_FALSE(drawing.imp.layerNamed(L"0").isNull());
    EXPECT_FALSE(drawing.imp.linetypeNamed(L"bylayer").isNull());
    EXPECT_FALSE(drawing.imp.textStyleNamed(L"STANDARD").isNull());
    const auto layouts = drawing.imp.layouts();
    ASSERT_EQ(layouts.size(), 2U);
    EXPECT_EQ(layouts[0].name, L"Model");
    EXPECT_EQ(layouts[0].space, drawing.imp.roots.modelSpace);
    EXPECT_EQ(layouts[1].name, L"Layout1");
    EXPECT_EQ(layouts[1].space, drawing.imp.roots.paperSpace);
}

TEST(Database, HandlesInUseAreNotGivenOut) {
    MxDbDatabase database;
    DatabaseImp& imp = database.imp();
    imp.reserve(MxDbHandle(1));
    imp.reserve(MxDbHandle(3));
    EXPECT_EQ(imp.allocateHandle(), MxDbHandle(2));
    EXPECT_EQ(imp.allocateHandle(), MxDbHandle(4));
    imp.raiseNextHandle(0x20);
    EXPECT_EQ(imp.allocateHandle(), MxDbHandle(0x20));
    imp.raiseNextHandle(~std::uint64_t{0});
    EXPECT_EQ(imp.allocateHandle(), MxDbHandle(~std::uint64_t{0}));
    EXPECT_EQ(imp.allocateHandle(), MxDbHandle(2)) << "after the last handle come the gaps";
}

TEST(Database, ASecondObjectOfAHandleIsRefused) {
    MxDbDatabase database;
    auto* stub = database.imp().adopt(new MxDbXrecord, MxDbHandle(7), {});
    ASSERT_NE(stub, nullptr);
    EXPECT_EQ(database.imp().adopt(new MxDbXrecord, MxDbHandle(7), {}), nullptr);
    EXPECT_EQ(database.imp().find(MxDbHandle(7)), stub);
}

TEST(Database, AReservedIdBecomesValidWhenItsObjectIsRead) {
    MxDbDatabase database;
    MxDbObjectId id;
    database.getMxDbObjectId(id, true, MxDbHandle(L"1f"));
    EXPECT_FALSE(id.isValid());
    EXPECT_EQ(id.handle().value(), 0x1FU);
    database.imp().adopt(new MxDbXrecord, MxDbHandle(0x1F), {});
    EXPECT_TRUE(id.isValid());
    EXPECT_EQ(id.database(), &database);
}

TEST(Database, NamesAreLookedUpAnewWhenRecordsAreAddedRenamedOrErased) {
    Drawing drawing;
    EXPECT_TRUE(drawing.imp.layerNamed(L"WALLS").isNull());
    const MxDbObjectId id = drawing.addLayer(L"Walls");
    EXPECT_EQ(drawing.imp.layerNamed(L"WALLS"), id);
    LayerRecord* layer = nullptr;
    mxdbOpenObject(layer, id, Mx::kForWrite);
    layer->assertWriteEnabled();
    layer->name = L"Doors";
    layer->close();
    drawing.imp.namesChanged();
    EXPECT_TRUE(drawing.imp.layerNamed(L"WALLS").isNull());
    EXPECT_EQ(drawing.imp.layerNamed(L"DOORS"), id);
    drawing.erase(id);
    EXPECT_TRUE(drawing.imp.layerNamed(L"DOORS").isNull());
}

TEST(Database, ALayerThatNoTableListsKeepsItsNameAndIsListedOnDemand) {
    Drawing drawing;
    const std::size_t listed = drawing.table(drawing.imp.roots.layerTable).records.size();
    const MxDbObjectId id = drawing.imp.layerForName(L"Ghost");
    EXPECT_EQ(drawing.imp.layerForName(L"GHOST"), id);
    EXPECT_TRUE(id.handle().isNull());
    EXPECT_EQ(drawing.table(drawing.imp.roots.layerTable).records.size(), listed);
    drawing.imp.listImplicitLayers();
    EXPECT_EQ(drawing.table(drawing.imp.roots.layerTable).records.back(), id);
    EXPECT_FALSE(id.handle().isNull());
    EXPECT_EQ(drawing.imp.find(id.handle()), id.stub());
    EXPECT_EQ(drawing.imp.layerNamed(L"ghost"), id);
}

TEST(Database, TheLayerTableIsMadeWhenThereIsNone) {
    MxDbDatabase database;
    const MxDbObjectId id = database.imp().layerForName(L"0");
    database.imp().listImplicitLayers();
    EXPECT_EQ(database.imp().layerNamed(L"0"), id);
    EXPECT_FALSE(database.imp().roots.layerTable.isNull());
}

TEST(Database, NewEntitiesGoToTheCurrentLayer) {
    Drawing drawing;
    const MxDbObjectId layer = drawing.addLayer(L"WALLS");
    drawing.imp.header.currentLayer = L"Walls";
    EXPECT_EQ(drawing.at<MxDbEntity>(drawing.addLine()).layerId(), layer);
}

TEST(Database, EntitiesOfAPaperSpaceAreMarkedSo) {
    Drawing drawing;
    const MxDbObjectId paper = drawing.addLine({}, {}, drawing.imp.roots.paperSpace), model = drawing.addLine();
    EXPECT_TRUE(merix::db::traits(drawing.at<MxDbEntity>(paper)).paperSpace);
    EXPECT_FALSE(merix::db::traits(drawing.at<MxDbEntity>(model)).paperSpace);
}

class Listener final : public merix::db::DatabaseListener {
public:
    void objectAppended(MxDbObject&) override { told += "appended "; }
    void objectModified(MxDbObject& object) override {
        if (object.isKindOf(MxDbEntity::desc()))
            told += "modified ";
    }
    void objectErased(MxDbObject&, bool erasing) override { told += erasing ? "erased " : "unerased "; }
    std::string told;
};

TEST(Database, ListenersFollowEntitiesThroughTheirLifeAndUndo) {
    Drawing drawing;
    Listener listener;
    drawing.imp.addListener(&listener);
    const MxDbObjectId id = drawing.addLine();
    drawing.moveLine(id, {3, 0, 0});
    drawing.erase(id);
    while (drawing.imp.undo.undo()) {
    }
    EXPECT_EQ(listener.told, "appended modified erased unerased modified erased ");
    drawing.imp.removeListener(&listener);
    drawing.addLine();
    EXPECT_EQ(listener.told, "appended modified erased unerased modified erased ");
}

TEST(Database, GraphicsMarkedThroughAHeldPointerAreToldAtOnce) {
    Drawing drawing;
    const MxDbObjectId id = drawing.addLine();
    Listener listener;
    drawing.imp.addListener(&listener);
    auto& line = drawing.at<MxDbEntity>(id);
    const auto version = line.data().graphicsVersion;
    line.recordGraphicsModified();
    EXPECT_EQ(listener.told, "modified ");
    EXPECT_GT(line.data().graphicsVersion, version);
}

TEST(Database, TheWorkingDatabaseIsForgottenWhenItCloses) {
    {
        MxDbDatabase database;
        merix::db::setWorkingDatabase(&database);
        EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), &database);
    }
    EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), nullptr);
    EXPECT_TRUE(merix::db::openDatabases().empty());
}

TEST(Handle, TextFormIsUpperCaseHexadecimalWithoutLeadingZeros) {
    wchar_t text[17];
    MxDbHandle(0x1aF).getIntoAsciiBuffer(text);
    EXPECT_STREQ(text, L"1AF");
    MxDbHandle().getIntoAsciiBuffer(text);
    EXPECT_STREQ(text, L"0");
    MxDbHandle(~std::uint64_t{0}).getIntoAsciiBuffer(text);
    EXPECT_STREQ(text, L"FFFFFFFFFFFFFFFF");
    EXPECT_EQ(MxDbHandle(text).value(), ~std::uint64_t{0});
    EXPECT_EQ(MxDbHandle(L"00af").value(), 0xAFU);
    for (const wchar_t* bad : {L"", L"12G", L" 1", L"11112222333344445"})
        EXPECT_TRUE(MxDbHandle(bad).isNull());
    EXPECT_TRUE(MxDbHandle(nullptr).isNull());
}

} // namespace
