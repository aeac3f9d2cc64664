// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/note_type.h"

#include "host/win/resources.h"
#include "phonomark/app/module_state.h"
#include "tests/phonomark/module_fixture.h"

using NoteTypeTest = ModuleTest;

TEST_F(NoteTypeTest, EveryTypeHasItsWord) {
    EXPECT_EQ(PhonomarkType(0), L"Point");
    EXPECT_EQ(PhonomarkType(1), L"Region");
    EXPECT_EQ(PhonomarkType(2), L"Object");
    EXPECT_EQ(PhonomarkType(3), L"Reply");
}

TEST_F(NoteTypeTest, AnUnknownTypeIsCalledPoint) {
    EXPECT_EQ(PhonomarkType(7), L"Point");
    EXPECT_EQ(PhonomarkType(-1), L"Point");
    EXPECT_EQ(PhonomarkType(4), L"Point");
}

TEST_F(NoteTypeTest, WordsAreThoseOfTheResourcesAndAnUnknownTypesIsNot) {
    void* const own = _hdllInstance;
    _hdllInstance = LoadResourceDll(L"OtherTexts.dll");
    ASSERT_TRUE(_hdllInstance);
    EXPECT_EQ(PhonomarkType(0), L"Punkt");
    EXPECT_EQ(PhonomarkType(1), L"Bereich");
    EXPECT_EQ(PhonomarkType(2), L"Objekt");
    EXPECT_EQ(PhonomarkType(3), L"Antwort");
    for (const int unknown : {-1, 4, 7, 256, 0x7fffffff})
        EXPECT_EQ(PhonomarkType(unknown), L"Point") << unknown;
    EXPECT_EQ(PhonomarkType(L"Bereich"), 0) << "keywords are of no language";
    EXPECT_EQ(PhonomarkType(L"Region"), 1);
    EXPECT_TRUE(FreeLibrary(_hdllInstance));
    _hdllInstance = own;
}

TEST_F(NoteTypeTest, KeywordsAreComparedWithCase) {
    EXPECT_EQ(PhonomarkType(L"Region"), 1);
    EXPECT_EQ(PhonomarkType(L"Object"), 2);
    EXPECT_EQ(PhonomarkType(L"Reply"), 3);
    EXPECT_EQ(PhonomarkType(L"region"), 0);
    EXPECT_EQ(PhonomarkType(L"point"), 0);
    EXPECT_EQ(PhonomarkType(static_cast<const wchar_t*>(nullptr)), 0);
}
