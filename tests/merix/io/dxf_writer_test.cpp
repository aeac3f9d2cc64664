// SPDX-License-Identifier: MIT
#include "merix/io/dxf_writer.h"

#include "merix/db/tables.h"
#include "merix/io/dxf_value.h"
#include "tests/merix/io/drawing_fixture.h"

#include <gmock/gmock.h>

namespace merix::io::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class DxfWriter : public DrawingTest {
protected:
    void makeNote(std::size_t size) {
        auto* note = new SampleNote;
        note->position = {1, 2, 0};
        note->text = L"line one\nline two ^ \u00e9";
        for (std::size_t i = 0; i < size; ++i)
            note->bytes.push_back(static_cast<std::uint8_t>(i));
        m_note = append(note);
    }
    static std::string hex(std::uint64_t handle) { return fromHandle(handle); }
    std::uint64_t m_note = 0;
};

TEST_F(DxfWriter, ANewEntityGoesToTheEndOfItsSection) {
    ASSERT_TRUE(load(drawing("0|POINT|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbPoint|10|1|20|2|30|0")));
    const std::uint64_t handle = appendLine({0, 0, 0}, {1.5, 2, 0});
    EXPECT_GE(handle, 0x500U);
    std::string expected = drawing("0|POINT|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbPoint|10|1|20|2|30|0|"
                                   "  0|LINE|  5|" +
                                   hex(handle) +
                                   "|330|1F|100|AcDbEntity|  8|0|100|AcDbLine| 10|0.0| 20|0.0| 30|0.0|"
                                   " 11|1.5| 21|2.0| 31|0.0");
    expected.replace(expected.find("5\n500\n"), 6, "5\n" + hex(handle + 1) + "\n");
    EXPECT_EQ(saved(), expected);
    EXPECT_EQ(saved(), expected) << "a second save writes the same";
    erase(handle);
    EXPECT_THAT(saved(), Not(HasSubstr("LINE\n")));
    erase(handle, false);
    EXPECT_EQ(saved(), expected);
}

TEST_F(DxfWriter, AModulesClassIsNamedOnce) {
    const WithSampleClass sample;
    ASSERT_TRUE(load(drawing("")));
    makeNote(300);
    const std::string text = saved();
    const std::string record =
        "  0\nSECTION\n  2\nCLASSES\n  0\nCLASS\n  1\nSAMPLENOTE\n  2\nMxDbSampleNote\n  3\nSample|Product\n"
        " 90\n0\n280\n0\n281\n1\n  0\nENDSEC\n";
    EXPECT_THAT(text, HasSubstr("0\nENDSEC\n" + record + "0\nSECTION\n2\nTABLES\n"));
    EXPECT_THAT(text, HasSubstr("1\nline one^Jline two ^  \xE9\n"));
    EXPECT_THAT(text, HasSubstr(" 93\n300\n310\n000102"));
    EXPECT_EQ(saved(), text);

    MxDbDatabase again;
    const FileResult result = readDrawing(directory / "out.dxf", again);
    ASSERT_TRUE(result) << result.error;
    EXPECT_TRUE(result.notes.empty());
    const auto* note =
        static_cast<const SampleNote*>(db::DatabaseImp::peek(MxDbObjectId(again.imp().find(MxDbHandle(m_note)))));
    ASSERT_NE(note, nullptr);
    EXPECT_EQ(note->bytes.size(), 300U);
    EXPECT_EQ(note->text, L"line one\nline two ^ \u00e9");
    ASSERT_TRUE(writeDrawing(directory / "second.dxf", again));
    EXPECT_EQ(readBytes(directory / "second.dxf"), text);
}

TEST_F(DxfWriter, AChangedRecordingReplacesItsChunks) {
    const WithSampleClass sample;
    ASSERT_TRUE(load(drawing("")));
    makeNote(300);
    saved();
    for (const std::size_t size : {1000U, 10U, 0U, 128U}) {
        modify<SampleNote>(m_note, [size](SampleNote& note) { note.bytes.assign(size, 0xAB); });
        saved();
        MxDbDatabase again;
        ASSERT_TRUE(readDrawing(directory / "out.dxf", again));
        const auto* note =
            static_cast<const SampleNote*>(db::DatabaseImp::peek(MxDbObjectId(again.imp().find(MxDbHandle(m_note)))));
        EXPECT_EQ(note->bytes, std::vector<std::uint8_t>(size, 0xAB));
        EXPECT_EQ(note->text, L"line one\nline two ^ \u00e9") << size;
    }
}

