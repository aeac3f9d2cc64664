// SPDX-License-Identifier: MIT
#include "merix/db/clone.h"
#include "merix/db/tables.h"
#include "merix/io/dxf_value.h"
#include "merix/io/merix_schema.h"
#include "merix/io/sqlite_file.h"
#include "tests/merix/io/drawing_fixture.h"

#include <gmock/gmock.h>

#include <map>

namespace merix::io::testing {
namespace {

using ::testing::HasSubstr;

const std::string kEntities =
    "0|LINE|5|30|330|1F|100|AcDbEntity|8|Walls|100|AcDbLine|10|1.00|20|2|11|3|21|4|777|mine|"
    "0|HATCH|5|31|330|1F|100|AcDbEntity|8|0|100|AcDbHatch|10|1|"
    "0|SAMPLENOTE|5|32|330|1F|100|AcDbEntity|8|0|100|MxDbSampleNote|90|1|10|1|20|2|30|3|93|2|310|0102|1|words|"
    "0|CIRCLE|5|33|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|0|20|0|40|1.50";

class MerixFile : public DrawingTest {
protected:
    void saveAs(const std::string& name) {
        const FileResult result = writeDrawing(directory / name, database);
        ASSERT_EQ(result.status, Mx::eOk) << result.error;
    }
    /// What a second database makes of the file, written as DXF.
    std::string asDxf(const std::string& name) {
        MxDbDatabase other;
        const FileResult read = readDrawing(directory / name, other);
        EXPECT_EQ(read.status, Mx::eOk) << read.error;
        EXPECT_EQ(writeDrawing(directory / "check.dxf", other).status, Mx::eOk);
        return readBytes(directory / "check.dxf");
    }
    void sql(const std::string& name, const char* statement) {
        SqliteFile file(directory / name, SqliteFile::Mode::kReadWrite);
        file.run(statement);
    }
    /// All rows of objects as text by handle.
    std::map<std::int64_t, std::string> rows(const std::string& name) {
        SqliteFile file(directory / name, SqliteFile::Mode::kRead);
        SqliteStatement statement(file, "SELECT handle, quote(class) || quote(owner) || quote(run) || quote(seq) || "
                                        "quote(stale) || quote(stream) FROM object");
        std::map<std::int64_t, std::string> result;
        while (statement.step())
            result[statement.integer(0)] = statement.bytes(1);
        return result;
    }
    FileResult reopen(const std::string& name) {
        MxDbDatabase other;
        return readDrawing(directory / name, other);
    }
};

TEST_F(MerixFile, ADxfComesBackThroughItByteForByte) {
    const WithSampleClass sample;
    const std::string text = drawing(kEntities);
    ASSERT_TRUE(load(text));
    saveAs("a.merix");
    EXPECT_EQ(asDxf("a.merix"), text);
}

TEST_F(MerixFile, ADxfComesBackThroughItWithoutTheModule) {
    const std::string text = drawing(kEntities);
    ASSERT_TRUE(load(text));
    saveAs("a.merix");
    EXPECT_EQ(asDxf("a.merix"), text);
}

TEST_F(MerixFile, IsAnSqliteFileThatSaysWhatItIs) {
    ASSERT_TRUE(load(drawing("")));
    saveAs("a.merix");
    const std::string bytes = readBytes(directory / "a.merix");
    EXPECT_EQ(bytes.substr(68, 4), "MRXD");
    EXPECT_EQ(bytes[63], 1);
    EXPECT_EQ(directory.entries(), 2U) << "no journal is left";
}

TEST_F(MerixFile, ObjectsComeBackAsTheyWere) {
    const WithSampleClass sample;
    database.imp().createDefaults();
    auto* note = new SampleNote;
    note->text = L"\u00e9\n";
    for (int i = 0; i < 100000; ++i)
        note->bytes.push_back(static_cast<std::uint8_t>(i % 251));
    const std::uint64_t handle = append(note);
    const std::uint64_t line = appendLine({1, 2, 3}, {4, 5, 6});
    database.imp().header.linetypeScale = 0.5;
    saveAs("a.merix");
    MxDbDatabase other;
    const FileResult result = readDrawing(directory / "a.merix", other);
    ASSERT_TRUE(result) << result.error;
    EXPECT_TRUE(result.notes.empty());
    EXPECT_FALSE(other.imp().isChanged());
    const auto* back =
        static_cast<const SampleNote*>(db::DatabaseImp::peek(MxDbObjectId(other.imp().find(MxDbHandle(handle)))));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->bytes, object<SampleNote>(handle)->bytes);
    EXPECT_EQ(back->text, L"\u00e9\n");
    const auto* lineBack =
        static_cast<const db::Line*>(db::DatabaseImp::peek(MxDbObjectId(other.imp().find(MxDbHandle(line)))));
    EXPECT_EQ(lineBack->end, (MxGePoint3d{4, 5, 6}));
    const auto* space = other.imp().block(other.imp().roots.modelSpace);
    ASSERT_EQ(space->entityIds().size(), 2U);
    EXPECT_EQ(space->entityIds()[0].handle().value(), handle);
    EXPECT_EQ(other.imp().header.linetypeScale, 0.5);
    EXPECT_EQ(other.namedObjectsDictionaryId().handle(), database.namedObjectsDictionaryId().handle());
}

TEST_F(MerixFile, ASaveOverItselfTouchesOnlyTheRowsThatChanged) {
    ASSERT_TRUE(load(drawing(kEntities)));
    saveAs("a.merix");
    const auto before = rows("a.merix");
    std::filesystem::create_hard_link(directory / "a.merix", directory / "link.merix");
    modify<db::Circle>(0x33, [](db::Circle& circle) { circle.radius = 9.0; });
    const std::uint64_t added = appendLine({0, 0, 0}, {1, 1, 0});
    erase(0x31);
    saveAs("a.merix");
    auto after = rows("a.merix");
    EXPECT_TRUE(std::filesystem::equivalent(directory / "a.merix", directory / "link.merix")) << "not a new file";
    EXPECT_TRUE(after.contains(static_cast<std::int64_t>(added)));
    EXPECT_FALSE(after.contains(0x31));
    std::vector<std::int64_t> changed;
    for (const auto& [handle, row] : before) {
        if (after.contains(handle) && after[handle] != row)
            changed.push_back(handle);
    }
    EXPECT_EQ(changed, (std::vector<std::int64_t>{0x1F, 0x33})) << "the block was opened for the new line";
    MxDbDatabase other;
    ASSERT_TRUE(readDrawing(directory / "a.merix", other));
    const auto* space = other.imp().block(other.imp().roots.modelSpace);
    ASSERT_EQ(space->entityIds().size(), 4U);
    EXPECT_EQ(space->entityIds()[3].handle().value(), added);
    EXPECT_FALSE(database.imp().isChanged());
}

TEST_F(MerixFile, ManySavesOverItselfGiveTheDrawingThatOneSaveGives) {
    const WithSampleClass sample;
    ASSERT_TRUE(load(drawing(kEntities)));
    saveAs("a.merix");
    const std::uint64_t line = appendLine({0, 0, 0}, {1, 1, 0});
    saveAs("a.merix");
    erase(line);
    erase(0x30);
    saveAs("a.merix");
    erase(0x30, false);
    erase(line, false);
    modify<SampleNote>(0x32, [](SampleNote& note) { note.bytes.assign(50000, 7); });
    saveAs("a.merix");
    modify<SampleNote>(0x32, [](SampleNote& note) { note.bytes.assign(5, 7); });
    modify<db::KeptEntity>(0x31, [&](db::KeptEntity& e) { e.data().reactors.push_back({nullptr, idOf(0xC)}); });
    saveAs("a.merix");
    const std::string incremental = asDxf("a.merix");
    EXPECT_THAT(incremental, HasSubstr("HATCH\n5\n31\n102\n{ACAD_REACTORS\n330\nC\n102\n}\n"));
    EXPECT_THAT(incremental, HasSubstr("0\nLINE\n5\n30\n"));
    EXPECT_THAT(incremental, HasSubstr("310\n0707070707\n"));
    saveAs("b.merix");
    EXPECT_EQ(asDxf("b.merix"), incremental);
    EXPECT_EQ(saved("direct.dxf"), incremental);
}

TEST_F(MerixFile, AFileThatAnotherSavedMeanwhileIsWrittenWhole) {
    ASSERT_TRUE(load(drawing(kEntities)));
    saveAs("a.merix");
    {
        MxDbDatabase other;
        ASSERT_TRUE(readDrawing(directory / "a.merix", other));
        ASSERT_TRUE(writeDrawing(directory / "a.merix", other));
    }
    modify<db::Circle>(0x33, [](db::Circle& circle) { circle.radius = 9.0; });
    saveAs("a.merix");
    EXPECT_THAT(asDxf("a.merix"), HasSubstr("40\n9.0\n"));
}

TEST_F(MerixFile, ALayerThatOnlyItsNameStandsForStaysOutOfTheDxf) {
    const std::string text = drawing(kEntities);
    ASSERT_TRUE(load(text));
    saveAs("a.merix");
    EXPECT_EQ(saved(), text);
    MxDbDatabase other;
    ASSERT_TRUE(readDrawing(directory / "a.merix", other));
    const auto* line = static_cast<db::Line*>(db::DatabaseImp::peek(MxDbObjectId(other.imp().find(MxDbHandle(0x30)))));
    EXPECT_EQ(static_cast<const db::LayerRecord*>(db::DatabaseImp::peek(line->layerId()))->name, L"Walls");
}

TEST_F(MerixFile, AnObjectWhoseModuleIsAbsentIsKeptAndComesBack) {
    std::uint64_t handle = 0;
    {
        const WithSampleClass sample;
        MxDbDatabase first;
        first.imp().createDefaults();
        MxDbBlockTableRecord* space = nullptr;
        ASSERT_EQ(mxdbOpenObject(space, first.imp().roots.modelSpace, Mx::kForWrite), Mx::eOk);
        auto* note = new SampleNote;
        note->text = L"words";
        note->bytes.assign(5000, 3);
        MxDbObjectId id;
        ASSERT_EQ(space->appendMxDbEntity(id, note), Mx::eOk);
        note->close();
        space->close();
        handle = id.handle().value();
        ASSERT_TRUE(writeDrawing(directory / "a.merix", first));
    }
    {
        MxDbDatabase without;
        ASSERT_TRUE(readDrawing(directory / "a.merix", without));
        const auto* kept =
            dynamic_cast<db::KeptEntity*>(db::DatabaseImp::peek(MxDbObjectId(without.imp().find(MxDbHandle(handle)))));
        ASSERT_NE(kept, nullptr);
        EXPECT_EQ(kept->className, L"MxDbSampleNote");
        ASSERT_TRUE(writeDrawing(directory / "b.merix", without));
    }
    const WithSampleClass sample;
    ASSERT_TRUE(readDrawing(directory / "b.merix", database));
    ASSERT_NE(object<SampleNote>(handle), nullptr);
    EXPECT_EQ(object<SampleNote>(handle)->bytes, std::vector<std::uint8_t>(5000, 3));
}

TEST_F(MerixFile, ANewDrawingComesBackWholeWithoutHavingBeenDxf) {
    database.imp().createDefaults();
    saveAs("a.merix");
    const std::string native = asDxf("a.merix");
    EXPECT_EQ(native, saved());
    for (const char* record : {"0\nAPPID\n", "0\nDIMSTYLE\n", "0\nVPORT\n"})
        EXPECT_THAT(native, HasSubstr(record));
}

TEST_F(MerixFile, AnObjectWhoseModuleIsAbsentBecomesDxf) {
    const std::string text = drawing(kEntities);
    {
        const WithSampleClass sample;
        ASSERT_TRUE(load(text));
        modify<SampleNote>(0x32, [this](SampleNote& note) {
            note.bytes.assign(300, 7);
            note.data().reactors.push_back({nullptr, idOf(0xC)});
        });
        saveAs("a.merix");
    }
    const auto record = [](const std::string& dxf) {
        const std::size_t begin = dxf.find("0\nSAMPLENOTE\n");
        return dxf.substr(begin, dxf.find("\n0\nCIRCLE", begin) - begin);
    };
    const std::string without = record(asDxf("a.merix"));
    EXPECT_THAT(without, HasSubstr("0707"));
    const WithSampleClass sample;
    EXPECT_EQ(record(asDxf("a.merix")), without);
    sql("a.merix", "UPDATE bytes SET data = x'00', size = 1 WHERE object = -50");
    EXPECT_TRUE(reopen("a.merix")) << "its tags cost an object nothing but its DXF";
}

TEST_F(MerixFile, AnObjectThatIsKeptAsTheDxfItCameAsKnowsItsReactorsAndDictionary) {
    const std::string text =
        drawing("0|SAMPLENOTE|5|32|102|{ACAD_REACTORS|330|33|102|}|102|{ACAD_XDICTIONARY|360|40|102|}|330|1F|100|"
                "AcDbEntity|8|0|100|MxDbSampleNote|90|1|10|1|20|2|30|3|93|0|1|words|"
                "0|CIRCLE|5|33|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|0|20|0|40|1.50",
                "0|DICTIONARY|5|40|330|32|100|AcDbDictionary|281|1");
    {
        const WithSampleClass sample;
        ASSERT_TRUE(load(text));
        saveAs("a.merix");
    }
    MxDbDatabase other;
    ASSERT_TRUE(readDrawing(directory / "a.merix", other));
    const auto id = [&](std::uint64_t handle) { return MxDbObjectId(other.imp().find(MxDbHandle(handle))); };
    const MxDbObject* kept = db::DatabaseImp::peek(id(0x32));
    ASSERT_EQ(kept->isA(), db::KeptEntity::desc());
    EXPECT_EQ(kept->extensionDictionary(), id(0x40));
    ASSERT_EQ(kept->reactors().size(), 1U);
    EXPECT_EQ(kept->reactors()[0].persistent, id(0x33));
}

TEST_F(MerixFile, DamageGivesOneLine) {
    ASSERT_TRUE(load(drawing(kEntities)));
    saveAs("good.merix");
    const std::string good = readBytes(directory / "good.merix");
    const auto message = [&](const char* statement) {
        writeBytes(directory / "bad.merix", good);
        sql("bad.merix", statement);
        const FileResult result = reopen("bad.merix");
        EXPECT_FALSE(result) << statement;
        EXPECT_EQ(result.error.find('\n'), std::string::npos);
        EXPECT_EQ(result.error.find(directory / "bad.merix"), 0U);
        return result.error;
    };
    EXPECT_THAT(message("PRAGMA application_id = 1"), HasSubstr("no Merix drawing"));
    EXPECT_THAT(message("PRAGMA user_version = 99"), HasSubstr("later version"));
    EXPECT_THAT(message("DROP TABLE part"), HasSubstr("lacks a table"));
    EXPECT_THAT(message("CREATE TRIGGER t AFTER INSERT ON meta BEGIN DELETE FROM object; END"),
                HasSubstr("does not belong there: t"));
    EXPECT_THAT(message("CREATE VIEW v AS SELECT 1"), HasSubstr("does not belong there: v"));
    EXPECT_THAT(message("ALTER TABLE object ADD COLUMN more"), HasSubstr("does not belong there: object"));
    EXPECT_THAT(message("UPDATE text SET size = 1000000000000"), HasSubstr("text at 0"));
    EXPECT_THAT(message("UPDATE text SET data = x'28B52FFD'"), HasSubstr("text at 0"));
    EXPECT_THAT(message("UPDATE object SET text_size = 1000000000"), HasSubstr("ends behind its end"));
    EXPECT_THAT(message("UPDATE object SET text_at = -5"), HasSubstr("ends behind its end"));
    EXPECT_THAT(message("UPDATE object SET run = 99999"), HasSubstr("belongs nowhere"));
    EXPECT_THAT(message("UPDATE object SET class = 99999"), HasSubstr("belongs nowhere"));
    EXPECT_THAT(message("UPDATE object SET text_at = 0, text_size = (SELECT sum(size) FROM text)"),
                HasSubstr("texts overlap"));
    EXPECT_THAT(message("UPDATE part SET id = 9223372036854775807 WHERE seq = 0"), HasSubstr("part or class"));
    EXPECT_THAT(message("UPDATE part SET id = 0 WHERE seq = 0"), HasSubstr("part or class"));
    EXPECT_THAT(message("INSERT INTO class VALUES(9223372036854775807, 'A', 'B')"), HasSubstr("part or class"));
    EXPECT_THAT(message("UPDATE object SET owner = -1"), HasSubstr("out of range"));
    EXPECT_THAT(message("UPDATE part SET role = 99"), HasSubstr("unknown kind"));
    EXPECT_THAT(message("INSERT INTO bytes VALUES(48, 2000000000000, x'00')"), HasSubstr("out of range"));
    EXPECT_THAT(message("INSERT INTO bytes VALUES(48, 2000000000, x'00')"), HasSubstr("object 30"));
}

TEST_F(MerixFile, AnOwnerOutOfRangeIsNoOwnerAndStaysInTheText) {
    const std::string text = drawing("0|LINE|5|30|330|FFFFFFFFFFFFFFFE|100|AcDbEntity|8|0|100|AcDbLine|10|1|20|2",
                                     "0|XRECORD|5|40|330|FFFFFFFFFFFFFFFE|100|AcDbXrecord|280|1|1|kept|"
                                     "0|DICTIONARY|5|41|330|4000000000000000|100|AcDbDictionary|281|1|3|A|"
                                     "350|FFFFFFFFFFFFFFFE");
    ASSERT_TRUE(load(text));
    saveAs("a.merix");
    const FileResult result = reopen("a.merix");
    EXPECT_TRUE(result) << result.error;
    EXPECT_TRUE(result.notes.empty());
    EXPECT_EQ(asDxf("a.merix"), text);
}

TEST_F(MerixFile, WhatPacksTooWellToBeTrueIsStoredAsItIs) {
    const WithSampleClass sample;
    database.imp().createDefaults();
    auto* silence = new SampleNote;
    silence->bytes.assign(5000000, 0);
    const std::uint64_t handle = append(silence);
    saveAs("a.merix");
    {
        SqliteFile file(directory / "a.merix", SqliteFile::Mode::kRead);
        SqliteStatement rows(file,
                             "SELECT size, length(data) FROM bytes UNION ALL SELECT size, length(data) FROM text");
        std::int64_t size = 0, stored = 0;
        while (rows.step()) {
            size += rows.integer(0);
            stored += rows.integer(1);
        }
        EXPECT_GT(size, 5000000);
        EXPECT_LT(size, 1024 * stored) << "readers refuse what is packed thousandfold";
    }
    MxDbDatabase other;
    ASSERT_TRUE(readDrawing(directory / "a.merix", other));
    const auto* back =
        static_cast<const SampleNote*>(db::DatabaseImp::peek(MxDbObjectId(other.imp().find(MxDbHandle(handle)))));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->bytes.size(), 5000000U);
}

