// SPDX-License-Identifier: MIT
#include "host/db/dictionary.h"
#include "merix/db/access.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

resbuf* chainOf(std::vector<std::pair<short, MxDbValue>> items) {
    resbuf* chain = nullptr;
    resbuf** end = &chain;
    for (auto& [code, value] : items) {
        *end = new resbuf{nullptr, code, std::move(value)};
        end = &(*end)->rbnext;
    }
    return chain;
}

std::vector<std::pair<short, MxDbValue>> itemsOf(const MxDbXrecord& record) {
    resbuf* chain = nullptr;
    EXPECT_EQ(record.rbChain(&chain), Mx::eOk);
    std::vector<std::pair<short, MxDbValue>> items;
    for (const resbuf* element = chain; element; element = element->rbnext)
        items.emplace_back(element->restype, element->resval);
    mxutRelRb(chain);
    return items;
}

bool same(const MxDbValue& a, const MxDbValue& b) {
    return a == b;
}

TEST(Xrecord, TheContentsAreACopyOfTheChain) {
    resbuf* chain = mxutBuildList(102, L"1F");
    chain->rbnext = mxutBuildList(102, L"2A");
    MxDbXrecord record;
    record.setFromRbChain(*chain);
    mxutRelRb(chain);
    const auto items = itemsOf(record);
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].first, 102);
    EXPECT_EQ(std::get<std::wstring>(items[0].second), L"1F");
    EXPECT_EQ(std::get<std::wstring>(items[1].second), L"2A");
}

TEST(Xrecord, AnEmptyRecordGivesNoChain) {
    MxDbXrecord record;
    resbuf* chain = mxutBuildList(1, nullptr);
    resbuf* filled = chain;
    EXPECT_EQ(record.rbChain(&filled), Mx::eOk);
    EXPECT_EQ(filled, nullptr);
    EXPECT_EQ(record.rbChain(nullptr), Mx::eInvalidInput);
    mxutRelRb(chain);
    mxutRelRb(nullptr);
}

TEST(Xrecord, EveryKindOfValueSurvivesTheBinaryForm) {
    Drawing drawing;
    auto* record = new MxDbXrecord;
    drawing.imp.adopt(record, {}, {});
    resbuf* chain = chainOf({{1, std::wstring(L"text")},
                             {90, std::int64_t{-5}},
                             {160, std::int64_t{1} << 40},
                             {40, 0.5},
                             {10, MxGePoint3d(1, 2, 3)},
                             {310, std::vector<std::uint8_t>{0, 255}},
                             {330, MxDbHandle(0x1F)},
                             {1, std::monostate()}});
    {
        const merix::db::FillAccess writable(*record);
        record->setFromRbChain(*chain);
    }
    mxutRelRb(chain);
    const std::string image = merix::db::dwgImage(*record, MxDbFilerType::kFile);
    auto* copy = new MxDbXrecord;
    drawing.imp.adopt(copy, {}, {});
    ASSERT_EQ(merix::db::readDwgImage(*copy, image, MxDbFilerType::kFile), Mx::eOk);
    const merix::db::ReadAccess first(*record), second(*copy);
    const auto before = itemsOf(*record), after = itemsOf(*copy);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_TRUE(before[i].first == after[i].first && same(before[i].second, after[i].second)) << i;
    for (std::size_t size = 0; size < image.size(); ++size)
        EXPECT_NE(merix::db::readDwgImage(*copy, image.substr(0, size), MxDbFilerType::kFile), Mx::eOk) << size;
}

} // namespace
