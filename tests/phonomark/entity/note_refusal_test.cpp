// SPDX-License-Identifier: MIT
// Notes in drawings that are damaged or made to do harm: the record is kept as it came and named, the rest is read.
#include "phonomark/entity/phonomark.h"

#include "merix/db/access.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/entities.h"
#include "merix/io/drawing_file.h"
#include "merix/io/sqlite_file.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/module_fixture.h"

#include <QFile>

#include <memory>

using merix::db::DatabaseImp;
using merix::io::DxfForm;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr char kNoteRecord[] = "  0\nPHONOMARK\n";

class NoteRefusalTest : public ModuleTest {
protected:
    std::string pathOf(const char* name) { return folder.filePath(QString::fromUtf8(name)).toStdString(); }

    std::string bytesOf(const std::string& path) {
        QFile file(QString::fromStdString(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "cannot be read";
    }
    std::string write(MxDbDatabase& from, const char* name, std::optional<DxfForm> form = {}) {
        const auto result = merix::io::writeDrawing(pathOf(name), from, form);
        EXPECT_EQ(result.status, Mx::eOk) << result.error;
        return bytesOf(pathOf(name));
    }
    std::unique_ptr<MxDbDatabase> read(const char* name) {
        auto database = std::make_unique<MxDbDatabase>();
        auto result = merix::io::readDrawing(pathOf(name), *database);
        EXPECT_EQ(result.status, Mx::eOk) << result.error;
        said = std::move(result.notes);
        return database;
    }
    std::unique_ptr<MxDbDatabase> readText(const std::string& text) {
        QFile file(QString::fromStdString(pathOf("in.dxf")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text.data(), qint64(text.size())));
        file.close();
        return read("in.dxf");
    }

    /// A drawing with two notes, the second with these groups behind its subclass marker.
    std::string drawingWith(const std::string& groups) {
        addNote(kPointNote, {1, 2, 3});
        m_other = listed()[0].handle();
        m_changed = addNote().handle();
        std::string text = write(database(), "plain.dxf", DxfForm::kText);
        const std::size_t record = text.rfind(kNoteRecord);
        const std::string marker = "100\nMxDbPhonomark\n";
        const std::size_t begin = text.find(marker, record) + marker.size();
        text.replace(begin, text.find("  0\n", begin) - begin, groups);
        m_line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(record), '\n');
        return text;
    }
    static MxDbObject* find(MxDbDatabase& database, MxDbHandle handle) {
        return DatabaseImp::peek(MxDbObjectId(database.imp().find(handle)));
    }

    std::vector<std::string> said;
    MxDbHandle m_other, m_changed;
    long m_line = 0;
};

struct Refused {
    const char* groups;
    const char* why;
    bool hasBinary = true; ///< binary DXF can hold it
};

void PrintTo(const Refused& refused, std::ostream* out) {
    *out << ::testing::PrintToString(refused.groups);
}

class RefusedNote : public NoteRefusalTest, public ::testing::WithParamInterface<Refused> {};

} // namespace

TEST_P(RefusedNote, IsKeptAsItCameAndNamed) {
    const std::string text = drawingWith(GetParam().groups);
    auto drawing = readText(text);
    const std::string where = "in.dxf: line " + std::to_string(m_line) + ": PHONOMARK is kept as it came: ";
    ASSERT_THAT(said, ElementsAre(HasSubstr(where + GetParam().why)));
    MxDbObject* kept = find(*drawing, m_changed);
    ASSERT_TRUE(kept);
    EXPECT_FALSE(kept->isKindOf(MxDbPhonomark::desc()));
    auto* other = static_cast<MxDbPhonomark*>(find(*drawing, m_other));
    ASSERT_TRUE(other && other->isKindOf(MxDbPhonomark::desc()));
    EXPECT_EQ(other->position(), MxGePoint3d(1, 2, 3));

    EXPECT_EQ(write(*drawing, "again.dxf"), text);
    write(*drawing, "again.merix");
    drawing = read("again.merix");
    ASSERT_THAT(said, ElementsAre(AllOf(HasSubstr("again.merix: object "), HasSubstr(GetParam().why))));
    EXPECT_EQ(write(*drawing, "again.dxf", DxfForm::kText), text);
    if (!GetParam().hasBinary)
        return;
    write(*drawing, "binary.dxf", DxfForm::kBinary);
    drawing = read("binary.dxf");
    ASSERT_THAT(said, ElementsAre(AllOf(HasSubstr("binary.dxf: byte "), HasSubstr(GetParam().why))));
    EXPECT_EQ(write(*drawing, "again.dxf", DxfForm::kText), text);
}

