// SPDX-License-Identifier: MIT
#include "merix/io/dxf_merge.h"

#include "merix/db/tables.h"
#include "tests/merix/io/drawing_fixture.h"

#include <gmock/gmock.h>

namespace merix::io::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using DxfMerge = DrawingTest;

TEST_F(DxfMerge, OnlyTheChangedTagChanges) {
    const std::string record =
        "0|LINE|5|30|330|1F|100|AcDbEntity|8|0|  48|1.5000|347|AB|100|AcDbLine|10|1.00|20|2.0000|30|0|"
        "11|3.0|21|4.0|31|0.0|777|mine|1001|APP|1040|1.0";
    ASSERT_TRUE(load(drawing(record)));
    modify<db::Line>(0x30, [](db::Line& line) { line.end.x = 7.25; });
    std::string expected = drawing(record);
    expected.replace(expected.find("11\n3.0\n"), 7, "11\n7.25\n");
    EXPECT_EQ(saved(), expected);
}

TEST_F(DxfMerge, AnObjectOpenedForWriteAndNotChangedKeepsItsText) {
    const std::string text = drawing(
        "0|ARC|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|1.10|20|2|40|1e0|100|AcDbArc|50|33.30|51|  271.7");
    ASSERT_TRUE(load(text));
    modify<db::Arc>(0x30, [](db::Arc&) {});
    EXPECT_TRUE(database.imp().isChanged());
    EXPECT_EQ(saved(), text);
    EXPECT_FALSE(database.imp().isChanged());
}

TEST_F(DxfMerge, AValueThatBecomesItsDefaultGoesAndOneThatCeasesToBeItComes) {
    ASSERT_TRUE(load(drawing("0|LINE|5|30|330|1F|100|AcDbEntity|8|0|62|1|100|AcDbLine|10|1|20|2|30|0|11|3|21|4|31|0")));
    modify<db::Line>(0x30, [](db::Line& line) {
        db::traits(line).color = 256;
        db::traits(line).lineWeight = 50;
    });
    const std::string text = saved();
    EXPECT_THAT(text, Not(HasSubstr(tags("62|1"))));
    EXPECT_THAT(text, HasSubstr(tags("8|0|370|50|100|AcDbLine")));
}

const std::string kPolyline =
    "0|LWPOLYLINE|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbPolyline|90|3|70|1|43|0.0|10|0.0|20|0.0|"
    "91|7|10|1.0|20|0.0|42|0.5|91|8|10|1.0|20|1.0|91|9|1001|APP|1000|x";

TEST_F(DxfMerge, VerticesAreMatchedOneByOne) {
    ASSERT_TRUE(load(drawing(kPolyline)));
    modify<db::LwPolyline>(0x30, [](db::LwPolyline& line) { line.vertices[0].bulge = 0.25; });
    std::string expected = drawing(kPolyline);
    const std::string at = tags("10|0.0|20|0.0|91|7");
    EXPECT_THAT(saved(), HasSubstr("0.25\n"));
    MxDbDatabase again;
    ASSERT_TRUE(readDrawing(directory / "out.dxf", again));
    const auto* line =
        static_cast<const db::LwPolyline*>(db::DatabaseImp::peek(MxDbObjectId(again.imp().find(MxDbHandle(0x30)))));
    ASSERT_EQ(line->vertices.size(), 3U);
    EXPECT_EQ(line->vertices[0].bulge, 0.25);
    EXPECT_EQ(line->vertices[1].bulge, 0.5);
    EXPECT_EQ(line->vertices[2].bulge, 0.0);
    EXPECT_THAT(readBytes(directory / "out.dxf"), HasSubstr(tags("91|9|1001|APP|1000|x")));
}

TEST_F(DxfMerge, VerticesComeAndGo) {
    ASSERT_TRUE(load(drawing(kPolyline)));
    modify<db::LwPolyline>(0x30, [](db::LwPolyline& line) { line.vertices.pop_back(); });
    std::string text = saved();
    EXPECT_THAT(text, HasSubstr(tags("90|2|70|1|43|0.0|10|0.0|20|0.0|91|7|10|1.0|20|0.0|42|0.5|91|8|1001|APP")));
    modify<db::LwPolyline>(0x30, [](db::LwPolyline& line) {
        line.vertices.push_back(line.vertices[0]);
        line.vertices.push_back(line.vertices[1]);
    });
    text = saved();
    EXPECT_THAT(text, HasSubstr("90\n4\n"));
    MxDbDatabase again;
    ASSERT_TRUE(readDrawing(directory / "out.dxf", again));
    const auto* line =
        static_cast<const db::LwPolyline*>(db::DatabaseImp::peek(MxDbObjectId(again.imp().find(MxDbHandle(0x30)))));
    ASSERT_EQ(line->vertices.size(), 4U);
    EXPECT_EQ(line->vertices[3].bulge, 0.5);
}

