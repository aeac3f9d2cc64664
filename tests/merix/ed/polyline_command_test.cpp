// SPDX-License-Identifier: MIT
#include "merix/ed/polyline_command.h"

#include "command_fixture.h"

#include <numbers>

using namespace merix;
using testing::HasSubstr;

using PolylineCommandTest = test::CommandFixture;

TEST_F(PolylineCommandTest, SegmentsMakeOnePolyline) {
    typeUndoable({"PLINE", "0,0", "10,0", "@0,10", "@-10,0", "c"});
    ASSERT_EQ(entities().size(), 1U);
    const auto& polyline = last<db::LwPolyline>();
    EXPECT_EQ(polyline.vertices.size(), 4U);
    EXPECT_TRUE(polyline.closed);
}

TEST_F(PolylineCommandTest, WidthsRunFromStartToEnd) {
    typeUndoable({"PL", "0,0", "w", "2", "4", "10,0", "20,0", ""});
    const auto& vertices = last<db::LwPolyline>().vertices;
    ASSERT_EQ(vertices.size(), 3U);
    EXPECT_EQ(vertices[0].startWidth, 2.0);
    EXPECT_EQ(vertices[0].endWidth, 4.0);
    EXPECT_EQ(vertices[1].startWidth, 4.0) << "the next goes on as wide";
    EXPECT_EQ(vertices[1].endWidth, 4.0);
}

TEST_F(PolylineCommandTest, ArcsGoOnInTheDirectionOfTheSegmentBefore) {
    typeUndoable({"PL", "0,0", "10,0", "a", "10,10", "0,10", "l", "0,20", ""});
    const auto& vertices = last<db::LwPolyline>().vertices;
    ASSERT_EQ(vertices.size(), 5U);
    EXPECT_EQ(vertices[0].bulge, 0.0);
    EXPECT_NEAR(vertices[1].bulge, 1.0, 1e-12) << "half a circle to the left";
    EXPECT_NEAR(vertices[2].bulge, 0.0, 1e-9) << "straight on";
    EXPECT_EQ(vertices[3].bulge, 0.0);
}

TEST_F(PolylineCommandTest, AnArcGoesThroughASecondPoint) {
    typeUndoable({"PL", "10,0", "a", "s", "0,10", "-10,0", "c"});
    const auto& polyline = last<db::LwPolyline>();
    EXPECT_TRUE(polyline.closed);
    EXPECT_NEAR(polyline.vertices[0].bulge, 1.0, 1e-12);
    EXPECT_NEAR(polyline.vertices[1].bulge, 1.0, 1e-9) << "closed by the other half";
}

TEST_F(PolylineCommandTest, UndoTakesTheLastSegmentBack) {
    typeUndoable({"PL", "0,0", "10,0", "20,5", "u", "20,0", ""});
    ASSERT_EQ(last<db::LwPolyline>().vertices.size(), 3U);
    EXPECT_EQ(last<db::LwPolyline>().vertices[2].point, (MxGePoint2d{20, 0}));
    type({"PL", "0,0", "u", "c", "5,5", "5,5", "u", "9,9", ""});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("There is no segment to take back."));
    EXPECT_THAT(said, HasSubstr("There is nothing to close yet."));
    EXPECT_THAT(said, HasSubstr("The segment has no length."));
    EXPECT_EQ(last<db::LwPolyline>().vertices[1].point, (MxGePoint2d{9, 9}));
}

TEST_F(PolylineCommandTest, EscBeforeTheFirstSegmentDrawsNothing) {
    typeInVain({"PLINE"});
    typeInVain({"PLINE", "0,0"});
    typeInVain({"PLINE", "0,0", "w"});
    typeInVain({"PLINE", "0,0", "a", "s", "1,1"});
    typeInVain({"PLINE", "0,0", ""});
}
