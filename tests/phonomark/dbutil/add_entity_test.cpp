// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/add_entity.h"

#include "merix/db/entities.h"
#include "tests/phonomark/module_fixture.h"

#include <memory>

using AddEntityTest = ModuleTest;

TEST_F(AddEntityTest, AnEntityComesIntoTheCurrentSpaceAndIsClosed) {
    const MxDbObjectId id = addLine();
    MxDbEntity* line = nullptr;
    ASSERT_EQ(mxdbOpenObject(line, id, Mx::kForWrite), Mx::eOk) << "open elsewhere";
    EXPECT_EQ(line->ownerId(), database().currentSpaceId());
    line->close();
}

TEST_F(AddEntityTest, WithoutAWorkingDatabaseTheEntityStaysTheCallers) {
    merix::ap::DocManager::instance().close(document());
    const auto line = std::make_unique<merix::db::Line>();
    MxDbObjectId id;
    EXPECT_FALSE(addEntityToCurrentSpace(id, line.get()));
    EXPECT_TRUE(id.isNull());
}

TEST_F(AddEntityTest, ASpaceThatIsOpenElsewhereIsRefused) {
    MxDbBlockTableRecord* space = nullptr;
    ASSERT_EQ(mxdbOpenObject(space, database().currentSpaceId(), Mx::kForRead), Mx::eOk);
    const auto line = std::make_unique<merix::db::Line>();
    MxDbObjectId id;
    EXPECT_FALSE(addEntityToCurrentSpace(id, line.get()));
    EXPECT_TRUE(id.isNull());
    space->close();
    EXPECT_FALSE(addEntityToOwnerSpace(id, nullptr, database().currentSpaceId()));
}

TEST_F(AddEntityTest, AnEntityComesIntoModelSpaceWhateverSpaceIsCurrent) {
    ASSERT_TRUE(document().setCurrentLayout(QStringLiteral("Layout1")));
    const MxDbObjectId model = database().imp().roots.modelSpace;
    ASSERT_FALSE(database().currentSpaceId() == model);
    MxDbObjectId id;
    ASSERT_TRUE(addEntityToDb(id, new merix::db::Line));
    MxDbEntity* line = nullptr;
    ASSERT_EQ(mxdbOpenObject(line, id, Mx::kForWrite), Mx::eOk) << "open elsewhere";
    EXPECT_EQ(line->ownerId(), model);
    line->close();
    ASSERT_TRUE(addEntityToOwnerSpace(id, new merix::db::Line, database().currentSpaceId()));
    EXPECT_EQ(merix::db::DatabaseImp::peek(id)->ownerId(), database().currentSpaceId());
}

TEST_F(AddEntityTest, ModelSpaceThatIsOpenElsewhereIsRefused) {
    MxDbBlockTableRecord* space = nullptr;
    ASSERT_EQ(mxdbOpenObject(space, database().imp().roots.modelSpace, Mx::kForRead), Mx::eOk);
    const auto line = std::make_unique<merix::db::Line>();
    MxDbObjectId id;
    EXPECT_FALSE(addEntityToDb(id, line.get()));
    EXPECT_TRUE(id.isNull());
    const auto record = std::make_unique<MxDbXrecord>();
    EXPECT_FALSE(addObjectToDb(id, record.get())) << "its extension dictionary cannot be made";
    EXPECT_TRUE(id.isNull());
    space->close();
}

TEST_F(AddEntityTest, ASpaceOfADrawingThatIsNotWorkedOnIsRefused) {
    const MxDbObjectId space = database().currentSpaceId();
    const merix::db::WorkingDatabaseScope none(nullptr);
    const auto line = std::make_unique<merix::db::Line>();
    MxDbObjectId id;
    EXPECT_FALSE(addEntityToOwnerSpace(id, line.get(), space));
    EXPECT_TRUE(id.isNull());
}

