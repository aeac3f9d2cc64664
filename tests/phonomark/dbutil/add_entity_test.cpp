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
