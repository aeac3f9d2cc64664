// SPDX-License-Identifier: MIT
#include "phonomark/entity/phonomark.h"

#include "merix/db/dwg_filer.h"
#include "merix/io/dxf_in_filer.h"
#include "merix/io/dxf_out_filer.h"
#include "tests/phonomark/module_fixture.h"

#include <cstring>
#include <numeric>

using merix::db::DwgReader;
using merix::db::DwgWriter;
using merix::io::DxfInFiler;
using merix::io::DxfOutFiler;
using merix::io::DxfOutTag;

namespace {

/// Byte runs and counts of the items in a binary stream, recorded while they are written.
class RecordingWriter : public DwgWriter {
public:
    using DwgWriter::DwgWriter;
    Mx::ErrorStatus writeBool(bool value) override { return note("Bool", value), DwgWriter::writeBool(value); }
    Mx::ErrorStatus writeInt16(std::int16_t value) override {
        return note("Int16", value), DwgWriter::writeInt16(value);
    }
    Mx::ErrorStatus writeUInt16(std::uint16_t value) override {
        return note("UInt16", value), DwgWriter::writeUInt16(value);
    }
    Mx::ErrorStatus writeUInt32(std::uint32_t value) override {
        return note("UInt32", value), DwgWriter::writeUInt32(value);
    }
    Mx::ErrorStatus writePoint3d(const MxGePoint3d& value) override {
        return note("Point", static_cast<std::uint64_t>(value.x)), DwgWriter::writePoint3d(value);
    }
    Mx::ErrorStatus writeHandle(const MxDbHandle& value) override {
        return note("Handle", value.value()), DwgWriter::writeHandle(value);
    }
    Mx::ErrorStatus writeString(const wchar_t* value) override {
        return note("String", std::wcslen(value)), DwgWriter::writeString(value);
    }
    Mx::ErrorStatus writeBytes(const void* bytes, std::size_t count) override {
        return note("Bytes", count), DwgWriter::writeBytes(bytes, count);
    }

    std::vector<std::string> items;

private:
    template <class T> void note(const char* kind, T value) {
        items.push_back(std::string(kind) + " " + std::to_string(value));
    }
};

class FilingTest : public ModuleTest {
protected:
    /// A recorded Point note with everything set.
    static void fill(MxDbPhonomark& filled, std::size_t size = 200) {
        tWAVEFORMATEX format;
        format.wFormatTag = 1;
        format.nChannels = 2;
        format.nSamplesPerSec = 40000;
        format.nAvgBytesPerSec = 0xFEDCBA98;
        format.nBlockAlign = 0xFEDC;
        format.wBitsPerSample = 8;
        format.cbSize = 9;
        filled.setPosition({1, 2, 3});
        filled.setAudioData(soundBytes(size));
        filled.setAudioDataSize(static_cast<unsigned>(size));
        filled.setWaveFormat(&format);
        filled.setSpokesman(L"Anna \u5f20");
        filled.setDatatime(L"2026/3/7 9:5:0");
        filled.setDuration(L"2.4\"");
    }

    std::string dwg(const MxDbPhonomark& from, MxDbFilerType type = MxDbFilerType::kFile) {
        DwgWriter writer(type, &database());
        EXPECT_EQ(from.dwgOutFields(&writer), Mx::eOk);
        return writer.take();
    }
    Mx::ErrorStatus readDwg(MxDbPhonomark& into, std::string_view stream, MxDbFilerType type = MxDbFilerType::kFile) {
        DwgReader reader(stream, type, &database());
        return into.dwgInFields(&reader);
    }
    /// The items that a note writes after its base.
    std::vector<std::string> items(const MxDbPhonomark& from) {
        RecordingWriter base(MxDbFilerType::kFile, &database()), whole(MxDbFilerType::kFile, &database());
        from.MxDbEntity::dwgOutFields(&base);
        from.dwgOutFields(&whole);
        return {whole.items.begin() + static_cast<std::ptrdiff_t>(base.items.size()), whole.items.end()};
    }