TEST_F(AddEntityTest, WithoutAWorkingDatabaseNothingIsAdded) {
    merix::ap::DocManager::instance().close(document());
    const auto line = std::make_unique<merix::db::Line>();
    const auto record = std::make_unique<MxDbXrecord>();
    MxDbObjectId id;
    EXPECT_FALSE(addEntityToDb(id, line.get()));
    EXPECT_FALSE(addObjectToDb(id, record.get()));
    EXPECT_TRUE(id.isNull());
}

TEST_F(AddEntityTest, ObjectsComeIntoModelSpacesDictionaryUnderNamesOfItsMaking) {
    MxDbObjectId first, second;
    ASSERT_TRUE(addObjectToDb(first, new MxDbXrecord));
    ASSERT_TRUE(addObjectToDb(second, new MxDbXrecord));
    EXPECT_FALSE(addObjectToDb(second, nullptr));
    const MxDbObject* const model = merix::db::DatabaseImp::peek(database().imp().roots.modelSpace);
    MxDbDictionary* dictionary = nullptr;
    ASSERT_EQ(mxdbOpenObject(dictionary, model->extensionDictionary(), Mx::kForRead), Mx::eOk);
    const auto entries = dictionary->entries();
    dictionary->close();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].second, first);
    EXPECT_EQ(entries[1].second, second);
    EXPECT_EQ(entries[0].first.rfind(L"*U", 0), 0u);
    EXPECT_GT(entries[0].first.size(), 2u);
    EXPECT_NE(entries[0].first, entries[1].first);
    MxDbXrecord* record = nullptr;
    EXPECT_EQ(mxdbOpenObject(record, first, Mx::kForWrite), Mx::eOk) << "open elsewhere";
    record->close();
}

TEST_F(AddEntityTest, AnEntityThatASpaceDoesNotTakeStaysTheCallersAndTheSpaceIsClosed) {
    MxDbEntity* line = nullptr;
    ASSERT_EQ(mxdbOpenObject(line, addLine(), Mx::kForWrite), Mx::eOk);
    MxDbObjectId id;
    EXPECT_FALSE(addEntityToCurrentSpace(id, line)) << "it is in the drawing already";
    EXPECT_FALSE(addEntityToDb(id, line));
    EXPECT_FALSE(addEntityToOwnerSpace(id, line, database().imp().roots.modelSpace));
    EXPECT_TRUE(id.isNull());
    line->assertWriteEnabled();
    EXPECT_EQ(line->close(), Mx::eOk) << "it was not closed";
    EXPECT_FALSE(addLine().isNull()) << "the space was";
}

TEST_F(AddEntityTest, AnObjectThatTheDictionaryDoesNotTakeStaysTheCallersAndTheDictionaryIsClosed) {
    MxDbObjectId first, id;
    ASSERT_TRUE(addObjectToDb(first, new MxDbXrecord));
    MxDbObject* record = nullptr;
    ASSERT_EQ(mxdbOpenObject(record, first, Mx::kForWrite), Mx::eOk);
    EXPECT_FALSE(addObjectToDb(id, record)) << "it is in the drawing already";
    EXPECT_TRUE(id.isNull());
    record->assertWriteEnabled();
    EXPECT_EQ(record->close(), Mx::eOk) << "it was not closed";
    EXPECT_TRUE(addObjectToDb(id, new MxDbXrecord)) << "the dictionary was";
}

TEST_F(AddEntityTest, ADictionaryThatIsOpenElsewhereIsNotAddedTo) {
    MxDbObjectId id;
    ASSERT_TRUE(addObjectToDb(id, new MxDbXrecord));
    const MxDbObjectId model = database().imp().roots.modelSpace;
    MxDbDictionary* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, merix::db::DatabaseImp::peek(model)->extensionDictionary(), Mx::kForRead),
              Mx::eOk);
    const auto record = std::make_unique<MxDbXrecord>();
    EXPECT_FALSE(addObjectToDb(id, record.get()));
    reader->close();
    MxDbObject* space = nullptr;
    ASSERT_EQ(mxdbOpenObject(space, model, Mx::kForWrite), Mx::eOk) << "left open";
    EXPECT_FALSE(addObjectToDb(id, record.get())) << "the space itself cannot be read";
    space->close();
}