INSTANTIATE_TEST_SUITE_P(
    Records, RefusedNote,
    ::testing::Values(
        Refused{" 90\n2\n 70\n0\n", "it was written by a later version, status 301"},
        Refused{" 70\n0\n 90\n1\n", "Error: expected group code 90 (version #), status 50"},
        Refused{"", "Error: expected group code 90 (version #), status 50"},
        Refused{" 90\n1\n290\n1\n310\n0102\n", "Error: more sound than group 93 announced (0 bytes), status 51"},
        Refused{" 90\n1\n290\n1\n 93\n3\n310\n0102\n310\n0304\n  1\nAnna\n",
                "Error: more sound than group 93 announced (3 bytes), status 51"},
        Refused{" 90\n1\n 93\n4294967295\n310\n0102\n", "Error: group 93 announces sound that is not there, status 51",
                false},
        Refused{" 90\n1\n 93\n-1\n310\n0102\n", "Error: group 93 announces sound that is not there, status 51"},
        Refused{" 90\n1\n 93\n2\n310\n01xx\n", "group 310 holds no hexadecimal bytes, status 51", false}));

TEST_F(NoteRefusalTest, AStreamThatIsRefusedIsKeptAndItsObjectNamed) {
    const MxDbObjectId id = addNote(kPointNote, {1, 2, 3});
    note(id).setAudioData(soundBytes(300));
    note(id).setAudioDataSize(300);
    write(database(), "a.merix");
    const merix::db::ReadAccess readable(note(id));
    merix::db::DwgWriter base(MxDbFilerType::kFile, &database());
    note(id).MxDbEntity::dwgOutFields(&base);
    const std::size_t version = base.take().size() + 1;
    const std::string whole = merix::db::dwgImage(note(id), MxDbFilerType::kFile);
    const std::size_t count = whole.find(std::string("\x2C\x01\0\0", 4));
    ASSERT_NE(count, std::string::npos);
    struct Case {
        std::size_t at;
        char byte;
        const char* why;
    };
    for (const Case& damage :
         {Case{version, 2, "status 301"}, Case{count, 0x2D, "status "}, Case{count + 3, '\xFF', "status "}}) {
        std::string stream = whole;
        stream[damage.at] = damage.byte;
        const auto handle = static_cast<std::int64_t>(id.handle().value());
        {
            merix::io::SqliteFile file(pathOf("a.merix"), merix::io::SqliteFile::Mode::kReadWrite);
            merix::io::SqliteStatement row(file, "UPDATE object SET stream = ? WHERE handle = ?");
            row.bindBlob(1, stream).bind(2, handle).execute();
        }
        for (int round = 0; round < 2; ++round) { // what is kept is refused again
            const auto drawing = read("a.merix");
            ASSERT_EQ(said.size(), 1U);
            EXPECT_THAT(said[0], HasSubstr("PHONOMARK is kept as it came: " + std::string(damage.why)));
            EXPECT_THAT(said[0], HasSubstr("a.merix: object "));
            auto* kept = dynamic_cast<merix::db::KeptEntity*>(find(*drawing, id.handle()));
            ASSERT_TRUE(kept);
            EXPECT_EQ(kept->image, stream);
            write(*drawing, "b.merix");
            QFile::remove(QString::fromStdString(pathOf("a.merix")));
            ASSERT_TRUE(
                QFile::rename(QString::fromStdString(pathOf("b.merix")), QString::fromStdString(pathOf("a.merix"))));
        }
    }
}

