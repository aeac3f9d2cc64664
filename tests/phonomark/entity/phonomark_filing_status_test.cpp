// SPDX-License-Identifier: MIT
// Filers that fail: what a note answers, and that it asks for nothing more where it has to stop.
#include "tests/phonomark/entity/failing_filers.h"
#include "tests/phonomark/entity/filing_fixture.h"

using merix::io::DxfOutTag;

namespace {

constexpr std::size_t kAll = 1'000'000;

/// How many items the base files.
template <class Filer, class File> std::size_t itemsOfBase(const Filer& make, const File& file) {
    for (std::size_t items = 0; items < kAll; ++items) {
        auto filer = make(items);
        if (file(filer) == Mx::eOk)
            return items;
    }
    return kAll;
}

class FilingStatusTest : public FilingTest {
protected:
    FilingStatusTest() { m_tags.reserve(64); }
    std::wstring speaker(const MxDbPhonomark& of) {
        CStdStr<wchar_t> text;
        of.getSpokesman(text);
        return text;
    }
    const std::vector<merix::io::DxfTag>& keep(std::vector<DxfOutTag> written) {
        m_written = std::move(written);
        return m_tags = dxfTags(m_written);
    }

private:
    std::vector<DxfOutTag> m_written; ///< holds the values that the tags show
    std::vector<merix::io::DxfTag> m_tags;
};

} // namespace

TEST_F(FilingTest, AWriterThatFailsGivesItsStatusWhicheverItemItIs) {
    MxDbPhonomark recorded;
    fill(recorded);
    const auto make = [&](std::size_t items) { return FailingDwgWriter(database(), items); };
    const std::size_t base =
        itemsOfBase(make, [&](FailingDwgWriter& filer) { return recorded.MxDbEntity::dwgOutFields(&filer); });
    ASSERT_GT(base, 5U);
    for (std::size_t item = 0; item < base; ++item) {
        auto alone = make(item), filer = make(item);
        recorded.MxDbEntity::dwgOutFields(&alone);
        EXPECT_EQ(recorded.dwgOutFields(&filer), FailingDwgWriter::kStatus) << item;
        EXPECT_EQ(filer.askedAfterwards(), alone.askedAfterwards()) << "nothing behind the base: " << item;
    }
    constexpr int kOwn = 16;
    for (int item = 0; item < kOwn; ++item) {
        auto filer = make(base + static_cast<std::size_t>(item));
        EXPECT_EQ(recorded.dwgOutFields(&filer), FailingDwgWriter::kStatus) << item;
        EXPECT_EQ(filer.askedAfterwards(), item == 0 ? 0 : kOwn - 1 - item)
            << "behind the version, which alone is checked";
    }
    auto whole = make(base + kOwn);
    EXPECT_EQ(recorded.dwgOutFields(&whole), Mx::eOk);
}

TEST_F(FilingTest, ADxfWriterThatFailsGivesItsStatusAndNothingFollowsMarkerOrVersion) {
    MxDbPhonomark recorded;
    fill(recorded); // 100, 90, 70, 10, 290, seven of the format, 93, two chunks, 1, 2, 3
    const auto make = [&](std::size_t items) { return FailingDxfWriter(database(), m_encoding, items); };
    const std::size_t base =
        itemsOfBase(make, [&](FailingDxfWriter& filer) { return recorded.MxDbEntity::dxfOutFields(&filer); });
    ASSERT_GE(base, 3U);
    for (std::size_t item = 0; item < base; ++item) {
        auto alone = make(item), filer = make(item);
        recorded.MxDbEntity::dxfOutFields(&alone);
        EXPECT_EQ(recorded.dxfOutFields(&filer), FailingDxfWriter::kStatus) << item;
        EXPECT_EQ(filer.askedAfterwards(), alone.askedAfterwards()) << "nothing behind the base: " << item;
    }
    constexpr int kOwn = 18;
    for (int item = 0; item < kOwn; ++item) {
        auto filer = make(base + static_cast<std::size_t>(item));
        EXPECT_EQ(recorded.dxfOutFields(&filer), FailingDxfWriter::kStatus) << item;
        if (item <= 1)
            EXPECT_EQ(filer.askedAfterwards(), 0) << item;
        else
            EXPECT_GE(filer.askedAfterwards(), std::min(kOwn - 1 - item, 3)) << "the texts at least: " << item;
    }
    auto whole = make(base + kOwn);
    EXPECT_EQ(recorded.dxfOutFields(&whole), Mx::eOk);
}

