// SPDX-License-Identifier: MIT
#include "merix/db/audit.h"

#include "host/db/sortents_table.h"
#include "merix/db/clone.h"
#include "merix/rx/text.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using namespace merix::db;
using Kind = AuditFinding::Kind;

class AuditTest : public testing::Test {
protected:
    /// "what (where)" of all findings, one a line, those that are loose in brackets.
    std::string told() {
        std::string all;
        for (const AuditFinding& finding : audit(drawing.database)) {
            const std::string text = merix::rx::toUtf8(finding.what + L" (" + finding.where + L")");
            all += (finding.kind == Kind::kLoose ? "[" + text + "]" : text) + "\n";
        }
        return all;
    }
    static std::string hex(MxDbObjectId id) {
        wchar_t text[17];
        id.handle().getIntoAsciiBuffer(text);
        return merix::rx::toUtf8(text);
    }
    MxDbBlockTableRecord& space() { return *drawing.imp.block(drawing.imp.roots.modelSpace); }
    MxDbObjectId extend(MxDbObjectId id) {
        MxDbObject* object = nullptr;
        mxdbOpenObject(object, id, Mx::kForWrite);
        object->createExtensionDictionary();
        const MxDbObjectId extension = object->extensionDictionary();
        object->close();
        return extension;
    }
    MxDbObjectId put(MxDbObjectId dictionaryId, const wchar_t* key) {
        MxDbDictionary* dictionary = nullptr;
        mxdbOpenObject(dictionary, dictionaryId, Mx::kForWrite);
        auto* record = new MxDbXrecord;
        MxDbObjectId id;
        dictionary->setAt(key, record, id);
        record->close();
        dictionary->close();
        return id;
    }
    MxDbObjectId nothing() { return MxDbObjectId(drawing.imp.reserve(MxDbHandle(0xABCD))); }

    Drawing drawing;
    MxDbObjectId line = drawing.addLine();
};

TEST_F(AuditTest, ASoundDrawingHasNoFindings) {
    const MxDbObjectId block = drawing.addBlock(L"Door");
    const MxDbObjectId inner = drawing.addLine({}, {2, 0, 0}, block);
    auto insert = std::make_unique<Insert>();
    insert->block = block;
    const MxDbObjectId placed = drawing.add(std::move(insert));
    const auto unit = [this](auto work) {
        drawing.imp.undo.begin(L"Unit");
        work();
        drawing.imp.undo.end();
    };
    drawing.imp.undo.clear();
    unit([&] { put(extend(line), L"KEY"); });
    unit([&] { extend(inner); });
    unit([&] {
        MxDbBlockTableRecord* open = nullptr;
        mxdbOpenObject(open, drawing.imp.roots.modelSpace, Mx::kForWrite);
        MxDbSortentsTable* table = nullptr;
        open->getSortentsTable(table, Mx::kForWrite, true);
        table->moveToTop({line});
        table->close();
        open->close();
    });
    unit([&] { cloneEntities({line, placed}, drawing.imp.roots.modelSpace, MxGeMatrix3d::translation({1, 0, 0})); });
    unit([&] { drawing.erase(line); });
    EXPECT_EQ(told(), "");
    EXPECT_EQ(drawing.imp.undo.undoUnits().size(), 5U);
    while (drawing.imp.undo.undo())
        EXPECT_EQ(told(), "");
    while (drawing.imp.undo.redo())
        EXPECT_EQ(told(), "");
    Drawing target;
    wblockEntities({placed}, target.database, {});
    EXPECT_TRUE(audit(target.database).empty());
}

TEST_F(AuditTest, AnEntityWhoseOwnerIsNotThere) {
    drawing.at<Line>(line).data().owner = nothing();
    EXPECT_EQ(told(), "its entity " + hex(line) + " has another owner (BLOCK_RECORD in TABLE " +
                          hex(drawing.imp.roots.blockTable) + ": *Model_Space)\n" +
                          "its owner ABCD does not exist (LINE)\n");
    drawing.at<Line>(line).data().owner = {};
    EXPECT_NE(told().find("it has no owner (LINE)"), std::string::npos);
    drawing.at<Line>(line).data().owner = drawing.imp.roots.layerTable;
    EXPECT_NE(told().find("is no block"), std::string::npos);
}

TEST_F(AuditTest, AnEntityOfABlockThatIsErased) {
    const MxDbObjectId block = drawing.addBlock(L"Gone");
    drawing.addLine({}, {1, 0, 0}, block);
    drawing.erase(block);
    EXPECT_EQ(told(), "its owner " + hex(block) + " is erased (LINE in Gone)\n");
}

