// SPDX-License-Identifier: MIT
#include "merix/io/dxf_reader.h"

#include "merix/db/tables.h"
#include "merix/io/drawing_parts.h"
#include "tests/merix/io/drawing_fixture.h"

#include <gmock/gmock.h>

namespace merix::io::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using DxfReader = DrawingTest;

const std::string kLine =
    "0|LINE|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|1.0|20|2.0|30|0.0|11|3.0|21|4.0|31|0.0";

TEST_F(DxfReader, KnownKindsBecomeObjects) {
    ASSERT_TRUE(load(drawing(kLine + "|0|CIRCLE|5|31|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|5|20|6|30|0|40|2.5")));
    const auto* line = object<db::Line>(0x30);
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->start, (MxGePoint3d{1, 2, 0}));
    EXPECT_EQ(line->end, (MxGePoint3d{3, 4, 0}));
    const auto* circle = object<db::Circle>(0x31);
    ASSERT_NE(circle, nullptr);
    EXPECT_EQ(circle->radius, 2.5);
    const auto* space = database.imp().block(database.imp().roots.modelSpace);
    ASSERT_NE(space, nullptr);
    EXPECT_EQ(space->entityIds(), (std::vector{idOf(0x30), idOf(0x31)}));
    EXPECT_EQ(database.namedObjectsDictionaryId(), idOf(0xC));
    EXPECT_FALSE(database.imp().isChanged());
}

/// Every odd thing that a file may hold and that is to come back as it was.
const std::string kOddThings =
    "999\nmade by hand\n 0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1015\n9\n$UNKNOWNVAR\n70\n     7\n0\nENDSEC\n"
    "0\nSECTION\n2\nMYSECTION\n1\n anything \n0\nWHATEVER\n5\nZZ\n0\nENDSEC\n"
    "0\nSECTION\n2\nENTITIES\n999\nbefore the first\n0\nLINE\n5\n30\n999\nin the middle\n8\nWalls\n10\n1\n20\n2\n"
    "11\n3.000\n21\n4\n777\nunknown code\n1001\nACAD\n1000\ntext\n"
    "0\nUNKNOWN\n5\n31\n8\n0\n70\n+5\n"
    "0\nPOLYLINE\n5\n32\n8\n0\n66\n1\n0\nVERTEX\n5\n33\n8\n0\n10\n1.0\n20\n1.0\n0\nSEQEND\n5\n34\n8\n0\n"
    "  0\nENDSEC\n0\nSECTION\n2\nTHUMBNAILIMAGE\n90\n4\n310\n00FFAA\n0\nENDSEC\n0\nEOF\nleft over";

TEST_F(DxfReader, WhatIsNotUnderstoodComesBackByteForByte) {
    ASSERT_TRUE(load(kOddThings));
    EXPECT_EQ(saved(), kOddThings);
    EXPECT_EQ(object<db::KeptEntity>(0x31)->dxfName, "UNKNOWN");
    EXPECT_EQ(object<db::KeptEntity>(0x32)->dxfName, "POLYLINE");
    EXPECT_EQ(object<MxDbObject>(0x33), nullptr) << "a vertex belongs to its polyline";
}

TEST_F(DxfReader, LineEndsOfBothKindsComeBack) {
    std::string windows;
    for (const char c : kOddThings)
        windows += c == '\n' ? std::string("\r\n") : std::string(1, c);
    ASSERT_TRUE(load(windows));
    EXPECT_EQ(saved(), windows);
}

TEST_F(DxfReader, AnErasedPolylineTakesItsVerticesWithIt) {
    ASSERT_TRUE(load(kOddThings));
    erase(0x32);
    const std::string text = saved();
    EXPECT_THAT(text, Not(HasSubstr("POLYLINE")));
    EXPECT_THAT(text, Not(HasSubstr("VERTEX")));
    EXPECT_THAT(text, Not(HasSubstr("SEQEND")));
    EXPECT_THAT(text, HasSubstr("UNKNOWN"));
    erase(0x32, false);
    EXPECT_EQ(saved(), kOddThings);
}