    std::vector<DxfOutTag> dxf(const MxDbPhonomark& from) {
        DxfOutFiler filer(database(), m_encoding);
        EXPECT_EQ(from.dxfOutFields(&filer), Mx::eOk);
        return filer.takeTags();
    }
    /// The groups from the note's subclass marker on, as "code value".
    std::vector<std::string> groups(const MxDbPhonomark& from) {
        std::vector<std::string> result;
        for (const DxfOutTag& tag : dxf(from)) {
            if (tag.code == 100 && tag.value == "MxDbPhonomark")
                result.clear();
            result.push_back(std::to_string(tag.code) + " " + tag.value);
        }
        return result;
    }
    static std::vector<int> codes(const std::vector<std::string>& groups) {
        std::vector<int> result;
        for (const std::string& group : groups)
            result.push_back(std::stoi(group));
        return result;
    }
    /// Lengths of the binary chunks.
    std::vector<std::size_t> chunks(std::size_t size) {
        MxDbPhonomark sized;
        fill(sized, size);
        std::vector<std::size_t> lengths;
        for (const DxfOutTag& tag : dxf(sized))
            if (tag.code == 310)
                lengths.push_back(tag.value.size() / 2);
        return lengths;
    }

    struct DxfResult {
        Mx::ErrorStatus status, filerStatus;
        std::wstring message;
    };
    DxfResult readDxf(MxDbPhonomark& into, const std::vector<DxfOutTag>& tags) {
        std::vector<merix::io::DxfTag> views;
        for (const DxfOutTag& tag : tags)
            views.push_back({tag.code, tag.value, {}});
        DxfInFiler filer(database(), m_encoding, views);
        const Mx::ErrorStatus status = into.dxfInFields(&filer);
        return {status, filer.filerStatus(), filer.message()};
    }
    /// The groups of an entity up to the note's own, then these.
    std::vector<DxfOutTag> withBase(const std::vector<DxfOutTag>& own) {
        std::vector<DxfOutTag> tags;
        for (const DxfOutTag& tag : dxf(MxDbPhonomark())) {
            if (tag.code == 100 && tag.value == "MxDbPhonomark")
                break;
            tags.push_back(tag);
        }
        tags.insert(tags.end(), own.begin(), own.end());
        return tags;
    }
    std::vector<DxfOutTag> note1(const std::vector<DxfOutTag>& own) {
        std::vector<DxfOutTag> tags{{100, "MxDbPhonomark"}, {90, "1"}};
        tags.insert(tags.end(), own.begin(), own.end());
        return withBase(tags);
    }

    static void expectSame(const MxDbPhonomark& a, const MxDbPhonomark& b) {
        CStdStr<wchar_t> textA, textB;
        tWAVEFORMATEX formatA, formatB;
        EXPECT_EQ(a.getPhonomarkType(), b.getPhonomarkType());
        EXPECT_EQ(a.position(), b.position());
        EXPECT_EQ(a.isRecord(), b.isRecord());
        EXPECT_EQ(a.getAudioDataSize(), b.getAudioDataSize());
        a.getWaveFormat(formatA), b.getWaveFormat(formatB);
        EXPECT_EQ(std::memcmp(&formatA, &formatB, sizeof formatA), 0);
        ASSERT_EQ(a.getAudioData() != nullptr, b.getAudioData() != nullptr);
        if (a.getAudioData()) {
            EXPECT_EQ(std::memcmp(a.getAudioData(), b.getAudioData(), a.getAudioDataSize() + 1), 0);
        }
        a.getSpokesman(textA), b.getSpokesman(textB);
        EXPECT_EQ(textA, textB);
        a.getDatatime(textA), b.getDatatime(textB);
        EXPECT_EQ(textA, textB);
        a.getDuration(textA), b.getDuration(textB);
        EXPECT_EQ(textA, textB);
    }

    merix::io::DxfEncoding m_encoding{"AC1032", "ANSI_1252"};
};

} // namespace

TEST_F(FilingTest, ARecordedNoteIsTheSameAfterTheBinaryForm) {
    MxDbPhonomark before, after;
    fill(before);
    EXPECT_EQ(readDwg(after, dwg(before)), Mx::eOk);
    expectSame(before, after);
}

