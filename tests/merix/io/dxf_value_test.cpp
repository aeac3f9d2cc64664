// SPDX-License-Identifier: MIT
#include "merix/io/dxf_value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace merix::io {
namespace {

TEST(DxfValue, WritesTheShortestTextThatReadsBack) {
    EXPECT_EQ(fromDouble(12.5), "12.5");
    EXPECT_EQ(fromDouble(12.0), "12.0");
    EXPECT_EQ(fromDouble(-0.0), "0.0");
    EXPECT_EQ(fromDouble(0.1), "0.1");
    EXPECT_EQ(fromDouble(1e20), "1e+20");
    EXPECT_EQ(fromDouble(std::nan("")), "0.0");
    for (const double value : {1.0 / 3.0, 5e-324, 1.7976931348623157e308, -123456.789})
        EXPECT_EQ(toDouble(fromDouble(value)), value);
}

TEST(DxfValue, ReadsNonsenseAsZeroAndBringsIntegersToTheirBounds) {
    EXPECT_EQ(toDouble("  +2.5 "), 2.5);
    EXPECT_EQ(toDouble("abc"), 0.0);
    EXPECT_EQ(toDouble("1e999"), 0.0);
    EXPECT_EQ(toDouble("nan"), 0.0);
    EXPECT_EQ(toDouble("inf"), 0.0);
    EXPECT_EQ(toInteger(" 12 "), 12);
    EXPECT_EQ(toInteger("12.9"), 12);
    EXPECT_EQ(toInteger(""), 0);
    EXPECT_EQ(toInteger("99999999999999999999"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(toInteger("-99999999999999999999"), std::numeric_limits<std::int64_t>::min());
    EXPECT_LT(toInteger("-1e300"), -9'000'000'000'000'000'000);
}

TEST(DxfValue, ReadsHandlesOfUpTo16Digits) {
    EXPECT_EQ(toHandle(" 1aF "), 0x1AFU);
    EXPECT_EQ(toHandle("FFFFFFFFFFFFFFFF"), ~std::uint64_t{0});
    EXPECT_EQ(toHandle("10000000000000000"), 0U);
    EXPECT_EQ(toHandle("12G"), 0U);
    EXPECT_EQ(toHandle(""), 0U);
    EXPECT_EQ(fromHandle(0x1AF), "1AF");
    EXPECT_EQ(fromHandle(0), "0");
}

TEST(DxfValue, ReadsBytesOnlyFromWholePairsOfDigits) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(toBytes("00fF7e", bytes));
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0, 255, 126}));
    EXPECT_EQ(fromBytes(bytes.data(), bytes.size()), "00FF7E");
    EXPECT_TRUE(toBytes("", bytes));
    EXPECT_FALSE(toBytes("0", bytes));
    EXPECT_FALSE(toBytes("0G", bytes));
}

TEST(DxfValue, ComparesByMeaning) {
    EXPECT_TRUE(sameValue(40, "1.500", "1.5"));
    EXPECT_TRUE(sameValue(70, "     1", "1"));
    EXPECT_TRUE(sameValue(330, "1f", "1F"));
    EXPECT_TRUE(sameValue(310, "ab", "AB"));
    EXPECT_FALSE(sameValue(1, " a", "a"));
    EXPECT_FALSE(sameValue(40, "1.5", "1.50000001"));
}

} // namespace
} // namespace merix::io