TEST_F(FilingStatusTest, ABinaryReaderThatFailsGivesItsStatusAndNothingFollowsBaseOrVersion) {
    MxDbPhonomark recorded, base;
    fill(recorded);
    const std::string stream = dwg(recorded);
    const auto make = [&](std::size_t items) { return FailingDwgReader(stream, database(), items); };
    const std::size_t baseItems =
        itemsOfBase(make, [&](FailingDwgReader& filer) { return base.MxDbEntity::dwgInFields(&filer); });
    ASSERT_GT(baseItems, 5U);
    for (std::size_t item = 0; item <= baseItems; ++item) {
        MxDbPhonomark after;
        auto alone = make(item), filer = make(item);
        base.MxDbEntity::dwgInFields(&alone);
        EXPECT_EQ(after.dwgInFields(&filer), FailingDwgReader::kStatus) << item;
        EXPECT_EQ(filer.askedAfterwards(), alone.askedAfterwards()) << item;
    }
    constexpr std::size_t kOwn = 16;
    for (std::size_t item = 1; item < kOwn; ++item) {
        MxDbPhonomark after;
        auto filer = make(baseItems + item);
        EXPECT_EQ(after.dwgInFields(&filer), FailingDwgReader::kStatus) << item;
    }
    MxDbPhonomark after;
    auto whole = make(baseItems + kOwn);
    EXPECT_EQ(after.dwgInFields(&whole), Mx::eOk);
    expectSame(recorded, after);
}

TEST_F(FilingStatusTest, TheWaveFormatAnswersTheStatusOfItsLastItem) {
    MxDbPhonomark recorded, after;
    fill(recorded);
    FailingDwgWriter writer(database(), 6);
    EXPECT_EQ(recorded.dwgOutWaveFormatData(&writer), FailingDwgWriter::kStatus);
    FailingDwgWriter whole(database(), 7);
    EXPECT_EQ(recorded.dwgOutWaveFormatData(&whole), Mx::eOk);
    const std::string stream = whole.take();
    FailingDwgReader reader(stream, database(), 6);
    EXPECT_EQ(after.dwgInWaveFormatData(&reader), FailingDwgReader::kStatus);
    FailingDwgReader all(stream, database(), 7);
    EXPECT_EQ(after.dwgInWaveFormatData(&all), Mx::eOk);
}

TEST_F(FilingStatusTest, ABaseThatADxfReaderCannotReadIsTheEnd) {
    const auto& tags = keep({{100, "MxDbPhonomark"}, {90, "1"}, {1, "Anna"}});
    MxDbPhonomark after;
    FailingDxfReader filer(database(), m_encoding, tags, 0);
    EXPECT_EQ(after.dxfInFields(&filer), Mx::eFileUnreadable);
    EXPECT_EQ(speaker(after), L"");
}

TEST_F(FilingStatusTest, WhatADxfReaderCannotReadIsUnreadableWhateverItSays) {
    // The base takes one item to find its end, which is the marker.
    const auto& tags = keep({{100, "MxDbPhonomark"}, {90, "1"}, {1, "Anna"}, {2, "today"}});
    for (const auto status : {Mx::eEndOfStream, Mx::eFileDamaged, Mx::eItemType, Mx::eItemUnreadable}) {
        MxDbPhonomark after;
        FailingDxfReader filer(database(), m_encoding, tags, 3, status);
        EXPECT_EQ(after.dxfInFields(&filer), 51) << status;
        EXPECT_EQ(speaker(after), L"Anna") << "what came before is kept";
    }
}