TEST_F(FilingTest, ARecordedNoteIsTheSameAfterDxf) {
    MxDbPhonomark before, after;
    fill(before);
    EXPECT_EQ(readDxf(after, dxf(before)).status, Mx::eOk);
    expectSame(before, after);
}

TEST_F(FilingTest, TheBinaryItemsComeInTheirOrder) {
    MxDbPhonomark recorded;
    fill(recorded);
    EXPECT_THAT(items(recorded),
                ::testing::ElementsAre("UInt32 1", "Int16 0", "Point 1", "Bool 1", "UInt16 1", "UInt16 2",
                                       "UInt32 40000", "UInt32 4275878552", "UInt16 65244", "UInt16 8", "UInt16 9",
                                       "UInt32 200", "Bytes 200", "String 6", "String 14", "String 4"));
}

TEST_F(FilingTest, TheDxfGroupsComeInTheirOrder) {
    MxDbPhonomark recorded;
    fill(recorded, 3);
    EXPECT_THAT(codes(groups(recorded)),
                ::testing::ElementsAre(100, 90, 70, 10, 20, 30, 290, 71, 72, 91, 92, 73, 74, 75, 93, 310, 1, 2, 3));
}

TEST_F(FilingTest, ANoteWithoutRecordingFilesNoSound) {
    MxDbPhonomark silent;
    EXPECT_THAT(items(silent),
                ::testing::ElementsAre("UInt32 1", "Int16 0", "Point 0", "Bool 0", "String 0", "String 0", "String 4"));
    EXPECT_THAT(codes(groups(silent)), ::testing::ElementsAre(100, 90, 70, 10, 20, 30, 290, 1, 2, 3));
}

TEST_F(FilingTest, ARecordMarkWithoutABufferFilesAnEmptyRecording) {
    MxDbPhonomark marked;
    fill(marked);
    marked.delAudioData();
    const auto binary = items(marked);
    EXPECT_THAT(binary, ::testing::Contains("UInt32 0"));
    EXPECT_THAT(binary, ::testing::Contains("Bytes 0"));
    const auto dxfGroups = groups(marked);
    EXPECT_THAT(codes(dxfGroups),
                ::testing::ElementsAre(100, 90, 70, 10, 20, 30, 290, 71, 72, 91, 92, 73, 74, 75, 93, 310, 1, 2, 3));
    EXPECT_EQ(dxfGroups[15], "310 ");
}

TEST_F(FilingTest, ARecordingOfNoBytesIsOneEmptyChunk) {
    MxDbPhonomark empty, after;
    fill(empty, 0);
    EXPECT_THAT(items(empty), ::testing::IsSupersetOf({"UInt32 0", "Bytes 0"}));
    EXPECT_EQ(chunks(0), std::vector<std::size_t>{0});
    EXPECT_EQ(readDwg(after, dwg(empty)), Mx::eOk);
    ASSERT_TRUE(after.getAudioData());
    EXPECT_EQ(after.getAudioData()[0], 0);
    EXPECT_EQ(readDxf(after, dxf(empty)).status, Mx::eOk);
    EXPECT_TRUE(after.getAudioData());
    EXPECT_EQ(after.getAudioDataSize(), 0u);
}

TEST_F(FilingTest, SoundIsCutIntoChunksOfOneHundredAndTwentySeven) {
    using Lengths = std::vector<std::size_t>;
    EXPECT_EQ(chunks(1), Lengths({1}));
    EXPECT_EQ(chunks(127), Lengths({127}));
    EXPECT_EQ(chunks(128), Lengths({127, 1}));
    EXPECT_EQ(chunks(254), Lengths({127, 127}));
    EXPECT_EQ(chunks(255), Lengths({127, 127, 1}));
}

