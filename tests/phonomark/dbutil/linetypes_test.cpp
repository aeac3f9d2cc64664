// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/linetypes.h"

#include "tests/phonomark/module_fixture.h"

using LinetypesTest = ModuleTest;

TEST_F(LinetypesTest, ALinetypeOfTheDrawingIsFound) {
    MxDbObjectId id;
    EXPECT_EQ(getLinetypeIdFromString(L"CONTINUOUS", id), Mx::eOk);
    EXPECT_EQ(id, database().imp().linetypeNamed(L"Continuous"));
}

TEST_F(LinetypesTest, WithoutADrawingThereIsNone) {
    merix::ap::DocManager::instance().close(document());
    MxDbObjectId id;
    EXPECT_EQ(getLinetypeIdFromString(L"Continuous", id), Mx::eNoDatabase);
}
