// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/sort_ents.h"

#include "merix/ed/command_stack.h"
#include "phonomark/dbutil/documents.h"
#include "tests/phonomark/module_fixture.h"

using testing::HasSubstr;

namespace {

class SortEntsTest : public ModuleTest {
protected:
    MxDbObjectId model() { return database().imp().roots.modelSpace; }
    bool isLocked() { return !DocumentLock(&document(), L"Other", 298, false).isHeld(); }
    void unlock() { merix::ap::DocManager::instance().unlockDocument(&document()); }
};

} // namespace

TEST_F(SortEntsTest, TheTableOfABlockIsMadeOnceAndOpenForWrite) {
    MxDbSortentsTable* table = nullptr;
    ASSERT_TRUE(getSortentsTable(table, model()));
    ASSERT_TRUE(table);
    EXPECT_EQ(table->blockId(), model());
    const MxDbObjectId first = table->objectId();
    MxDbSortentsTable* other = nullptr;
    EXPECT_NE(mxdbOpenObject(other, first, Mx::kForRead), Mx::eOk) << "it is open for write";
    table->close();
    ASSERT_TRUE(getSortentsTable(table, model()));
    EXPECT_EQ(table->objectId(), first);
    table->close();
    MxDbBlockTableRecord* block = nullptr;
    EXPECT_EQ(mxdbOpenObject(block, model(), Mx::kForWrite), Mx::eOk) << "left open";
    block->close();
    EXPECT_EQ(printed(), "");
}

TEST_F(SortEntsTest, ModelSpacesTableComesWithADocumentThatStaysLocked) {
    MxDbSortentsTable* table = nullptr;
    ASSERT_FALSE(isLocked());
    ASSERT_TRUE(getOrCreateSortEntsDictionary(table));
    EXPECT_EQ(table->blockId(), model());
    table->close();
    for (const MxDbObjectId& id : {database().blockTableId(), model()}) {
        MxDbObject* free = nullptr;
        ASSERT_EQ(mxdbOpenObject(free, id, Mx::kForWrite), Mx::eOk) << "left open";
        free->close();
    }
    EXPECT_TRUE(isLocked());
    unlock();
    EXPECT_FALSE(isLocked());
}

TEST_F(SortEntsTest, TheEndOfTheCallersCommandUnlocksTheDocument) {
    merix::ed::CommandStack::instance().addCommand(L"TEST", L"SORTNOTES", L"SORTNOTES", 0, [] {
        MxDbSortentsTable* table = nullptr;
        if (getOrCreateSortEntsDictionary(table))
            table->close();
    });
    run("SORTNOTES");
    EXPECT_FALSE(isLocked());
}

TEST_F(SortEntsTest, ABlockTableThatCannotBeOpenedIsTold) {
    MxDbSymbolTable* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, database().blockTableId(), Mx::kForWrite), Mx::eOk);
    MxDbSortentsTable* table = nullptr;
    EXPECT_FALSE(getOrCreateSortEntsDictionary(table));
    EXPECT_EQ(printed(), "\nCouldn't get the block table");
    EXPECT_EQ(table, nullptr);
    writer->close();
    unlock();
}

TEST_F(SortEntsTest, WithoutADrawingThereIsNoBlockTable) {
    merix::ap::DocManager::instance().close(document());
    printed();
    MxDbSortentsTable* table = nullptr;
    EXPECT_FALSE(getOrCreateSortEntsDictionary(table));
    EXPECT_THAT(printed(), HasSubstr("Couldn't get the block table"));
}

TEST_F(SortEntsTest, ABlockRecordThatCannotBeOpenedIsTold) {
    MxDbBlockTableRecord* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, model(), Mx::kForWrite), Mx::eOk);
    MxDbSortentsTable* table = nullptr;
    EXPECT_FALSE(getSortentsTable(table, model()));
    EXPECT_EQ(printed(), "\nCouldn't get the MODEL_SPACE block record opened");
    EXPECT_FALSE(getOrCreateSortEntsDictionary(table));
    EXPECT_EQ(printed(), "\nCouldn't get the MODEL_SPACE block record opened");
    unlock();
    EXPECT_FALSE(getSortentsTable(table, {}));
    EXPECT_EQ(printed(), "\nCouldn't get the MODEL_SPACE block record opened");
    EXPECT_EQ(table, nullptr);
    writer->close();
}

TEST_F(SortEntsTest, ATableThatCannotBeMadeOrOpenedIsTold) {
    MxDbBlockTableRecord* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, model(), Mx::kForRead), Mx::eOk);
    MxDbSortentsTable* table = nullptr;
    EXPECT_FALSE(getSortentsTable(table, model())) << "the record cannot be given an extension dictionary";
    EXPECT_EQ(printed(), "\nCouldn't get or create MxDbSortentsTable of Model Space");
    EXPECT_EQ(table, nullptr);
    reader->close();
    ASSERT_TRUE(getSortentsTable(table, model()));
    MxDbSortentsTable* second = nullptr;
    EXPECT_FALSE(getSortentsTable(second, model())) << "it is open for write";
    EXPECT_EQ(printed(), "\nCouldn't get or create MxDbSortentsTable of Model Space");
    table->close();
}