TEST_F(FilingTest, ABinaryRecordOfANewerVersionIsRefused) {
    for (const std::uint32_t version : {0u, 1u, 2u, 0xFFFFFFFFu}) {
        MxDbPhonomark base, after;
        DwgWriter writer(MxDbFilerType::kFile, &database());
        base.MxDbEntity::dwgOutFields(&writer);
        writer.writeUInt32(version);
        writer.writeInt16(0);
        writer.writePoint3d({4, 5, 6});
        writer.writeBool(false);
        for (int i = 0; i < 3; ++i)
            writer.writeString(L"text");
        EXPECT_EQ(readDwg(after, writer.take()), version > 1 ? 301 : 0) << version;
        EXPECT_EQ(after.position(), version > 1 ? MxGePoint3d() : MxGePoint3d(4, 5, 6));
    }
}

TEST_F(FilingTest, ADxfRecordOfANewerVersionIsRefused) {
    for (const char* version : {"2", "2147483647", "-1"}) {
        MxDbPhonomark after;
        EXPECT_EQ(readDxf(after, withBase({{100, "MxDbPhonomark"}, {90, version}, {1, "Anna"}})).status, 301);
        CStdStr<wchar_t> speaker;
        after.getSpokesman(speaker);
        EXPECT_EQ(speaker, L"");
    }
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, withBase({{100, "MxDbPhonomark"}, {90, "0"}, {1, "Anna"}})).status, Mx::eOk);
}

TEST_F(FilingTest, ADxfRecordWithoutItsVersionIsRefusedWithAMessage) {
    MxDbPhonomark after;
    const auto missing = readDxf(after, withBase({{100, "MxDbPhonomark"}, {70, "0"}}));
    EXPECT_EQ(missing.status, 50);
    EXPECT_EQ(missing.message, L"\nError: expected group code 90 (version #)");
    EXPECT_EQ(readDxf(after, withBase({{100, "MxDbPhonomark"}})).status, 50);
}

TEST_F(FilingTest, ADxfRecordOfAnotherSubclassIsLeftAlone) {
    MxDbPhonomark after;
    readDxf(after, withBase({{100, "MxDbOther"}, {90, "1"}, {10, "5"}, {20, "5"}, {30, "5"}}));
    EXPECT_EQ(after.position(), MxGePoint3d());
}

TEST_F(FilingTest, ATypeOutsideTheKnownFilesNoLocation) {
    for (const int type : {4, -1, 77}) {
        MxDbPhonomark before, after, text;
        before.setPhonomarkType(type);
        before.setPosition({1, 2, 3});
        EXPECT_EQ(items(before)[2], "Bool 0");
        EXPECT_EQ(readDwg(after, dwg(before)), Mx::eOk);
        EXPECT_EQ(after.getPhonomarkType(), type);
        EXPECT_EQ(after.position(), MxGePoint3d());
        EXPECT_THAT(codes(groups(before)), ::testing::ElementsAre(100, 90, 70, 290, 1, 2, 3));
        EXPECT_EQ(readDxf(text, dxf(before)).status, Mx::eOk);
        EXPECT_EQ(text.getPhonomarkType(), type);
        EXPECT_EQ(text.position(), MxGePoint3d());
    }
}

TEST_F(FilingTest, ARegionKeepsItsCornersInBothForms) {
    MxDbPhonomark before, binary, text;
    before.setPhonomarkType(kRegionNote);
    before.setExtents(MxDbExtents({1, 2, 3}, {4, 5, 6}));
    EXPECT_EQ(readDwg(binary, dwg(before)), Mx::eOk);
    EXPECT_EQ(readDxf(text, dxf(before)).status, Mx::eOk);
    for (const MxDbPhonomark* after : {&binary, &text}) {
        EXPECT_EQ(after->extents().minPoint(), MxGePoint3d(1, 2, 3));
        EXPECT_EQ(after->extents().maxPoint(), MxGePoint3d(4, 5, 6));
    }
}

TEST_F(FilingTest, CornersThatADxfRegionLacksLieAtTheOrigin) {
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, note1({{70, "1"}, {12, "4"}, {22, "5"}, {32, "6"}})).status, Mx::eOk);
    EXPECT_EQ(after.extents().minPoint(), MxGePoint3d());
    EXPECT_EQ(after.extents().maxPoint(), MxGePoint3d(4, 5, 6));
}