TEST_F(FilingStatusTest, TheEndOfTheItemsGivesTheDxfReadersStatus) {
    const auto& tags = keep({{100, "MxDbPhonomark"}, {90, "1"}, {1, "Anna"}});
    MxDbPhonomark after;
    FailingDxfReader filer(database(), m_encoding, tags, 3, Mx::eEndOfItems);
    EXPECT_EQ(after.dxfInFields(&filer), Mx::eEndOfItems) << "which is what this one says";
    FailingDxfReader damaged(database(), m_encoding, tags);
    damaged.setStatus(Mx::eFileDamaged);
    EXPECT_EQ(after.dxfInFields(&damaged), Mx::eFileDamaged);
    EXPECT_EQ(speaker(after), L"Anna");
}

TEST_F(FilingStatusTest, AVersionThatCannotBeReadIsExpected) {
    const auto& tags = keep({{100, "MxDbPhonomark"}, {90, "1"}, {1, "Anna"}});
    MxDbPhonomark after;
    FailingDxfReader filer(database(), m_encoding, tags, 1);
    EXPECT_EQ(after.dxfInFields(&filer), 50);
    EXPECT_EQ(speaker(after), L"");
    ASSERT_EQ(filer.readItem(), Mx::eOk);
    EXPECT_EQ(filer.itemCode(), 90) << "there was no item to push back";
}

TEST_F(FilingStatusTest, AnUnknownGroupIsThereForWhoeverReadsOn) {
    const auto& tags = keep({{100, "MxDbPhonomark"}, {90, "1"}, {1, "Anna"}, {99, "7"}, {2, "today"}});
    MxDbPhonomark after;
    merix::io::DxfInFiler filer(database(), m_encoding, tags);
    EXPECT_EQ(after.dxfInFields(&filer), Mx::eOk);
    ASSERT_EQ(filer.readItem(), Mx::eOk);
    EXPECT_EQ(filer.itemCode(), 99);
    EXPECT_EQ(filer.itemInt16(), 7);
}

TEST_F(FilingStatusTest, AGroupInPlaceOfTheVersionIsThereForWhoeverReadsOn) {
    const auto& tags = keep({{100, "MxDbPhonomark"}, {70, "2"}, {1, "Anna"}});
    MxDbPhonomark after;
    FailingDxfReader filer(database(), m_encoding, tags);
    EXPECT_EQ(after.dxfInFields(&filer), 50);
    ASSERT_EQ(filer.readItem(), Mx::eOk);
    EXPECT_EQ(filer.itemCode(), 70);
    EXPECT_EQ(filer.itemInt16(), 2);
}

TEST_F(FilingStatusTest, ADxfReaderThatReadsNoFileLeavesTheExtentsOfTheObjectAside) {
    class CopyReader : public merix::io::DxfInFiler {
    public:
        using DxfInFiler::DxfInFiler;
        MxDbFilerType filerType() const override { return MxDbFilerType::kCopy; }
    };
    MxDbPhonomark before, after;
    before.setPhonomarkType(kObjectNote);
    before.setAttachObj(addLine());
    const auto& tags = keep(dxf(before));
    CopyReader filer(database(), m_encoding, tags);
    EXPECT_EQ(after.dxfInFields(&filer), Mx::eOk);
    EXPECT_EQ(after.attachObj(), before.attachObj());
    EXPECT_TRUE(after.extents().isEmpty());
}

TEST_F(FilingStatusTest, NothingIsReadBehindANewerVersion) {
    MxDbPhonomark base, after;
    merix::db::DwgWriter writer(MxDbFilerType::kFile, &database());
    base.MxDbEntity::dwgOutFields(&writer);
    writer.writeUInt32(2);
    const std::string upToVersion = writer.take();
    const std::string stream = upToVersion + "more";
    merix::db::DwgReader reader(stream, MxDbFilerType::kFile, &database());
    EXPECT_EQ(after.dwgInFields(&reader), 301);
    EXPECT_EQ(reader.bytesLeft(), 4U);

    fill(after, 5);
    const auto& tags = keep({{100, "MxDbPhonomark"}, {90, "2"}, {70, "3"}});
    merix::io::DxfInFiler filer(database(), m_encoding, tags);
    EXPECT_EQ(after.dxfInFields(&filer), 301);
    ASSERT_EQ(filer.readItem(), Mx::eOk);
    EXPECT_EQ(filer.itemCode(), 70);
    EXPECT_EQ(after.getPhonomarkType(), 0);
    EXPECT_TRUE(after.getAudioData()) << "what the note holds is not released for what is not read";
}
