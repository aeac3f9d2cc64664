// SPDX-License-Identifier: MIT
#include "merix/ed/drawing_access.h"

#include "command_fixture.h"

using namespace merix;

using DrawingAccessTest = test::CommandFixture;

TEST_F(DrawingAccessTest, NamesOfRecordsAreShortAndWithoutSigns) {
    EXPECT_TRUE(ed::isRecordName(QStringLiteral("Wände 2.OG")));
    EXPECT_TRUE(ed::isRecordName(QString(255, QLatin1Char('x'))));
    EXPECT_FALSE(ed::isRecordName(QString(256, QLatin1Char('x'))));
    for (const char* name : {"", "a|b", "a*", "a/b", "a\nb", "a=b", "\"a", "a`"})
        EXPECT_FALSE(ed::isRecordName(QString::fromUtf8(name))) << name;
}

TEST_F(DrawingAccessTest, AnOpenedObjectIsClosedAgain) {
    type({"LINE", "0,0", "1,1", ""});
    const MxDbObjectId id = entities().front();
    {
        ed::Opened<db::Line> line(id, Mx::kForWrite);
        ASSERT_TRUE(line);
        EXPECT_EQ(ed::Opened<db::Line>(id, Mx::kForWrite).status(), Mx::eOpenForWrite);
        line->assertWriteEnabled();
        line->end = {9, 9, 0};
        line.cancel();
        EXPECT_FALSE(line);
    }
    const ed::Opened<db::Line> line(id, Mx::kForRead);
    EXPECT_EQ(line->end, MxGePoint3d(1, 1, 0)) << "taken back";
    EXPECT_FALSE(ed::Opened<db::Circle>(id, Mx::kForRead));
}

TEST_F(DrawingAccessTest, NothingIsAddedToASpaceThatCannotBeOpened) {
    const ed::Opened<MxDbBlockTableRecord> held(database.currentSpace, Mx::kForRead);
    EXPECT_TRUE(ed::addEntity(std::make_unique<db::Line>()).isNull());
    EXPECT_TRUE(entities().empty());
}