TEST_F(FilingTest, AnObjectNoteTakesTheObjectsExtentsOverWhenReadFromAFile) {
    const MxDbObjectId line = addLine();
    MxDbPhonomark before;
    before.setPhonomarkType(kObjectNote);
    before.setAttachObj(line);
    MxDbPhonomark fromFile, fromUndo, fromDxf;
    EXPECT_EQ(readDwg(fromFile, dwg(before)), Mx::eOk);
    EXPECT_EQ(readDwg(fromUndo, dwg(before, MxDbFilerType::kUndo), MxDbFilerType::kUndo), Mx::eOk);
    EXPECT_EQ(readDxf(fromDxf, dxf(before)).status, Mx::eOk);
    for (const MxDbPhonomark* after : {&fromFile, &fromUndo, &fromDxf})
        EXPECT_EQ(after->attachObj(), line);
    EXPECT_EQ(fromFile.extents().maxPoint(), MxGePoint3d(10, 5, 0));
    EXPECT_TRUE(fromUndo.extents().isEmpty());
    EXPECT_EQ(fromDxf.extents().maxPoint(), MxGePoint3d(10, 5, 0));
}

TEST_F(FilingTest, AReplyKeepsItsNoteInTheBinaryFormAlone) {
    MxDbPhonomark before, binary, text;
    before.setPhonomarkType(kReplyNote);
    before.setReplyTo(addNote());
    EXPECT_EQ(readDwg(binary, dwg(before)), Mx::eOk);
    EXPECT_EQ(binary.replyTo(), before.replyTo());
    EXPECT_THAT(codes(groups(before)), ::testing::ElementsAre(100, 90, 70, 290, 1, 2, 3));
    EXPECT_EQ(readDxf(text, dxf(before)).status, Mx::eOk);
    EXPECT_TRUE(text.replyTo().isNull());
}

TEST_F(FilingTest, OneZeroByteStandsBehindTheSound) {
    MxDbPhonomark before, after;
    fill(before, 130);
    EXPECT_EQ(readDwg(after, dwg(before)), Mx::eOk);
    EXPECT_EQ(after.getAudioData()[129], 130);
    EXPECT_EQ(after.getAudioData()[130], 0);
    EXPECT_EQ(readDxf(after, dxf(before)).status, Mx::eOk);
    EXPECT_EQ(after.getAudioData()[129], 130);
    EXPECT_EQ(after.getAudioData()[130], 0);
}

TEST_F(FilingTest, ASilentBinaryRecordLeavesTheBufferAsItIs) {
    MxDbPhonomark silent, after;
    fill(after, 5);
    EXPECT_EQ(readDwg(after, dwg(silent)), Mx::eOk);
    EXPECT_FALSE(after.isRecord());
    ASSERT_TRUE(after.getAudioData());
    EXPECT_EQ(after.getAudioData()[4], 5);
}

TEST_F(FilingTest, ADxfRecordReplacesTheBuffer) {
    MxDbPhonomark silent, after;
    fill(after, 5);
    EXPECT_EQ(readDxf(after, dxf(silent)).status, Mx::eOk);
    EXPECT_EQ(after.getAudioData(), nullptr);
}

TEST_F(FilingTest, ATruncatedBinaryRecordGivesTheFilersStatus) {
    MxDbPhonomark before;
    fill(before);
    const std::string stream = dwg(before);
    for (std::size_t length = 0; length < stream.size(); ++length) {
        MxDbPhonomark after;
        EXPECT_NE(readDwg(after, std::string_view(stream).substr(0, length)), Mx::eOk) << length;
    }
}

TEST_F(FilingTest, ACountBeyondTheStreamAllocatesNothing) {
    MxDbPhonomark before, after;
    fill(before, 0x1234); // a number that stands nowhere else in the stream
    std::string stream = dwg(before);
    const char count[] = {0x34, 0x12, 0, 0};
    const auto at = stream.find(std::string(count, 4));
    ASSERT_NE(at, std::string::npos);
    stream.replace(at, 4, "\xff\xff\xff\xff");
    EXPECT_NE(readDwg(after, stream), Mx::eOk);
    EXPECT_EQ(after.getAudioData(), nullptr);
    EXPECT_EQ(after.getAudioDataSize(), 0u);
}

