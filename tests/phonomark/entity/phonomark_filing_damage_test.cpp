// SPDX-License-Identifier: MIT
// Records that are not as a note writes them: newer, cut short, out of order, or claiming what is not there.
#include "tests/phonomark/entity/filing_fixture.h"

#include <algorithm>
#include <sys/resource.h>

using merix::db::DwgWriter;

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

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // their allocators end the process instead

TEST_F(FilingTest, SoundThatThereIsNoMemoryForIsUnreadable) {
    class BoundlessReader : public merix::db::DwgReader {
    public:
        using DwgReader::DwgReader;
        std::uint64_t bytesLeft() const override { return std::uint64_t{1} << 40; }
    };
    MxDbPhonomark before, after;
    DwgWriter writer(MxDbFilerType::kFile, &database());
    before.MxDbEntity::dwgOutFields(&writer);
    writer.writeUInt32(1);
    writer.writeInt16(0);
    writer.writePoint3d({4, 5, 6});
    writer.writeBool(true);
    before.dwgOutWaveFormatData(&writer);
    writer.writeUInt32(0xFFFFFFFF);
    const std::string stream = writer.take();
    BoundlessReader reader(stream, MxDbFilerType::kFile, &database());
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
    const rlimit less{std::min<rlim_t>(limit.rlim_max, rlim_t{3} << 30), limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &less), 0);
    const Mx::ErrorStatus status = after.dwgInFields(&reader);
    setrlimit(RLIMIT_AS, &limit);
    EXPECT_EQ(status, Mx::eItemUnreadable);
    EXPECT_EQ(after.getAudioData(), nullptr);
    EXPECT_EQ(after.getAudioDataSize(), 0U);
}

#endif

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

TEST_F(FilingTest, TheLastAnnouncementCountsAndChunksBeginAnew) {
    MxDbPhonomark after;
    EXPECT_EQ(readDxf(after, note1({{93, "3"}, {310, "010203"}, {93, "2"}, {310, "0405"}})).status, Mx::eOk);
    ASSERT_EQ(after.getAudioDataSize(), 2U);
    EXPECT_EQ(std::memcmp(after.getAudioData(), "\4\5\0", 3), 0);
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

TEST_F(FilingTest, AGroupThatTheReaderCannotReadKeepsItsOwnMessage) {
    MxDbPhonomark after;
    const auto result = readDxf(after, note1({{70, "1"}, {11, "4"}, {93, "9000000"}, {310, "no bytes"}, {12, "1"}}));
    EXPECT_EQ(result.status, 51);
    EXPECT_EQ(result.filerStatus, 51);
    EXPECT_EQ(result.message, L"group 310 holds no hexadecimal bytes");
    EXPECT_EQ(after.extents().minPoint(), MxGePoint3d(4, 0, 0));
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
