// SPDX-License-Identifier: MIT
#include "merix/rx/resource_modules.h"

#include <QFile>

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr const wchar_t* kFile = L"MrxPhonomarkRes.dll";
const QString kText = QStringLiteral(":/MrxPhonomarkRes/strings/en.json");

TEST(ResourceModules, ALoadedModuleGivesTextsAndFiles) {
    void* resource = LoadResourceDll(kFile);
    ASSERT_NE(resource, nullptr);
    std::array<wchar_t, 64> buffer{};
    EXPECT_EQ(LoadStringW(resource, 256, buffer.data(), buffer.size()), 5);
    EXPECT_STREQ(buffer.data(), L"Point");
    EXPECT_TRUE(QFile::exists(kText));
    EXPECT_EQ(merix::rx::resourcePrefix(resource), ":/MrxPhonomarkRes");
    EXPECT_TRUE(FreeLibrary(resource));
    EXPECT_FALSE(QFile::exists(kText));
}

TEST(ResourceModules, AModuleLoadedTwiceStaysUntilItIsFreedTwice) {
    void* first = LoadResourceDll(kFile);
    void* second = LoadResourceDll(kFile);
    EXPECT_EQ(first, second);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_TRUE(QFile::exists(kText));
    EXPECT_TRUE(FreeLibrary(second));
    EXPECT_FALSE(FreeLibrary(second));
    EXPECT_FALSE(QFile::exists(kText));
}

TEST(ResourceModules, ALongTextIsCutToTheBuffer) {
    void* resource = LoadResourceDll(kFile);
    wchar_t buffer[4] = {};
    EXPECT_EQ(LoadStringW(resource, 256, buffer, 4), 3);
    EXPECT_STREQ(buffer, L"Poi");
    FreeLibrary(resource);
}

TEST(ResourceModules, NoTextMeansAnEmptyBuffer) {
    void* resource = LoadResourceDll(kFile);
    wchar_t buffer[4] = {L'x'};
    EXPECT_EQ(LoadStringW(resource, 999999, buffer, 4), 0);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(LoadStringW(nullptr, 256, buffer, 4), 0);
    EXPECT_EQ(LoadStringW(resource, 256, buffer, 0), 0);
    FreeLibrary(resource);
}

TEST(ResourceModules, AMissingModuleOrAPathGivesNull) {
    EXPECT_EQ(LoadResourceDll(L"None.dll"), nullptr);
    EXPECT_EQ(LoadResourceDll(L"../bin/MrxPhonomarkRes.dll"), nullptr);
    EXPECT_EQ(LoadResourceDll(nullptr), nullptr);
}

TEST(ResourceModules, TheModulePushedLastIsInForceUntilItIsFreed) {
    EXPECT_EQ(AfxGetResourceHandle(), nullptr);
    void* resource = LoadResourceDll(kFile);
    merix::rx::pushResourceHandle(resource);
    EXPECT_EQ(AfxGetResourceHandle(), resource);
    merix::rx::popResourceHandle();
    EXPECT_EQ(AfxGetResourceHandle(), nullptr);
    merix::rx::pushResourceHandle(resource);
    FreeLibrary(resource);
    EXPECT_EQ(AfxGetResourceHandle(), nullptr);
}

} // namespace