TEST_F(FilingTest, SoundBeforeItsSizeIsUnreadable) {
    MxDbPhonomark after;
    const auto result = readDxf(after, note1({{290, "1"}, {310, "0102"}, {93, "2"}}));
    EXPECT_EQ(result.status, 51);
    EXPECT_NE(result.message, L"");
    EXPECT_EQ(after.getAudioData(), nullptr);
}

TEST_F(FilingTest, MoreSoundThanAnnouncedIsUnreadable) {
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, note1({{93, "3"}, {310, "0102"}, {310, "0304"}})).status, 51);
    EXPECT_EQ(readDxf(after, note1({{93, "0"}, {310, "01"}})).status, 51);
    EXPECT_EQ(readDxf(after, note1({{93, "4"}, {310, "0102"}, {310, "0304"}})).status, Mx::eOk);
    EXPECT_EQ(after.getAudioData()[3], 4);
}

TEST_F(FilingTest, LessSoundThanAnnouncedIsFilledUpWithZeros) {
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, note1({{93, "4"}, {310, "0102"}})).status, Mx::eOk);
    EXPECT_EQ(after.getAudioDataSize(), 4u);
    EXPECT_EQ(std::memcmp(after.getAudioData(), "\1\2\0\0\0", 5), 0);
}

TEST_F(FilingTest, AnAnnouncementBeyondAnyRecordingIsUnreadable) {
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, note1({{93, "2147483647"}, {310, "0102"}})).status, 51);
    EXPECT_EQ(readDxf(after, note1({{93, "-1"}, {310, "0102"}})).status, 51);
    EXPECT_EQ(after.getAudioData(), nullptr);
}

TEST_F(FilingTest, AnUnknownGroupEndsTheNotesOwn) {
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, note1({{70, "0"}, {1, "Anna"}, {99, "7"}, {2, "never"}})).status, Mx::eOk);
    CStdStr<wchar_t> text;
    after.getSpokesman(text);
    EXPECT_EQ(text, L"Anna");
    after.getDatatime(text);
    EXPECT_EQ(text, L"");
}

TEST_F(FilingTest, SixteenBitGroupsMayBeWrittenWithoutTheirSign) {
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, note1({{71, "65534"}, {72, "65535"}, {73, "40000"}, {74, "32768"}, {75, "-2"}, {93, "0"}}))
                  .status,
              Mx::eOk);
    tWAVEFORMATEX format;
    after.getWaveFormat(format);
    EXPECT_EQ(format.wFormatTag, 65534);
    EXPECT_EQ(format.nChannels, 65535);
    EXPECT_EQ(format.nBlockAlign, 40000);
    EXPECT_EQ(format.wBitsPerSample, 32768);
    EXPECT_EQ(format.cbSize, 65534);
}

TEST_F(FilingTest, AGroupThatTheReaderCannotReadKeepsItsOwnMessage) {
    MxDbPhonomark after;
    const auto result = readDxf(after, note1({{70, "1"}, {11, "4"}, {93, "9000000"}, {310, "no bytes"}, {12, "1"}}));
    EXPECT_EQ(result.status, 51);
    EXPECT_EQ(result.filerStatus, 51);
    EXPECT_EQ(result.message, L"group 310 holds no hexadecimal bytes");
    EXPECT_EQ(after.extents().minPoint(), MxGePoint3d(4, 0, 0));
}