TEST_F(MerixFile, DictionariesNestedWithoutEndAreOpenedSavedCopiedAndErased) {
    constexpr std::uint64_t kFirst = 0x1000, kLast = kFirst + 100000;
    std::string objects;
    for (std::uint64_t handle = kFirst; handle < kLast; ++handle) {
        const std::string owner = fromHandle(handle == kFirst ? 0x30 : handle - 1);
        objects += "0|DICTIONARY|5|" + fromHandle(handle) + "|330|" + owner + "|100|AcDbDictionary|281|1";
        objects += handle + 1 < kLast ? "|3|INNER|350|" + fromHandle(handle + 1) + "|" : "";
    }
    std::string text = drawing("0|LINE|5|30|102|{ACAD_XDICTIONARY|360|1000|102|}|330|1F|100|AcDbEntity|8|0|"
                               "100|AcDbLine|10|1|20|2|11|3|21|4",
                               objects);
    text.replace(text.find("500\n"), 3, "FFFFF"); // the seed
    ASSERT_TRUE(load(text));
    saveAs("a.merix");
    EXPECT_TRUE(asDxf("a.merix") == text);
    const auto copies = db::cloneEntities({idOf(0x30)}, database.imp().roots.modelSpace, {});
    ASSERT_EQ(copies.size(), 1U);
    database.imp().undo.begin(L"Erase");
    erase(0x30);
    database.imp().undo.end();
    EXPECT_TRUE(object<MxDbDictionary>(kFirst)->isErased());
    saveAs("a.merix");
    EXPECT_TRUE(reopen("a.merix"));
    ASSERT_TRUE(database.imp().undo.undo());
    ASSERT_TRUE(database.imp().undo.undo());
    EXPECT_FALSE(object<MxDbDictionary>(kFirst)->isErased());
    EXPECT_TRUE(saved() == text);
}