TEST_F(AuditTest, AnEntityInNoBlockOrInTwo) {
    const MxDbObjectId lost(drawing.imp.adopt(new Line, {}, drawing.imp.roots.modelSpace));
    EXPECT_EQ(told(), "its owner " + hex(drawing.imp.roots.modelSpace) + " does not list it (LINE in *Model_Space)\n");
    drawing.imp.adoptEntity(space(), lost);
    EXPECT_EQ(told(), "");
    drawing.imp.adoptEntity(space(), lost);
    EXPECT_EQ(told(), "it is listed 2 times (LINE in *Model_Space)\n");
    drawing.imp.adoptEntity(space(), nothing());
    EXPECT_NE(told().find("its entity ABCD does not exist (BLOCK_RECORD"), std::string::npos);
}

TEST_F(AuditTest, ReferencesThatNameNothingOrSomethingElse) {
    traits(drawing.at<Line>(line)).layer = nothing();
    EXPECT_EQ(told(), "it refers to ABCD, which does not exist (LINE in *Model_Space)\n");
    traits(drawing.at<Line>(line)).layer = drawing.imp.roots.modelSpace;
    EXPECT_EQ(told(), "its layer " + hex(drawing.imp.roots.modelSpace) + " is none (LINE in *Model_Space)\n");
    traits(drawing.at<Line>(line)).layer = {};
    EXPECT_EQ(told(), "it has no layer (LINE in *Model_Space)\n");
    const MxDbObjectId layer = drawing.addLayer(L"Gone");
    traits(drawing.at<Line>(line)).layer = layer;
    traits(drawing.at<Line>(line)).linetype = layer;
    EXPECT_EQ(told(), "its line type " + hex(layer) + " is none (LINE in *Model_Space)\n");
    traits(drawing.at<Line>(line)).linetype = {};
    EXPECT_EQ(told(), "");
    drawing.erase(layer);
    EXPECT_EQ(told(), "it refers to " + hex(layer) + ", which is erased (LINE in *Model_Space)\n");
}

TEST_F(AuditTest, AnInsertOfNothing) {
    auto insert = std::make_unique<Insert>();
    const MxDbObjectId id = drawing.add(std::move(insert));
    EXPECT_EQ(told(), "it shows no block (INSERT in *Model_Space)\n");
    drawing.at<Insert>(id).block = drawing.imp.roots.layerTable;
    EXPECT_NE(told().find("is none (INSERT"), std::string::npos);
    Drawing other;
    drawing.at<Insert>(id).block = other.imp.roots.modelSpace;
    EXPECT_NE(told().find("it refers to another drawing"), std::string::npos);
}

TEST_F(AuditTest, ReactorsThatAreErasedAreLooseAndThoseThatNeverWereAreBroken) {
    const MxDbObjectId reactor = put(drawing.imp.roots.namedObjects, L"WATCHER");
    MxDbObject* open = nullptr;
    mxdbOpenObject(open, line, Mx::kForWrite);
    open->addPersistentReactor(reactor);
    open->close();
    EXPECT_EQ(told(), "");
    drawing.erase(reactor);
    EXPECT_EQ(told(), "[its reactor " + hex(reactor) + " is erased (LINE in *Model_Space)]\n");
    drawing.erase(reactor, false);
    drawing.at<Line>(line).data().reactors.push_back({nullptr, nothing()});
    EXPECT_EQ(told(), "its reactor ABCD does not exist (LINE in *Model_Space)\n");
}

TEST_F(AuditTest, ExtensionDictionariesThatTheirOwnerDoesNotKnow) {
    const MxDbObjectId extension = extend(line);
    const std::string owner = hex(line);
    drawing.at<Line>(line).data().extensionDictionary = {};
    EXPECT_EQ(told(),
              "its owner " + owner + " has another extension dictionary or none (DICTIONARY in LINE " + owner + ")\n");
    const MxDbObjectId other = drawing.addLine();
    drawing.at<Line>(line).data().extensionDictionary = extension;
    drawing.at<Line>(other).data().extensionDictionary = extension;
    EXPECT_EQ(told(),
              "its extension dictionary " + hex(extension) + " belongs to another object (LINE in *Model_Space)\n");
    drawing.at<Line>(other).data().extensionDictionary = nothing();
    EXPECT_EQ(told(), "its extension dictionary ABCD does not exist (LINE in *Model_Space)\n");
}