TEST_F(DxfWriter, ADrawingThatLacksSectionsGetsThoseThatItNeeds) {
    const WithSampleClass sample;
    ASSERT_TRUE(load(tags("0|SECTION|2|HEADER|9|$ACADVER|1|AC1015|0|ENDSEC|0|SECTION|2|ENTITIES|0|ENDSEC|0|EOF")));
    makeNote(1);
    MxDbDictionary* root = nullptr;
    ASSERT_EQ(database.getNamedObjectsDictionary(root, Mx::kForWrite), Mx::eOk);
    MxDbObjectId id;
    auto* list = new MxDbDictionary;
    ASSERT_EQ(root->setAt(L"PHONO_MARK", list, id), Mx::eOk);
    list->close();
    root->close();
    const std::string text = saved();
    const auto classes = text.find("CLASSES"), entities = text.find("ENTITIES"), objects = text.find("OBJECTS");
    EXPECT_LT(classes, entities);
    EXPECT_LT(entities, objects);
    EXPECT_NE(objects, std::string::npos);
    EXPECT_THAT(text, HasSubstr("  3\nPHONO_MARK\n"));
    MxDbDatabase again;
    ASSERT_TRUE(readDrawing(directory / "out.dxf", again));
    ASSERT_EQ(again.getNamedObjectsDictionary(root, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(root->getAt(L"PHONO_MARK", id), Mx::eOk);
    root->close();
}

TEST_F(DxfWriter, ADictionaryEntryIsAddedAndTheOthersKeepTheirText) {
    ASSERT_TRUE(load(drawing("", "3|FIRST|350|40|3|SECOND|350|41|0|XRECORD|5|40|330|C|100|AcDbXrecord|280|1|"
                                 "0|ACDBPLACEHOLDER|5|41|330|C")));
    MxDbDictionary* root = nullptr;
    ASSERT_EQ(database.getNamedObjectsDictionary(root, Mx::kForWrite), Mx::eOk);
    MxDbObjectId id;
    auto* record = new MxDbXrecord;
    ASSERT_EQ(root->setAt(L"THIRD", record, id), Mx::eOk);
    resbuf* chain = mxutBuildList(102, L"2A");
    record->setFromRbChain(*chain);
    mxutRelRb(chain);
    record->close();
    root->close();
    const std::string text = saved();
    EXPECT_THAT(text, HasSubstr(tags("281|1|3|FIRST|350|40|3|SECOND|350|41|  3|THIRD|350|" + hex(id.handle().value()) +
                                     "|0|XRECORD")));
    EXPECT_THAT(text, HasSubstr("  0\nXRECORD\n  5\n" + hex(id.handle().value()) +
                                "\n330\nC\n100\nAcDbXrecord\n280\n1\n102\n2A\n0\nENDSEC"));
}

TEST_F(DxfWriter, ANewLayerGoesIntoItsTable) {
    ASSERT_TRUE(load(drawing("")));
    auto* table = static_cast<db::SymbolTable*>(db::DatabaseImp::peek(database.imp().roots.layerTable));
    auto* layer = new db::LayerRecord;
    layer->name = L"Notes";
    MxDbObjectId id;
    ASSERT_EQ(database.imp().append(layer, database.imp().roots.layerTable, id), Mx::eOk);
    table->records.push_back(id);
    database.imp().markChanged(*table);
    layer->close();
    EXPECT_THAT(saved(), HasSubstr("6\nContinuous\n  0\nLAYER\n  5\n" + hex(id.handle().value()) +
                                   "\n330\n2\n100\nAcDbSymbolTableRecord\n"
                                   "100\nAcDbLayerTableRecord\n  2\nNotes\n"));
}

TEST_F(DxfWriter, ANewDrawingIsWholeAndComesBack) {
    const WithSampleClass sample;
    database.imp().createDefaults();
    makeNote(10);
    appendLine({0, 0, 0}, {100, 50, 0});
    const std::string text = saved();
    for (const char* section : {"HEADER", "CLASSES", "TABLES", "BLOCKS", "ENTITIES", "OBJECTS"})
        EXPECT_THAT(text, HasSubstr(std::string("SECTION\n  2\n") + section + "\n"));
    EXPECT_EQ(saved(), text);
    MxDbDatabase again;
    const FileResult result = readDrawing(directory / "out.dxf", again);
    ASSERT_TRUE(result) << result.error;
    EXPECT_TRUE(result.notes.empty());
    EXPECT_EQ(again.imp().block(again.imp().roots.modelSpace)->entityIds().size(), 2U);
    EXPECT_EQ(again.imp().roots.namedObjects.handle(), database.imp().roots.namedObjects.handle());
    ASSERT_TRUE(writeDrawing(directory / "second.dxf", again));
    EXPECT_EQ(readBytes(directory / "second.dxf"), text);
}

TEST_F(DxfWriter, AnOldDrawingGetsSubclassesOnlyWhereTheyAreNeeded) {
    ASSERT_TRUE(load(tags("0|SECTION|2|ENTITIES|0|LINE|8|A|10|1|20|2|11|3|21|4|0|ENDSEC|0|EOF")));
    appendLine({0, 0, 0}, {1, 1, 0});
    auto* polyline = new db::LwPolyline;
    polyline->vertices.resize(2);
    const std::uint64_t handle = append(polyline);
    MxDbDictionary* root = nullptr;
    ASSERT_EQ(database.getNamedObjectsDictionary(root, Mx::kForWrite), Mx::eOk);
    MxDbObjectId id;
    auto* record = new MxDbXrecord;
    ASSERT_EQ(root->setAt(L"LIST", record, id), Mx::eOk);
    resbuf* chain = mxutBuildList(102, L"2A");
    record->setFromRbChain(*chain);
    mxutRelRb(chain);
    record->close();
    root->close();
    const std::string text = saved();
    EXPECT_THAT(text, ::testing::ContainsRegex("\n  0\nLINE\n  5\n[0-9A-F]+\n  8\n0\n 10\n"));
    MxDbDatabase again;
    const FileResult result = readDrawing(directory / "out.dxf", again);
    ASSERT_TRUE(result) << result.error;
    EXPECT_TRUE(result.notes.empty()) << result.notes.front();
    const auto find = [&](std::uint64_t h) {
        return db::DatabaseImp::peek(MxDbObjectId(again.imp().find(MxDbHandle(h))));
    };
    ASSERT_TRUE(find(handle)->isKindOf(db::LwPolyline::desc()));
    EXPECT_EQ(static_cast<db::LwPolyline*>(find(handle))->vertices.size(), 2U);
    ASSERT_TRUE(find(id.handle().value())->isKindOf(MxDbXrecord::desc()));
}

TEST_F(DxfWriter, AFileThatCannotBeWrittenChangesNothing) {
    ASSERT_TRUE(load(drawing("")));
    appendLine({0, 0, 0}, {1, 1, 0});
    const FileResult result = writeDrawing(directory / "no/folder.dxf", database);
    EXPECT_EQ(result.status, Mx::eFileUnwritable);
    EXPECT_TRUE(database.imp().isChanged());
    EXPECT_THAT(saved(), HasSubstr("LINE\n"));
}

TEST_F(DxfWriter, AnEntryOfADictionaryLeavesTheFileWithItsObjectAndComesBackWithIt) {
    ASSERT_TRUE(load(drawing("")));
    MxDbDictionary* root = nullptr;
    ASSERT_EQ(database.getNamedObjectsDictionary(root, Mx::kForWrite), Mx::eOk);
    MxDbObjectId id;
    auto* added = new MxDbDictionary;
    ASSERT_EQ(root->setAt(L"SOMETHING", added, id), Mx::eOk);
    added->close();
    root->close();
    const std::string with = saved();
    EXPECT_THAT(with, HasSubstr("SOMETHING"));
    erase(id.handle().value());
    EXPECT_THAT(saved(), Not(HasSubstr("SOMETHING")));
    erase(id.handle().value(), false);
    EXPECT_THAT(saved(), HasSubstr("SOMETHING"));
}

} // namespace
} // namespace merix::io::testing
