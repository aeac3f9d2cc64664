// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/linetypes.h"

#include "merix/db/tables.h"
#include "tests/phonomark/module_fixture.h"

using merix::db::DatabaseImp;
using merix::db::LinetypeRecord;
using LinetypesTest = ModuleTest;

TEST_F(LinetypesTest, ALinetypeOfTheDrawingIsFound) {
    MxDbObjectId id;
    EXPECT_EQ(getLinetypeIdFromString(L"CONTINUOUS", id), Mx::eOk);
    EXPECT_EQ(id, database().imp().linetypeNamed(L"Continuous"));
}

TEST_F(LinetypesTest, AMissingLinetypeIsLoadedFromTheFileOnce) {
    MxDbObjectId id, again;
    ASSERT_EQ(getLinetypeIdFromString(L"DASHEDX2", id), Mx::eOk);
    const auto* record = static_cast<const LinetypeRecord*>(DatabaseImp::peek(id));
    ASSERT_TRUE(record);
    EXPECT_EQ(record->dashes, (std::vector<double>{24, -12}));
    ASSERT_EQ(getLinetypeIdFromString(L"dashedx2", again), Mx::eOk);
    EXPECT_EQ(again, id);
}

TEST_F(LinetypesTest, AnErasedLinetypeIsFoundAndNotLoadedAgain) {
    MxDbObjectId id, again;
    ASSERT_EQ(getLinetypeIdFromString(L"DASHEDX2", id), Mx::eOk);
    MxDbObject* record = nullptr;
    ASSERT_EQ(mxdbOpenObject(record, id, Mx::kForWrite), Mx::eOk);
    record->erase();
    record->close();
    EXPECT_EQ(getLinetypeIdFromString(L"DASHEDX2", again), Mx::eOk);
    EXPECT_EQ(again, id);
}

TEST_F(LinetypesTest, ALinetypeThatTheFileLacksIsNotFound) {
    MxDbObjectId id;
    EXPECT_EQ(getLinetypeIdFromString(L"NO SUCH LINE", id), Mx::eKeyNotFound);
    EXPECT_TRUE(id.isNull());
}

TEST_F(LinetypesTest, WithoutADrawingThereIsNone) {
    merix::ap::DocManager::instance().close(document());
    MxDbObjectId id;
    EXPECT_EQ(getLinetypeIdFromString(L"Continuous", id), Mx::eNoDatabase);
}

TEST_F(LinetypesTest, ATableThatCannotBeOpenedGivesItsStatus) {
    MxDbSymbolTable* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, database().linetypeTableId(), Mx::kForWrite), Mx::eOk);
    MxDbObjectId id;
    EXPECT_EQ(getLinetypeIdFromString(L"DASHEDX2", id), Mx::eOpenForWrite);
    writer->close();
    EXPECT_TRUE(id.isNull());
    EXPECT_EQ(getLinetypeIdFromString(L"DASHEDX2", id), Mx::eOk);
    ASSERT_EQ(mxdbOpenObject(writer, database().linetypeTableId(), Mx::kForWrite), Mx::eOk) << "left open";
    writer->close();
}

TEST_F(LinetypesTest, WithoutTheFileAMissingLinetypeIsNotFound) {
    const QByteArray before = qgetenv("MERIX_RESOURCE_PATH");
    qputenv("MERIX_RESOURCE_PATH", folder.path().toLocal8Bit());
    MxDbObjectId id;
    EXPECT_EQ(getLinetypeIdFromString(L"DASHEDX2", id), Mx::eKeyNotFound);
    EXPECT_TRUE(id.isNull());
    EXPECT_EQ(getLinetypeIdFromString(L"Continuous", id), Mx::eOk) << "those of the drawing are";
    qputenv("MERIX_RESOURCE_PATH", before);
}
