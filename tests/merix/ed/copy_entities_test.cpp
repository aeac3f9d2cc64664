// SPDX-License-Identifier: MIT
#include "merix/ed/copy_entities.h"

#include "command_fixture.h"

using namespace merix;
using testing::HasSubstr;

using CopyEntitiesTest = test::CommandFixture;

TEST_F(CopyEntitiesTest, WhatIsNeverCopiedIsCounted) {
    type({"LINE", "0,0", "1,1", "", "LINE", "0,0", "2,2", "", "ERASE", "l", ""});
    std::vector<MxDbObjectId> ids = database.block(database.currentSpace)->entityIds();
    ASSERT_EQ(ids.size(), 2U);
    ed::copyEntities(ids, MxGeMatrix3d::translation({5, 0, 0}));
    EXPECT_EQ(last<db::Line>().start, MxGePoint3d(5, 0, 0));
    EXPECT_EQ(entities().size(), 2U);
    EXPECT_THAT(shown(), HasSubstr("1 cannot be copied."));
}

TEST_F(CopyEntitiesTest, AnotherDrawingGetsTheLayersAlong) {
    type({"LAYER", "M", "Walls", "C", "red", "", "", "LINE", "10,10", "20,10", ""});
    const auto target = ed::emptyDrawing();
    ASSERT_TRUE(ed::copyToDrawing(entities(), *target, {10, 10, 0}));
    const auto& copies = target->imp().block(target->imp().roots.modelSpace)->entityIds();
    ASSERT_EQ(copies.size(), 1U);
    const auto& line = dynamic_cast<const db::Line&>(*db::DatabaseImp::peek(copies[0]));
    EXPECT_EQ(line.start, MxGePoint3d(0, 0, 0));
    EXPECT_EQ(line.layerId(), target->imp().layerNamed(L"Walls"));
    EXPECT_FALSE(ed::copyToDrawing({}, *target, {}));
    EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), document.database());
}