TEST_F(NoteRefusalTest, ATextOfAnyBytesIsReadAndStaysWhenTheNoteIsChanged) {
    for (const std::string& value :
         {std::string("before\0behind", 13), std::string("\xED\xA0\x80 a surrogate"), std::string("\xFF\xFE\xC0\x80"),
          std::string("\\U+D83D alone"), std::string("\\U+DE00\\U+D83D"), std::string("\\U+0000^@^ ^J"),
          std::string(1'000'000, 'x')}) {
        const std::string text = drawingWith(" 90\n1\n 70\n0\n 10\n1.0\n 20\n2.0\n 30\n0.0\n290\n0\n  1\n" + value +
                                             "\n  2\n" + value + "\n  3\n" + value + "\n");
        auto drawing = readText(text);
        EXPECT_THAT(said, IsEmpty());
        EXPECT_EQ(write(*drawing, "again.dxf"), text);
        write(*drawing, "again.merix");
        drawing = read("again.merix");
        EXPECT_EQ(write(*drawing, "again.dxf", DxfForm::kText), text);

        MxDbPhonomark* open = nullptr;
        ASSERT_EQ(mxdbOpenObject(open, MxDbObjectId(drawing->imp().find(m_changed)), Mx::kForWrite), Mx::eOk);
        open->assertWriteEnabled();
        open->setPosition({7, 2, 0});
        open->close();
        std::string moved = text;
        const std::size_t x = moved.find(" 10\n1.0\n", moved.rfind(kNoteRecord));
        EXPECT_EQ(write(*drawing, "moved.dxf", DxfForm::kText), moved.replace(x, 8, " 10\n7.0\n"));
        for (const MxDbObjectId& id : listed())
            livePhManager()->ErasePhonomark(id, &document());
    }
}

TEST_F(NoteRefusalTest, AZeroByteKeepsADrawingFromBecomingBinaryAndIsNamed) {
    const auto drawing = readText(drawingWith(" 90\n1\n  1\n" + std::string("a\0b", 3) + "\n"));
    const auto result = merix::io::writeDrawing(pathOf("binary.dxf"), *drawing, DxfForm::kBinary);
    EXPECT_EQ(result.status, Mx::eFileUnwritable);
    EXPECT_THAT(result.error, AllOf(HasSubstr("PHONOMARK"), EndsWith("group 1 \"a?b\" holds a zero byte")));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(pathOf("binary.dxf"))));
}

TEST_F(NoteRefusalTest, WhatNamesObjectsThatAreNotThereStaysThroughEverySave) {
    const std::string groups = " 90\n1\n 70\n2\n102\nABCDEF\n290\n0\n  1\nAnna\n  2\n\n  3\n0.0\"\n";
    std::string text = drawingWith(groups);
    const std::string head = "  5\n" + [&] {
        wchar_t digits[17];
        m_changed.getIntoAsciiBuffer(digits);
        return std::string(digits, digits + std::wcslen(digits));
    }() + "\n";
    const std::size_t at = text.find(head, text.rfind(kNoteRecord)) + head.size();
    text.insert(at, "102\n{ACAD_XDICTIONARY\n360\nABCDE1\n102\n}\n102\n{ACAD_"
                    "REACTORS\n330\nABCDE2\n330\nFFFFFFFFFFFFFFFE\n102\n}\n");
    auto drawing = readText(text);
    EXPECT_THAT(said, IsEmpty());
    EXPECT_EQ(write(*drawing, "again.dxf"), text);
    write(*drawing, "a.merix");
    drawing = read("a.merix");
    EXPECT_THAT(said, IsEmpty());
    write(*drawing, "b.dxf", DxfForm::kBinary);
    drawing = read("b.dxf");
    auto* attached = static_cast<MxDbPhonomark*>(find(*drawing, m_changed));
    ASSERT_TRUE(attached);
    EXPECT_EQ(attached->attachObj().handle(), MxDbHandle(0xABCDEF));
    EXPECT_EQ(write(*drawing, "again.dxf", DxfForm::kText), text);

    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, attached->objectId(), Mx::kForWrite), Mx::eOk);
    open->assertWriteEnabled();
    open->setSpokesman(L"Bert");
    open->close();
    std::string changed = text;
    changed.replace(changed.find("Anna", at), 4, "Bert");
    EXPECT_EQ(write(*drawing, "again.dxf", DxfForm::kText), changed);
    // Once more by the streams alone, which a changed note is filed as.
    write(*drawing, "c.merix");
    drawing = read("c.merix");
    auto* streamed = static_cast<MxDbPhonomark*>(find(*drawing, m_changed));
    ASSERT_TRUE(streamed);
    EXPECT_EQ(streamed->attachObj().handle(), MxDbHandle(0xABCDEF));
    EXPECT_EQ(streamed->data().extensionDictionary.handle(), MxDbHandle(0xABCDE1));
    ASSERT_EQ(streamed->reactors().size(), 2U);
    EXPECT_EQ(streamed->reactors()[1].persistent.handle(), MxDbHandle(0xFFFFFFFFFFFFFFFE));
    EXPECT_EQ(write(*drawing, "again.dxf", DxfForm::kText), changed);
}
