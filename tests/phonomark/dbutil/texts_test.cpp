// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/texts.h"

#include "host/win/resources.h"
#include "merix/rx/resource_modules.h"
#include "phonomark/app/module_state.h"
#include "tests/phonomark/module_fixture.h"

using TextsTest = ModuleTest;

TEST_F(TextsTest, ATextOfTheResourceModuleIsReadByItsNumber) {
    EXPECT_EQ(LocalStr(292, L"fallback"), L"Show note region");
}

TEST_F(TextsTest, AMissingTextIsReplacedByTheFallback) {
    EXPECT_EQ(LocalStr(9999, L"fallback"), L"fallback");
    EXPECT_EQ(LocalStr(9999, nullptr), L"");
}

TEST_F(TextsTest, AMissingTextIsAnErrorAndPrintsNothing) {
    EXPECT_EQ(mxutPrintfById(9999), -5001);
    EXPECT_EQ(printed(), "");
}

TEST_F(TextsTest, ATextIsPrintedOnTheCommandLine) {
    EXPECT_EQ(mxutPrintfById(270), 5100);
    EXPECT_THAT(printed(), ::testing::HasSubstr("Voice notes are shown."));
}

TEST_F(TextsTest, ATextIsPrintedAsAFormat) {
    void* const own = _hdllInstance;
    _hdllInstance = LoadResourceDll(L"OtherTexts.dll");
    ASSERT_TRUE(_hdllInstance);
    EXPECT_EQ(mxutPrintfById(270), 5100);
    EXPECT_EQ(printed(), "\n100% of the notes, %d of them and %s are shown.");
    EXPECT_TRUE(FreeLibrary(_hdllInstance));
    _hdllInstance = own;
}

TEST_F(TextsTest, WithoutAResourceModuleOfItsOwnTheHostsTextsAreTaken) {
    void* const own = std::exchange(_hdllInstance, nullptr);
    void* const other = LoadResourceDll(L"OtherTexts.dll");
    merix::rx::pushResourceHandle(other);
    EXPECT_EQ(LocalStr(256, nullptr), L"Punkt");
    _hdllInstance = own;
    EXPECT_EQ(LocalStr(256, nullptr), L"Point");
    merix::rx::popResourceHandle();
    EXPECT_TRUE(FreeLibrary(other));
}

TEST_F(TextsTest, WithoutAResourceModuleThereAreNoTexts) {
    ASSERT_TRUE(FreeLibrary(_hdllInstance));
    _hdllInstance = nullptr;
    EXPECT_EQ(LocalStr(292, L"fallback"), L"fallback");
    EXPECT_EQ(mxutPrintfById(270), -5001);
}

TEST(FormatTextTest, ValuesTakeThePlacesInOrder) {
    EXPECT_EQ(formatText(L"%s said on %s", {L"Anna", L"Monday"}), L"Anna said on Monday");
}

TEST(FormatTextTest, APercentSignIsDoubledAndOtherDirectivesStay) {
    EXPECT_EQ(formatText(L"100%% of %s, %d%", {L"all"}), L"100% of all, %d%");
}

TEST(FormatTextTest, AValueIsNotAFormatAndOneTooFewIsEmpty) {
    EXPECT_EQ(formatText(L"[%s][%s]", {L"%s%n"}), L"[%s%n][]");
}