TEST_F(MerixFile, APlaceOutOfRangeLeavesRoomForMore) {
    ASSERT_TRUE(load(drawing(kEntities)));
    saveAs("a.merix");
    sql("a.merix", "UPDATE meta SET value = '9223372036854775807' WHERE key = 'next_seq'");
    MxDbDatabase other;
    ASSERT_TRUE(readDrawing(directory / "a.merix", other));
    std::vector<std::uint64_t> added;
    for (int i = 0; i < 3; ++i) {
        MxDbBlockTableRecord* space = nullptr;
        ASSERT_EQ(mxdbOpenObject(space, other.imp().roots.modelSpace, Mx::kForWrite), Mx::eOk);
        auto* line = new db::Line;
        MxDbObjectId id;
        space->appendMxDbEntity(id, line);
        line->close();
        space->close();
        added.push_back(id.handle().value());
    }
    ASSERT_TRUE(writeDrawing(directory / "a.merix", other));
    MxDbDatabase again;
    ASSERT_TRUE(readDrawing(directory / "a.merix", again));
    const auto ids = again.imp().block(again.imp().roots.modelSpace)->entityIds();
    ASSERT_EQ(ids.size(), 7U);
    for (std::size_t i = 0; i < added.size(); ++i)
        EXPECT_EQ(ids[4 + i].handle().value(), added[i]);
}

