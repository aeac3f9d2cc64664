// SPDX-License-Identifier: MIT
#include "merix/io/dxf_in_filer.h"

#include "host/db/database.h"

#include <gtest/gtest.h>

#include <limits>

namespace merix::io {
namespace {

class DxfInFilerTest : public ::testing::Test {
protected:
    DxfInFiler filer(std::vector<DxfTag> list) {
        m_tags = std::move(list);
        return DxfInFiler(m_database, m_encoding, m_tags);
    }

    MxDbDatabase m_database;
    DxfEncoding m_encoding{"AC1021", ""};
    std::vector<DxfTag> m_tags;
};

DxfTag tag(int code, std::string_view value) {
    return {code, value, {}};
}

TEST_F(DxfInFilerTest, APointIsOneItem) {
    DxfInFiler f =
        filer({tag(10, "1.0"), tag(20, "2.0"), tag(30, "3.0"), tag(11, "4.0"), tag(21, "5.0"), tag(40, "6")});
    ASSERT_EQ(f.readItem(), Mx::eOk);
    EXPECT_EQ(f.itemPoint3d(), (MxGePoint3d{1, 2, 3}));
    ASSERT_EQ(f.readItem(), Mx::eOk);
    EXPECT_EQ(f.itemPoint3d(), (MxGePoint3d{4, 5, 0}));
    ASSERT_EQ(f.readItem(), Mx::eOk);
    EXPECT_EQ(f.itemCode(), 40);
    EXPECT_EQ(f.readItem(), Mx::eEndOfItems);
    EXPECT_EQ(f.filerStatus(), Mx::eOk);
}

TEST_F(DxfInFilerTest, APushedBackItemComesAgainWhole) {
    DxfInFiler f = filer({tag(10, "1"), tag(20, "2"), tag(1, "x")});
    ASSERT_EQ(f.readItem(), Mx::eOk);
    EXPECT_EQ(f.pushBackItem(), Mx::eOk);
    ASSERT_EQ(f.readItem(), Mx::eOk);
    EXPECT_EQ(f.itemPoint3d(), (MxGePoint3d{1, 2, 0}));
    ASSERT_EQ(f.readItem(), Mx::eOk);
    EXPECT_EQ(f.itemString().str(), L"x");
}

TEST_F(DxfInFilerTest, ASubclassMarkerIsConsumedOnlyWhenItIsTheOneAskedFor) {
    DxfInFiler f = filer({tag(100, "AcDbEntity"), tag(8, "0")});
    EXPECT_FALSE(f.atSubclassData(L"AcDbLine"));
    EXPECT_TRUE(f.atSubclassData(L"AcDbEntity"));
    EXPECT_FALSE(f.atSubclassData(L"AcDbEntity"));
    ASSERT_EQ(f.readItem(), Mx::eOk);
    EXPECT_EQ(f.itemCode(), 8);
}

TEST_F(DxfInFilerTest, IntegersOutOfRangeAreBroughtToTheNearestBound) {
    DxfInFiler f = filer({tag(70, "100000"), tag(90, "-99999999999"), tag(91, "-1"), tag(92, "99999999999")});
    f.readItem();
    EXPECT_EQ(f.itemInt16(), std::numeric_limits<std::int16_t>::max());
    f.readItem();
    EXPECT_EQ(f.itemInt32(), std::numeric_limits<std::int32_t>::min());
    f.readItem();
    EXPECT_EQ(f.itemUInt32(), 0xFFFFFFFFU);
    f.readItem();
    EXPECT_EQ(f.itemUInt32(), 0xFFFFFFFFU);
}

TEST_F(DxfInFilerTest, ValuesBeforeTheFirstItemAndBehindTheLastAreEmpty) {
    DxfInFiler f = filer({tag(1, "x")});
    EXPECT_EQ(f.itemCode(), 0);
    EXPECT_EQ(f.itemString().str(), L"");
    EXPECT_TRUE(f.itemObjectId().isNull());
    f.readItem();
    f.readItem();
    EXPECT_EQ(f.itemDouble(), 0.0);
    std::size_t count = 1;
    f.itemBytes(count);
    EXPECT_EQ(count, 0U);
}

TEST_F(DxfInFilerTest, AChunkThatIsNoHexadecimalTextFailsTheRecord) {
    DxfInFiler f = filer({tag(310, "00ZZ"), tag(1, "x")});
    EXPECT_EQ(f.readItem(), Mx::eItemUnreadable);
    EXPECT_EQ(f.filerStatus(), Mx::eItemUnreadable);
    EXPECT_EQ(f.readItem(), Mx::eItemUnreadable);
    EXPECT_FALSE(f.message().empty());
}

TEST_F(DxfInFilerTest, AnErrorKeepsItsMessage) {
    DxfInFiler f = filer({});
    f.setError(Mx::eItemExpected, L"\nError: expected group code %d (version #)", 90);
    EXPECT_EQ(f.filerStatus(), Mx::eItemExpected);
    EXPECT_EQ(f.message(), L"\nError: expected group code 90 (version #)");
}

TEST_F(DxfInFilerTest, AHandleIsAReservedId) {
    DxfInFiler f = filer({tag(330, "2A"), tag(330, "0")});
    f.readItem();
    EXPECT_EQ(f.itemObjectId().handle().value(), 0x2AU);
    EXPECT_FALSE(f.itemObjectId().isValid());
    f.readItem();
    EXPECT_TRUE(f.itemObjectId().isNull());
}

} // namespace
} // namespace merix::io