TEST_F(DxfReader, OldRecordsWithoutHandlesGetThemButNotInTheFile) {
    const std::string text =
        tags("0|SECTION|2|BLOCKS|0|BLOCK|8|0|2|DOOR|70|0|10|5.0|20|6.0|3|DOOR|0|LINE|8|0|10|0|20|0|"
             "11|1|21|0|0|ENDBLK|8|0|0|ENDSEC|0|SECTION|2|ENTITIES|0|LINE|8|WALLS|62|3|10|1|20|2|"
             "11|3|21|4|6|DASHED|0|ARC|8|0|10|1|20|1|40|2|50|0|51|90|0|INSERT|8|0|2|DOOR|10|1|20|1|"
             "0|TEXT|8|0|5|A0|10|1|20|1|40|2.5|1|Hello|72|1|11|3|21|3|73|2|0|ENDSEC|0|EOF");
    ASSERT_TRUE(load(text));
    EXPECT_EQ(saved(), text);
    const auto& imp = database.imp();
    const auto* space = imp.block(imp.roots.modelSpace);
    ASSERT_EQ(space->entityIds().size(), 4U);
    EXPECT_GT(space->entityIds()[0].handle().value(), 0xA0U);
    const auto* line = dynamic_cast<const db::Line*>(db::DatabaseImp::peek(space->entityIds()[0]));
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->end, (MxGePoint3d{3, 4, 0}));
    EXPECT_EQ(db::traits(*line).color, 3);
    const auto* arc = dynamic_cast<const db::Arc*>(db::DatabaseImp::peek(space->entityIds()[1]));
    ASSERT_NE(arc, nullptr);
    EXPECT_NEAR(arc->endAngle, 1.5707963267948966, 1e-12);
    const auto* insert = dynamic_cast<const db::Insert*>(db::DatabaseImp::peek(space->entityIds()[2]));
    ASSERT_NE(insert, nullptr);
    const auto* block = imp.block(insert->block);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->name(), L"DOOR");
    EXPECT_EQ(block->origin(), (MxGePoint3d{5, 6, 0}));
    EXPECT_EQ(block->entityIds().size(), 1U);
    const auto* textEntity = object<db::Text>(0xA0);
    ASSERT_NE(textEntity, nullptr);
    EXPECT_EQ(textEntity->vertical, 2);
    EXPECT_EQ(textEntity->alignment, (MxGePoint3d{3, 3, 0}));
}

TEST_F(DxfReader, ADamagedRecordCostsThatRecordOnly) {
    const std::string text =
        drawing("0|LINE|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|1.0|broken|2.0|11|1|0|CIRCLE|5|"
                "31|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|0|20|0|40|1");
    const FileResult result = load(text);
    ASSERT_TRUE(result) << result.error;
    ASSERT_EQ(result.notes.size(), 1U);
    EXPECT_THAT(result.notes[0], HasSubstr("in.dxf: line 199: a group code was expected; the record LINE of line 185"));
    EXPECT_EQ(object<db::KeptEntity>(0x30)->dxfName, "LINE");
    EXPECT_NE(object<db::Circle>(0x31), nullptr);
    EXPECT_EQ(saved(), text);
}

TEST_F(DxfReader, ARepeatedHandleIsReportedAndBothRecordsStay) {
    const std::string text = drawing(kLine + "|" + kLine);
    const FileResult result = load(text);
    ASSERT_EQ(result.notes.size(), 1U);
    EXPECT_THAT(result.notes[0], HasSubstr("handle 30"));
    EXPECT_EQ(database.imp().block(database.imp().roots.modelSpace)->entityIds().size(), 2U);
    EXPECT_EQ(saved(), text);
}

TEST_F(DxfReader, TextsAreReadInTheCodePageOfTheFile) {
    const std::string record = "0|TEXT|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbText|10|0|20|0|40|1|1|\xCF\\U+20AC";
    const std::string head = tags("0|SECTION|2|HEADER|9|$ACADVER|1|AC1015|9|$DWGCODEPAGE|3|ANSI_1251|0|ENDSEC");
    ASSERT_TRUE(load(head + tags("0|SECTION|2|ENTITIES") + tags(record) + tags("0|ENDSEC|0|EOF")));
    EXPECT_EQ(object<db::Text>(0x30)->text, L"\u041f\u20ac");
}

TEST_F(DxfReader, HeaderVariablesOfTheHostAreRead) {
    ASSERT_TRUE(
        load(tags("0|SECTION|2|HEADER|9|$ACADVER|1|AC1021|9|$EXTMIN|10|1|20|2|30|3|9|$LTSCALE|40|2.5|9|$TEXTSIZE|"
                  "40|7|9|$CLAYER|8|Walls|9|$INSUNITS|70|6|0|ENDSEC|0|EOF")));
    const auto& header = database.imp().header;
    EXPECT_EQ(header.extMin, (MxGePoint3d{1, 2, 3}));
    EXPECT_EQ(header.linetypeScale, 2.5);
    EXPECT_EQ(header.textSize, 7.0);
    EXPECT_EQ(header.currentLayer, L"Walls");
    EXPECT_EQ(header.insUnits, 6);
}

TEST_F(DxfReader, AClassOfAModuleReadsItsRecords) {
    const WithSampleClass sample;
    const std::string text = drawing("0|SAMPLENOTE|5|30|102|{ACAD_REACTORS|330|99|102|}|330|1F|100|AcDbEntity|8|0|"
                                     "100|MxDbSampleNote|90|1|10|1|20|2|30|3|93|3|310|0102|310|FF|1|words");
    const FileResult result = load(text);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result.notes.empty());
    const auto* note = object<SampleNote>(0x30);
    ASSERT_NE(note, nullptr);
    EXPECT_EQ(note->bytes, (std::vector<std::uint8_t>{1, 2, 255}));
    EXPECT_EQ(note->text, L"words");
    ASSERT_EQ(note->reactors().size(), 1U);
    EXPECT_EQ(note->reactors()[0].persistent.handle().value(), 0x99U);
    EXPECT_EQ(saved(), text);
}

