// SPDX-License-Identifier: MIT
#include "merix/db/dwg_filer.h"

#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace {

using merix::db::DwgReader;
using merix::db::DwgWriter;

constexpr auto kFile = MxDbFilerType::kFile;

std::string sample(Drawing& drawing) {
    DwgWriter writer(kFile, &drawing.database);
    writer.writeBool(true);
    writer.writeInt16(-2);
    writer.writeUInt16(65535);
    writer.writeInt32(std::numeric_limits<std::int32_t>::min());
    writer.writeUInt32(4000000000U);
    writer.writeDouble(0.1);
    writer.writePoint3d({1, 2, 3});
    writer.writeHandle(MxDbHandle(0xABC));
    writer.writeString(L"Größe \U0001F399");
    writer.writeBytes("\0\1\2", 3);
    writer.writeBytes(nullptr, 0);
    writer.writeSoftPointerId(drawing.imp.roots.modelSpace);
    EXPECT_EQ(writer.writeHardPointerId({}), Mx::eOk);
    return writer.take();
}

Mx::ErrorStatus readSample(DwgReader& reader) {
    bool b = false;
    std::int16_t i16 = 0;
    std::uint16_t u16 = 0;
    std::int32_t i32 = 0;
    std::uint32_t u32 = 0;
    double d = 0;
    MxGePoint3d p;
    MxDbHandle h;
    std::wstring s;
    std::array<char, 3> run{};
    MxDbObjectId soft, hard;
    reader.readBool(b);
    reader.readInt16(i16);
    reader.readUInt16(u16);
    reader.readInt32(i32);
    reader.readUInt32(u32);
    reader.readDouble(d);
    reader.readPoint3d(p);
    reader.readHandle(h);
    merix::db::readText(reader, s);
    reader.readBytes(run.data(), 3);
    reader.readBytes(nullptr, 0);
    reader.readSoftPointerId(soft);
    if (reader.readHardPointerId(hard) != Mx::eOk)
        return reader.filerStatus();
    EXPECT_TRUE(b);
    EXPECT_EQ(i16, -2);
    EXPECT_EQ(u16, 65535);
    EXPECT_EQ(i32, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(u32, 4000000000U);
    EXPECT_EQ(d, 0.1);
    EXPECT_EQ(p, MxGePoint3d(1, 2, 3));
    EXPECT_EQ(h, MxDbHandle(0xABC));
    EXPECT_EQ(s, L"Größe \U0001F399");
    EXPECT_EQ(run[2], 2);
    EXPECT_EQ(soft, reader.database()->imp().roots.modelSpace);
    EXPECT_TRUE(hard.isNull());
    return Mx::eOk;
}

TEST(DwgFiler, EveryItemComesBackAsItWasWritten) {
    Drawing drawing;
    const std::string bytes = sample(drawing);
    DwgReader reader(bytes, kFile, &drawing.database);
    EXPECT_EQ(reader.bytesLeft(), bytes.size());
    EXPECT_EQ(readSample(reader), Mx::eOk);
    EXPECT_EQ(reader.bytesLeft(), 0U);
    bool more = true;
    EXPECT_EQ(reader.readBool(more), Mx::eEndOfStream);
    EXPECT_TRUE(more) << "a failing read leaves its argument alone";
}

TEST(DwgFiler, AStreamCutAnywhereEndsInEndOfStream) {
    Drawing drawing;
    const std::string bytes = sample(drawing);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const std::string cut = bytes.substr(0, size);
        DwgReader reader(cut, kFile, &drawing.database);
        EXPECT_EQ(readSample(reader), Mx::eEndOfStream) << size;
    }
}

TEST(DwgFiler, AnotherTypeIsRefusedAndTheStatusStays) {
    DwgWriter writer(kFile);
    writer.writeInt16(5);
    writer.writeInt16(6);
    const std::string bytes = writer.take();
    DwgReader reader(bytes, kFile, nullptr);
    std::uint16_t wrong = 1;
    std::int16_t right = 1;
    EXPECT_EQ(reader.readUInt16(wrong), Mx::eItemType);
    EXPECT_EQ(reader.readInt16(right), Mx::eItemType);
    EXPECT_EQ(right, 1);
    EXPECT_EQ(reader.filerStatus(), Mx::eItemType);
}

TEST(DwgFiler, ARunOfAnotherLengthIsRefused) {
    DwgWriter writer(kFile);
    writer.writeBytes("abc", 3);
    const std::string bytes = writer.take();
    DwgReader reader(bytes, kFile, nullptr);
    std::array<char, 4> run{};
    EXPECT_EQ(reader.readBytes(run.data(), 4), Mx::eItemType);
    EXPECT_EQ(run[0], 0);
}

TEST(DwgFiler, ACountBeyondTheStreamAllocatesNothing) {
    DwgWriter writer(kFile);
    writer.writeUInt32(4000000000U);
    const std::string bytes = writer.take();
    DwgReader reader(bytes, kFile, nullptr);
    std::uint32_t count = 7;
    EXPECT_EQ(merix::db::readCount(reader, count, 1), Mx::eEndOfStream);
    EXPECT_EQ(count, 7U);
    // A text that claims four gigabytes.
    const std::string claim = {9, '\xFF', '\xFF', '\xFF', '\xFF', 'a'};
    DwgReader liar(claim, kFile, nullptr);
    wchar_t* text = nullptr;
    EXPECT_EQ(liar.readString(&text), Mx::eEndOfStream);
    EXPECT_EQ(text, nullptr);
}

TEST(DwgFiler, AnIdNotReadYetIsReserved) {
    Drawing drawing;
    const std::string bytes = {11, 0x77, 0x66, 0, 0, 0, 0, 0, 0};
    DwgReader reader(bytes, kFile, &drawing.database);
    MxDbObjectId id;
    EXPECT_EQ(reader.readSoftPointerId(id), Mx::eOk);
    EXPECT_EQ(id.handle(), MxDbHandle(0x6677));
    EXPECT_FALSE(id.isValid());
    DwgReader homeless(bytes, kFile, nullptr);
    EXPECT_EQ(homeless.readSoftPointerId(id), Mx::eNoDatabase);
}

TEST(DwgFiler, AWriterDoesNotReadNorAReaderWrite) {
    DwgWriter writer(kFile);
    bool value = true;
    EXPECT_EQ(writer.readBool(value), Mx::eInvalidInput);
    DwgReader reader({}, kFile, nullptr);
    EXPECT_EQ(reader.writeBool(true), Mx::eInvalidInput);
}

} // namespace