TEST_F(DxfMerge, ReactorsAndExtensionDictionaryAreGroupsOfTheHead) {
    const std::string record =
        "0|LINE|5|30|102|{APP|1|own|102|}|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|1|20|2|11|3|21|4";
    ASSERT_TRUE(load(drawing(record)));
    modify<db::Line>(0x30, [&](db::Line& line) {
        line.data().reactors.push_back({nullptr, idOf(0xC)});
        EXPECT_EQ(line.createExtensionDictionary(), Mx::eOk);
    });
    std::string text = saved();
    const std::string dictionary = text.substr(text.find("{ACAD_XDICTIONARY\n360\n") + 22, 3);
    EXPECT_THAT(text, HasSubstr("  0\nDICTIONARY\n  5\n" + dictionary));
    EXPECT_THAT(text, HasSubstr("102\n{ACAD_REACTORS\n330\nC\n102\n}\n102\n{APP\n1\nown\n102\n}\n330\n1F\n"));
    modify<db::Line>(0x30, [&](db::Line& line) { line.data().reactors.clear(); });
    text = saved();
    EXPECT_THAT(text, Not(HasSubstr("{ACAD_REACTORS")));
    EXPECT_THAT(text, HasSubstr("{ACAD_XDICTIONARY"));
}

TEST_F(DxfMerge, AKeptRecordCanGetAReactor) {
    const std::string record = "0|HATCH|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbHatch|10|1|20|2|10|3";
    ASSERT_TRUE(load(drawing(record)));
    modify<db::KeptEntity>(0x30, [&](db::KeptEntity& e) { e.data().reactors.push_back({nullptr, idOf(0xC)}); });
    EXPECT_THAT(saved(),
                HasSubstr("0\nHATCH\n5\n30\n102\n{ACAD_REACTORS\n330\nC\n102\n}\n330\n1F\n100\nAcDbEntity\n8\n0\n"
                          "100\nAcDbHatch\n10\n1\n20\n2\n10\n3\n"));
}

TEST_F(DxfMerge, ARecordWithoutHandleGetsItWhenItIsChanged) {
    const std::string text = tags("0|SECTION|2|ENTITIES|0|LINE|8|0|39|0.5|10|1|20|2|11|3|21|4|62|3|0|ENDSEC|0|EOF");
    ASSERT_TRUE(load(text));
    const auto id = database.imp().block(database.imp().roots.modelSpace)->entityIds().at(0);
    const std::uint64_t handle = id.handle().value();
    modify<db::Line>(handle, [](db::Line& line) { line.start.x = 9.5; });
    EXPECT_THAT(saved(),
                ::testing::MatchesRegex("(.|\n)*0\nLINE\n  5\n[0-9A-F]+\n8\n0\n39\n0.5\n10\n9.5\n20\n2\n11\n3\n"
                                        "21\n4\n62\n3\n0\nENDSEC\n0\nEOF\n"));
}

TEST_F(DxfMerge, LineEndsOfTheFileAreUsed) {
    std::string text;
    for (const char c : drawing("0|LINE|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|1|20|2|11|3|21|4"))
        text += c == '\n' ? std::string("\r\n") : std::string(1, c);
    ASSERT_TRUE(load(text));
    modify<db::Line>(0x30, [](db::Line& line) { line.end.z = 5.5; });
    appendLine({0, 0, 0}, {1, 1, 0});
    const std::string out = saved();
    EXPECT_THAT(out, HasSubstr("21\r\n4\r\n 31\r\n5.5\r\n"));
    for (std::size_t at = out.find('\n'); at != std::string::npos; at = out.find('\n', at + 1))
        ASSERT_EQ(out[at - 1], '\r') << at;
}

TEST_F(DxfMerge, ExtendedRecordsKeepTheirOrder) {
    const std::string record = "0|XRECORD|5|40|330|C|100|AcDbXrecord|280|1|102|30|102|31|1|text";
    ASSERT_TRUE(load(drawing("", record)));
    modify<MxDbXrecord>(0x40, [](MxDbXrecord& x) {
        resbuf* chain = mxutBuildList(102, L"30");
        chain->rbnext = mxutBuildList(102, L"2A");
        EXPECT_EQ(x.setFromRbChain(*chain), Mx::eOk);
        mxutRelRb(chain);
    });
    EXPECT_THAT(saved(), HasSubstr("100\nAcDbXrecord\n280\n1\n102\n30\n102\n2A\n0\nENDSEC"));
}

} // namespace
} // namespace merix::io::testing
