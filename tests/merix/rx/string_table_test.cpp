// SPDX-License-Identifier: MIT
#include "merix/rx/string_table.h"

#include "host/rx/string_table.h"

#include <gtest/gtest.h>

using merix::rx::stringTable;
using Texts = std::vector<std::wstring>;

TEST(StringTable, TheTextUsedLastStandsFirstAndOnce) {
    mxutUpdateStringTable(L"Anna");
    mxutUpdateStringTable(L"Bert");
    EXPECT_EQ(stringTable(), (Texts{L"Bert", L"Anna"}));
    mxutUpdateStringTable(L"Anna");
    EXPECT_EQ(stringTable(), (Texts{L"Anna", L"Bert"}));
    mxutUpdateStringTable(nullptr);
    mxutUpdateStringTable(L"");
    EXPECT_EQ(stringTable(), (Texts{L"Anna", L"Bert"}));
}

TEST(StringTable, ItHoldsTheLast256) {
    for (int i = 0; i < 300; ++i)
        mxutUpdateStringTable(std::to_wstring(i).c_str());
    ASSERT_EQ(stringTable().size(), 256u);
    EXPECT_EQ(stringTable().front(), L"299");
    EXPECT_EQ(stringTable().back(), L"44");
}