TEST_F(AuditTest, DictionaryEntriesThatNameNothingOrBelongElsewhere) {
    const MxDbObjectId record = put(drawing.imp.roots.namedObjects, L"KEY");
    drawing.at<MxDbXrecord>(record).data().owner = drawing.imp.roots.modelSpace;
    const std::string first = told();
    EXPECT_NE(first.find("its entry KEY, " + hex(record) + ", has another owner (DICTIONARY)"), std::string::npos);
    drawing.at<MxDbXrecord>(record).data().owner = drawing.imp.roots.namedObjects;
    EXPECT_EQ(told(), "");
    const MxDbObjectId stray(drawing.imp.adopt(new MxDbXrecord, {}, drawing.imp.roots.namedObjects));
    EXPECT_EQ(told(), "its owner " + hex(drawing.imp.roots.namedObjects) + " does not list it (XRECORD in DICTIONARY " +
                          hex(drawing.imp.roots.namedObjects) + ")\n");
    drawing.erase(stray);
    // As a damaged file has it.
    const MxDbObjectId made(drawing.imp.adopt(new MxDbDictionary, {}, drawing.imp.roots.namedObjects));
    std::string image = dwgImage(drawing.at<MxDbDictionary>(drawing.imp.roots.namedObjects), MxDbFilerType::kFile);
    const std::string key("\x09\x03\0\0\0KEY", 8);
    const std::size_t place = image.find(key);
    ASSERT_NE(place, std::string::npos);
    image[place + key.size() + 1] = '\xCD';
    image[place + key.size() + 2] = '\xAB';
    readDwgImage(drawing.at<MxDbDictionary>(drawing.imp.roots.namedObjects), image, MxDbFilerType::kFile);
    EXPECT_NE(told().find("its entry KEY, ABCD, does not exist (DICTIONARY)"), std::string::npos);
    EXPECT_FALSE(made.isNull());
}

TEST_F(AuditTest, TablesWithTwoRecordsOfAName) {
    drawing.addLayer(L"Walls");
    drawing.addLayer(L"WALLS");
    EXPECT_EQ(told(), "it has two records of the name WALLS (TABLE)\n");
}

TEST_F(AuditTest, SortTablesThatNameStrangers) {
    MxDbBlockTableRecord* open = nullptr;
    mxdbOpenObject(open, drawing.imp.roots.modelSpace, Mx::kForWrite);
    MxDbSortentsTable* table = nullptr;
    open->getSortentsTable(table, Mx::kForWrite, true);
    const MxDbObjectId id = table->objectId();
    table->close();
    open->close();
    drawing.addLine();
    mxdbOpenObject(table, id, Mx::kForWrite);
    table->moveToTop({line});
    table->close();
    EXPECT_EQ(told(), "");
    // The entity goes to another block.
    const MxDbObjectId block = drawing.addBlock(L"Other");
    drawing.at<Line>(line).data().owner = block;
    drawing.imp.adoptEntity(*drawing.imp.block(block), line);
    const std::string elsewhere = told();
    EXPECT_NE(elsewhere.find("it is listed 2 times (LINE in Other)"), std::string::npos);
    EXPECT_EQ(elsewhere.find("it sorts"), std::string::npos) << "the list of model space still has it";
    drawing.at<MxDbObject>(drawing.imp.roots.modelSpace).data().extensionDictionary = {};
    EXPECT_NE(told().find("the block that it sorts does not know it (SORTENTSTABLE"), std::string::npos);
    drawing.erase(drawing.imp.roots.modelSpace);
    EXPECT_NE(told().find("it sorts no block (SORTENTSTABLE"), std::string::npos);
}

TEST_F(AuditTest, AStrangerInASortTableIsTold) {
    MxDbBlockTableRecord* open = nullptr;
    mxdbOpenObject(open, drawing.imp.roots.modelSpace, Mx::kForWrite);
    MxDbSortentsTable* table = nullptr;
    open->getSortentsTable(table, Mx::kForWrite, true);
    drawing.imp.adoptEntity(*open, drawing.addLine({}, {1, 0, 0}, drawing.imp.roots.paperSpace));
    table->moveToTop({line});
    std::string image = dwgImage(*table, MxDbFilerType::kFile);
    table->close();
    open->close();
    // A table that says it sorts another block, as a damaged file has it.
    const MxDbObjectId fresh = drawing.addBlock(L"Fresh");
    const auto item = [](MxDbObjectId id) {
        const std::uint64_t handle = id.handle().value();
        return "\x0B" + std::string(reinterpret_cast<const char*>(&handle), sizeof handle);
    };
    const std::size_t place = image.find(item(drawing.imp.roots.modelSpace));
    ASSERT_NE(place, std::string::npos);
    image.replace(place, 9, item(fresh));
    MxDbDictionary* extension = nullptr;
    mxdbOpenObject(extension, extend(fresh), Mx::kForWrite);
    auto* wrong = new MxDbSortentsTable;
    MxDbObjectId id;
    extension->setAt(L"ACAD_SORTENTS", wrong, id);
    readDwgImage(*wrong, image, MxDbFilerType::kFile);
    wrong->close();
    extension->close();
    EXPECT_NE(told().find("it sorts " + hex(line) + ", which is not in its block (SORTENTSTABLE"), std::string::npos);
}

TEST_F(AuditTest, ACurrentLayerThatThereIsNot) {
    drawing.imp.header.currentLayer = L"Gone";
    EXPECT_EQ(told(), "the current layer Gone does not exist ()\n");
}

} // namespace