TEST_F(MerixFile, AStreamThatCannotBeReadCostsItsObjectOnly) {
    ASSERT_TRUE(load(drawing(kEntities)));
    saveAs("a.merix");
    sql("a.merix", "UPDATE object SET stream = x'0102' WHERE handle = 48");
    MxDbDatabase other;
    const FileResult result = readDrawing(directory / "a.merix", other);
    ASSERT_TRUE(result) << result.error;
    ASSERT_EQ(result.notes.size(), 1U);
    EXPECT_THAT(result.notes[0], HasSubstr("object 30: LINE is kept as it came"));
    ASSERT_TRUE(writeDrawing(directory / "out.dxf", other));
    EXPECT_EQ(readBytes(directory / "out.dxf"), drawing(kEntities));
}

TEST_F(MerixFile, SurvivesAnyByteChanged) {
    ASSERT_TRUE(load(drawing(kEntities)));
    saveAs("a.merix");
    const std::string good = readBytes(directory / "a.merix");
    std::uint32_t state = 12345;
    for (int i = 0; i < 300; ++i) {
        std::string bad = good;
        for (int k = 0; k < 8; ++k) {
            state = state * 1664525U + 1013904223U;
            bad[state % bad.size()] = static_cast<char>(state >> 24);
        }
        writeBytes(directory / "bad.merix", bad);
        const FileResult result = reopen("bad.merix");
        EXPECT_EQ(result.error.empty(), result.status == Mx::eOk);
        EXPECT_EQ(result.error.find('\n'), std::string::npos);
    }
}

TEST_F(MerixFile, RefusesWhatIsNone) {
    EXPECT_EQ(readDrawing(directory / "none.merix", database).status, Mx::eFileNotFound);
    writeBytes(directory / "junk.merix", "this is no drawing at all, it is a sentence that is longer than a header");
    EXPECT_FALSE(reopen("junk.merix"));
    writeBytes(directory / "empty.merix", "");
    EXPECT_THAT(reopen("empty.merix").error, HasSubstr("the file is empty"));
}

} // namespace
} // namespace merix::io::testing