TEST_F(DxfReader, AModuleThatRefusesARecordLeavesItAsItCame) {
    const WithSampleClass sample;
    const std::string text = drawing("0|SAMPLENOTE|5|30|330|1F|100|AcDbEntity|8|0|100|MxDbSampleNote|90|2|1|later|"
                                     "0|SAMPLENOTE|5|31|330|1F|100|AcDbEntity|8|0|100|MxDbSampleNote|70|2|"
                                     "0|SAMPLENOTE|5|32|330|1F|100|AcDbEntity|8|0|100|MxDbSampleNote|90|1|310|0");
    const FileResult result = load(text);
    ASSERT_TRUE(result);
    ASSERT_EQ(result.notes.size(), 3U);
    EXPECT_THAT(result.notes[0],
                HasSubstr("line 185: SAMPLENOTE is kept as it came: it was written by a later version, status 301"));
    EXPECT_THAT(result.notes[1], HasSubstr("Error: expected group code 90 (version #), status 50"));
    EXPECT_THAT(result.notes[2], HasSubstr("status 51"));
    ASSERT_NE(object<db::KeptEntity>(0x30), nullptr);
    EXPECT_EQ(object<db::KeptEntity>(0x30)->className, L"MxDbSampleNote");
    EXPECT_EQ(saved(), text);
}

TEST_F(DxfReader, ARecordWhoseModuleIsAbsentIsKept) {
    const std::string text = drawing("0|SAMPLENOTE|5|30|330|1F|100|AcDbEntity|8|0|100|MxDbSampleNote|90|1|1|words");
    ASSERT_TRUE(load(text));
    EXPECT_EQ(object<db::KeptEntity>(0x30)->dxfName, "SAMPLENOTE");
    EXPECT_EQ(saved(), text);
}

struct Refusal {
    const char* bytes;
    const char* message;
};
void PrintTo(const Refusal& refusal, std::ostream* out) {
    *out << refusal.message;
}
class DxfRefusal : public DrawingTest, public ::testing::WithParamInterface<Refusal> {};

TEST_P(DxfRefusal, SaysWhatAndWhereInOneLine) {
    const FileResult result = load(GetParam().bytes);
    EXPECT_FALSE(result);
    EXPECT_EQ(result.error, directory / "in.dxf" + std::string(": ") + GetParam().message);
    EXPECT_EQ(readBytes(directory / "in.dxf"), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Files, DxfRefusal,
    ::testing::Values(
        Refusal{"", "the file is empty"},
        Refusal{"\x7f"
                "ELF\x02\x01 junk\nmore junk\n",
                "line 1: this is no DXF drawing: a group code was expected"},
        Refusal{"AutoCAD Binary DXF\r\n\x1a", "byte 18: the sentinel of a binary DXF drawing is damaged"},
        Refusal{"0\nEOF\n", "line 1: this is no DXF drawing: it has no sections"},
        Refusal{"1\nx\n", "line 3: this is no DXF drawing: a group code was expected"},
        Refusal{"0\nSECTION\n2\nENTITIES\n0\nLINE\n8\n0\n", "line 9: the drawing is cut off: it ends without EOF"},
        Refusal{"0\nSECTION\n2\nENTITIES\n0\nLINE\n8\n0\n10\n", "line 9: the drawing is cut off: it ends without EOF"},
        Refusal{"0\nSECTION\n2\nENTITIES\n0\nENDSEC\n", "line 7: the drawing is cut off: it ends without EOF"},
        Refusal{"0\nSECTION\n2\nENTITIES\n0\nLINE\nbad\n0\n10\n",
                "line 7: a group code was expected, and no record follows"}));

TEST_F(DxfReader, RefusesWhatIsNoFileOfItsKind) {
    EXPECT_EQ(readDrawing(directory / "none.dxf", database).status, Mx::eFileNotFound);
    EXPECT_EQ(readDrawing(directory / "a.dwg", database).status, Mx::eInvalidInput);
    std::filesystem::create_directory(directory / "folder.dxf");
    EXPECT_THAT(readDrawing(directory / "folder.dxf", database).error, HasSubstr("this is a directory"));
}

TEST_F(DxfReader, SurvivesAnyCutOfAFile) {
    const std::string whole = drawing(kLine + "|0|SAMPLENOTE|5|31|100|MxDbSampleNote|90|1|310|00FF",
                                      "0|XRECORD|5|40|330|C|100|AcDbXrecord|280|1|102|30");
    for (std::size_t size = 1; size < whole.size(); size += 3) {
        MxDbDatabase fresh;
        writeBytes(directory / "cut.dxf", std::string_view(whole).substr(0, size));
        const FileResult result = readDrawing(directory / "cut.dxf", fresh);
        EXPECT_FALSE(result) << size;
        EXPECT_EQ(result.error.find('\n'), std::string::npos);
    }
}

} // namespace
} // namespace merix::io::testing
