// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/blocks.h"

#include "tests/phonomark/module_fixture.h"

using BlocksTest = ModuleTest;

TEST_F(BlocksTest, ModelSpaceIsFoundInTheWorkingDatabase) {
    EXPECT_EQ(modelSpace(), database().imp().roots.modelSpace);
}

TEST_F(BlocksTest, ABlockTableThatIsOpenForWriteElsewhereGivesNoModelSpace) {
    MxDbSymbolTable* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, database().blockTableId(), Mx::kForWrite), Mx::eOk);
    MxDbSymbolTable* table = writer;
    EXPECT_EQ(openBlockTable(table), Mx::eOpenForWrite);
    EXPECT_EQ(table, nullptr);
    EXPECT_TRUE(modelSpace().isNull());
    writer->close();
}

TEST_F(BlocksTest, WithoutADrawingThereIsNone) {
    merix::ap::DocManager::instance().close(document());
    MxDbSymbolTable* table = nullptr;
    EXPECT_EQ(openBlockTable(table), Mx::eNoDatabase);
    EXPECT_TRUE(modelSpace().isNull());
}