namespace {

/// Accepts this many items and refuses the next; counts what it is asked to write afterwards.
class FailingDwgWriter : public DwgWriter {
public:
    FailingDwgWriter(MxDbDatabase* database, std::size_t accepted)
        : DwgWriter(MxDbFilerType::kFile, database)
        , m_left(accepted) {}
    Mx::ErrorStatus filerStatus() const override { return m_failed ? Mx::eFileUnwritable : DwgWriter::filerStatus(); }
    Mx::ErrorStatus writeBool(bool value) override { return fails() ? refuse() : DwgWriter::writeBool(value); }
    Mx::ErrorStatus writeInt16(std::int16_t value) override {
        return fails() ? refuse() : DwgWriter::writeInt16(value);
    }
    Mx::ErrorStatus writeUInt16(std::uint16_t value) override {
        return fails() ? refuse() : DwgWriter::writeUInt16(value);
    }
    Mx::ErrorStatus writeUInt32(std::uint32_t value) override {
        return fails() ? refuse() : DwgWriter::writeUInt32(value);
    }
    Mx::ErrorStatus writeDouble(double value) override { return fails() ? refuse() : DwgWriter::writeDouble(value); }
    Mx::ErrorStatus writePoint3d(const MxGePoint3d& value) override {
        return fails() ? refuse() : DwgWriter::writePoint3d(value);
    }
    Mx::ErrorStatus writeString(const wchar_t* value) override {
        return fails() ? refuse() : DwgWriter::writeString(value);
    }
    Mx::ErrorStatus writeBytes(const void* bytes, std::size_t count) override {
        return fails() ? refuse() : DwgWriter::writeBytes(bytes, count);
    }
    Mx::ErrorStatus writeSoftPointerId(const MxDbObjectId& id) override {
        return fails() ? refuse() : DwgWriter::writeSoftPointerId(id);
    }
    Mx::ErrorStatus writeHardPointerId(const MxDbObjectId& id) override {
        return fails() ? refuse() : DwgWriter::writeHardPointerId(id);
    }
    int askedAfterwards() const { return m_after; }

private:
    bool fails() {
        m_after += m_failed ? 1 : 0;
        m_failed = m_failed || m_left == 0;
        m_left -= m_failed ? 0 : 1;
        return m_failed;
    }
    static Mx::ErrorStatus refuse() { return Mx::eFileUnwritable; }

    std::size_t m_left;
    bool m_failed = false;
    int m_after = 0;
};

class FailingDxfWriter : public DxfOutFiler {
public:
    FailingDxfWriter(MxDbDatabase& database, const merix::io::DxfEncoding& encoding, int code)
        : DxfOutFiler(database, encoding)
        , m_code(code) {}
    Mx::ErrorStatus filerStatus() const override { return m_failed ? Mx::eFileUnwritable : DxfOutFiler::filerStatus(); }
    Mx::ErrorStatus writeString(int code, const wchar_t* value) override {
        return fails(code, value) ? Mx::eFileUnwritable : DxfOutFiler::writeString(code, value);
    }
    Mx::ErrorStatus writeBool(int code, bool value) override {
        return fails(code) ? Mx::eFileUnwritable : DxfOutFiler::writeBool(code, value);
    }
    Mx::ErrorStatus writeInt16(int code, std::int16_t value) override {
        return fails(code) ? Mx::eFileUnwritable : DxfOutFiler::writeInt16(code, value);
    }
    Mx::ErrorStatus writeInt32(int code, std::int32_t value) override {
        return fails(code) ? Mx::eFileUnwritable : DxfOutFiler::writeInt32(code, value);
    }
    int askedAfterwards() const { return m_after; }

private:
    bool fails(int code, const wchar_t* value = L"") {
        m_after += m_failed ? 1 : 0;
        // Of the subclass markers the note's own is meant.
        m_failed = m_failed || (code == m_code && (code != 100 || std::wcscmp(value, L"MxDbPhonomark") == 0));
        return m_failed;
    }

    int m_code;
    bool m_failed = false;
    int m_after = 0;
};

} // namespace

