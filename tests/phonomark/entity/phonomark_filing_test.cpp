// SPDX-License-Identifier: MIT
// What a note files in the binary stream and as DXF groups, and what comes back.
#include "phonomark/entity/phonomark.h"

#include "tests/phonomark/entity/filing_fixture.h"

using merix::db::DwgWriter;

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

/// The items that a note writes after its base.
std::vector<std::string> items(MxDbDatabase& database, const MxDbPhonomark& from) {
    RecordingWriter base(MxDbFilerType::kFile, &database), whole(MxDbFilerType::kFile, &database);
    from.MxDbEntity::dwgOutFields(&base);
    from.dwgOutFields(&whole);
    return {whole.items.begin() + static_cast<std::ptrdiff_t>(base.items.size()), whole.items.end()};
}

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
    EXPECT_THAT(items(database(), recorded),
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
    EXPECT_THAT(items(database(), silent),
                ::testing::ElementsAre("UInt32 1", "Int16 0", "Point 0", "Bool 0", "String 0", "String 0", "String 4"));
    EXPECT_THAT(codes(groups(silent)), ::testing::ElementsAre(100, 90, 70, 10, 20, 30, 290, 1, 2, 3));
}

TEST_F(FilingTest, ARecordMarkWithoutABufferFilesAnEmptyRecording) {
    MxDbPhonomark marked;
    fill(marked);
    marked.delAudioData();
    const auto binary = items(database(), marked);
    EXPECT_THAT(binary, ::testing::Contains("UInt32 0"));
    EXPECT_THAT(binary, ::testing::Contains("Bytes 0"));
    const auto dxfGroups = groups(marked);
    EXPECT_THAT(codes(dxfGroups),
                ::testing::ElementsAre(100, 90, 70, 10, 20, 30, 290, 71, 72, 91, 92, 73, 74, 75, 93, 310, 1, 2, 3));
    EXPECT_EQ(dxfGroups[14], "93 0") << "the size of the last recording is not announced";
    EXPECT_EQ(dxfGroups[15], "310 ");
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, dxf(marked)).status, Mx::eOk);
    EXPECT_TRUE(after.isRecord());
    EXPECT_EQ(after.getAudioDataSize(), 0u);
}

TEST_F(FilingTest, AllEighteenBytesOfTheWaveFormatAreFiled) {
    tWAVEFORMATEX format;
    for (unsigned char i = 0; i < 18; ++i)
        reinterpret_cast<unsigned char*>(&format)[i] = static_cast<unsigned char>(0xF1 - i);
    MxDbPhonomark before;
    fill(before);
    before.setWaveFormat(&format);
    const auto expectFormat = [&](const MxDbPhonomark& note) {
        tWAVEFORMATEX read;
        note.getWaveFormat(read);
        EXPECT_EQ(std::memcmp(&read, &format, 18), 0);
    };
    MxDbPhonomark binary, text;
    EXPECT_EQ(readDwg(binary, dwg(before)), Mx::eOk);
    expectFormat(binary);
    EXPECT_EQ(readDxf(text, dxf(before)).status, Mx::eOk);
    expectFormat(text);
    EXPECT_THAT(items(database(), before),
                ::testing::IsSupersetOf({"UInt16 61681", "UInt16 61167", "UInt32 3941330157", "UInt32 3873958121",
                                         "UInt16 58597", "UInt16 58083", "UInt16 57569"}));
}

TEST_F(FilingTest, ARecordingOfNoBytesIsOneEmptyChunk) {
    MxDbPhonomark empty, after;
    fill(empty, 0);
    EXPECT_THAT(items(database(), empty), ::testing::IsSupersetOf({"UInt32 0", "Bytes 0"}));
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

TEST_F(FilingTest, ATypeOutsideTheKnownFilesNoLocation) {
    for (const int type : {4, -1, 77}) {
        MxDbPhonomark before, after, text;
        before.setPhonomarkType(type);
        before.setPosition({1, 2, 3});
        EXPECT_EQ(items(database(), before)[2], "Bool 0");
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

TEST_F(FilingTest, TheExtraBytesThatAFormatAnnouncesAreNotFiled) {
    MxDbPhonomark before, after;
    fill(before, 5);
    tWAVEFORMATEX format;
    before.getWaveFormat(format);
    ASSERT_EQ(format.cbSize, 9);
    EXPECT_THAT(items(database(), before), ::testing::IsSupersetOf({"UInt16 9", "UInt32 5", "Bytes 5"}));
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