TEST_F(FilingTest, AWriterThatFailsGivesItsStatusWhicheverItemItIs) {
    MxDbPhonomark recorded;
    fill(recorded);
    RecordingWriter counted(MxDbFilerType::kFile, &database());
    FailingDwgWriter base(&database(), 1'000'000);
    recorded.MxDbEntity::dwgOutFields(&base);
    const std::size_t own = 16;
    // The base's items are those that fail before the version is asked for.
    std::size_t first = 0;
    while (true) {
        FailingDwgWriter filer(&database(), first);
        if (recorded.MxDbEntity::dwgOutFields(&filer) == Mx::eOk)
            break;
        EXPECT_EQ(recorded.dwgOutFields(&filer), Mx::eFileUnwritable) << first;
        ++first;
    }
    ASSERT_GT(first, 5U);
    for (std::size_t item = 0; item < own; ++item) {
        FailingDwgWriter filer(&database(), first + item);
        EXPECT_EQ(recorded.dwgOutFields(&filer), Mx::eFileUnwritable) << item;
        EXPECT_EQ(filer.askedAfterwards(), item == 0 ? 0 : static_cast<int>(own - 1 - item))
            << "behind the version, which alone is checked";
    }
    FailingDwgWriter whole(&database(), first + own);
    EXPECT_EQ(recorded.dwgOutFields(&whole), Mx::eOk);
}

TEST_F(FilingTest, ADxfWriterThatFailsGivesItsStatusAndNothingFollowsMarkerOrVersion) {
    MxDbPhonomark recorded;
    fill(recorded);
    for (const int code : {8, 100, 90, 70, 290, 71, 75, 93, 1, 2, 3}) {
        FailingDxfWriter filer(database(), m_encoding, code);
        EXPECT_EQ(recorded.dxfOutFields(&filer), Mx::eFileUnwritable) << code;
        if (code == 100 || code == 90) {
            EXPECT_EQ(filer.askedAfterwards(), 0) << code;
        }
    }
}

TEST_F(FilingTest, AnItemOfAnotherTypeGivesTheFilersStatus) {
    MxDbPhonomark after;
    DwgWriter writer(MxDbFilerType::kFile, &database());
    after.MxDbEntity::dwgOutFields(&writer);
    writer.writeUInt32(1);
    writer.writeString(L"where the type should stand");
    EXPECT_EQ(readDwg(after, writer.take()), Mx::eItemType);
    DwgWriter noVersion(MxDbFilerType::kFile, &database());
    after.MxDbEntity::dwgOutFields(&noVersion);
    noVersion.writeInt16(1);
    EXPECT_EQ(readDwg(after, noVersion.take()), Mx::eItemType);
}

TEST_F(FilingTest, TheExtraBytesThatAFormatAnnouncesAreNotFiled) {
    MxDbPhonomark before, after;
    fill(before, 5);
    tWAVEFORMATEX format;
    before.getWaveFormat(format);
    ASSERT_EQ(format.cbSize, 9);
    EXPECT_THAT(items(before), ::testing::IsSupersetOf({"UInt16 9", "UInt32 5", "Bytes 5"}));
    EXPECT_EQ(readDwg(after, dwg(before)), Mx::eOk);
    EXPECT_EQ(after.getAudioDataSize(), 5U);
}

TEST_F(FilingTest, HandlesNameObjectsOfTheWorkingDrawing) {
    MxDbPhonomark before, binary, text;
    before.setPhonomarkType(kObjectNote);
    before.setAttachObj(addLine());
    const std::string stream = dwg(before);
    const auto tags = dxf(before);
    MxDbDatabase other;
    const merix::db::WorkingDatabaseScope working(&other);
    ASSERT_EQ(readDwg(binary, stream), Mx::eOk);
    ASSERT_EQ(readDxf(text, tags).status, Mx::eOk);
    for (const MxDbPhonomark* note : {&binary, &text}) {
        EXPECT_EQ(note->attachObj().database(), &other);
        EXPECT_EQ(note->attachObj().handle(), before.attachObj().handle());
        EXPECT_TRUE(note->extents().isEmpty()) << "there is no such object: the extents stay as they are";
    }
}

TEST_F(FilingTest, TheLastAnnouncementCountsAndChunksBeginAnew) {
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, note1({{93, "3"}, {310, "010203"}, {93, "2"}, {310, "0405"}})).status, Mx::eOk);
    ASSERT_EQ(after.getAudioDataSize(), 2U);
    EXPECT_EQ(std::memcmp(after.getAudioData(), "\4\5\0", 3), 0);
}
