// SPDX-License-Identifier: MIT
#include "merix/ed/transform_commands.h"

#include "command_fixture.h"

#include "merix/ed/copy_entities.h"

#include <limits>
#include <numbers>

using namespace merix;
using testing::HasSubstr;

namespace {

/// A line from 10,10 to 50,10 and a circle about 100,100.
class TransformCommandsTest : public test::CommandFixture {
protected:
    TransformCommandsTest() {
        type({"LINE", "10,10", "50,10", "", "CIRCLE", "100,100", "20"});
        shown();
    }
    static void expectNear(const MxGePoint3d& a, const MxGePoint3d& b) {
        EXPECT_NEAR(a.x, b.x, 1e-9);
        EXPECT_NEAR(a.y, b.y, 1e-9);
    }
};

} // namespace

TEST_F(TransformCommandsTest, MoveBringsTheBasePointToTheSecond) {
    typeUndoable({"MOVE", "all", "", "10,10", "@5,7"});
    EXPECT_EQ(entity<db::Line>(0).start, MxGePoint3d(15, 17, 0));
    EXPECT_EQ(entity<db::Circle>(1).center, MxGePoint3d(105, 107, 0));
    typeUndoable({"M", "p", "", "1,2", ""});
    EXPECT_EQ(entity<db::Line>(0).start, MxGePoint3d(16, 19, 0)) << "Enter takes the base point for the way";
}

TEST_F(TransformCommandsTest, CopyMakesAsManyAsArePlaced) {
    typeUndoable({"COPY", "30,10", "", "0,0", "0,20", "0,40", "0,60", ""});
    ASSERT_EQ(entities().size(), 5U);
    EXPECT_EQ(entity<db::Line>(0).start, MxGePoint3d(10, 10, 0));
    EXPECT_EQ(entity<db::Line>(4).start, MxGePoint3d(10, 70, 0));
    typeUndoable({"CO", "30,10", "", "0,1", ""});
    EXPECT_EQ(last<db::Line>().start, MxGePoint3d(10, 11, 0));
    type({"CP", "30,10", "", "0,0", "5,5"});
    EXPECT_EQ(entities().size(), 7U) << "Esc keeps what was placed";
}

TEST_F(TransformCommandsTest, RotateTurnsAboutTheBasePoint) {
    typeUndoable({"ROTATE", "30,10", "", "10,10", "90"});
    expectNear(entity<db::Line>(0).end, {10, 50, 0});
    typeUndoable({"RO", "p", "", "10,10", "r", "90", "180"});
    expectNear(entity<db::Line>(0).end, {-30, 10, 0});
    typeUndoable({"RO", "p", "", "10,10", "r", "10,10", "0,10", "10,99"});
    expectNear(entity<db::Line>(0).end, {10, 50, 0});
}

TEST_F(TransformCommandsTest, ScaleEnlargesFromTheBasePoint) {
    typeUndoable({"SCALE", "all", "", "0,0", "2"});
    EXPECT_EQ(entity<db::Line>(0).end, MxGePoint3d(100, 20, 0));
    EXPECT_EQ(entity<db::Circle>(1).radius, 40.0);
    typeUndoable({"SC", "p", "", "0,0", "r", "4", "2"});
    EXPECT_EQ(entity<db::Circle>(1).radius, 20.0);
    typeInVain({"SC", "all", "", "0,0", "0", "-1"});
    EXPECT_THAT(shown(), HasSubstr("A number above 0 is needed."));
}

TEST_F(TransformCommandsTest, MirrorCopiesOrTurnsOver) {
    typeUndoable({"MIRROR", "30,10", "", "0,0", "0,10", ""});
    ASSERT_EQ(entities().size(), 3U);
    expectNear(last<db::Line>().end, {-50, 10, 0});
    typeUndoable({"MI", "30,10", "", "0,0", "10,0", "y"});
    ASSERT_EQ(entities().size(), 3U);
    expectNear(entity<db::Line>(0).end, {50, -10, 0});
    typeInVain({"MI", "all", "", "5,5", "5,5"});
    EXPECT_THAT(shown(), HasSubstr("The mirror line has no direction."));
}

TEST_F(TransformCommandsTest, AMirrorAlongAnAxisKeepsTheOtherCoordinateToTheLastDigit) {
    const MxGePoint3d point(0.1, 150.3, 7.0);
    EXPECT_EQ(ed::mirrorAbout({140, 150, 0}, {0, -90, 0}) * point, MxGePoint3d(279.9, 150.3, 7.0));
    EXPECT_EQ(ed::mirrorAbout({0, 0, 0}, {1e-3, 0, 0}) * point, MxGePoint3d(0.1, -150.3, 7.0));
    expectNear(ed::mirrorAbout({1, 1, 0}, {2, 2, 0}) * point, {150.3, 0.1, 7.0});
}

TEST_F(TransformCommandsTest, WhatCannotTakeAMapStaysAndIsCounted) {
    const MxGeMatrix3d squeeze = MxGeMatrix3d::scaling(2, 1, 1);
    const auto before = snapshot();
    ed::transformEntities({entities()[1]}, squeeze);
    EXPECT_TRUE(snapshot() == before);
    EXPECT_THAT(shown(), HasSubstr("1 could not be changed."));
}

TEST_F(TransformCommandsTest, LockedLayersEscAndEmptySelectionsChangeNothing) {
    for (const char* command : {"MOVE", "COPY", "ROTATE", "SCALE", "MIRROR"}) {
        typeInVain({command});
        typeInVain({command, ""});
        typeInVain({command, "all"});
        typeInVain({command, "all", ""});
        typeInVain({command, "all", "", "1,1"});
    }
    typeInVain({"ROTATE", "all", "", "1,1", "r"});
    typeInVain({"ROTATE", "all", "", "1,1", "r", "10"});
    typeInVain({"SCALE", "all", "", "1,1", "r", "10"});
    typeInVain({"MIRROR", "all", "", "1,1", "2,2"});
    type({"LAYER", "LO", "0", ""});
    shown();
    for (const char* command : {"MOVE", "ROTATE", "SCALE", "MIRROR"}) {
        typeInVain({command, "all", ""});
        EXPECT_THAT(shown(), HasSubstr("2 were on a locked layer."));
    }
}

TEST_F(TransformCommandsTest, WhatWouldLeaveAllCoordinatesIsRefused) {
    typeInVain({"SCALE", "all", "", "0,0", "1e300"});
    EXPECT_THAT(shown(), HasSubstr("2 could not be changed."));
    typeInVain({"SCALE", "all", "", "1e90,0", "1e300"});
    EXPECT_THAT(shown(), HasSubstr("That is out of range."));
    typeInVain({"MOVE", "all", "", "0,0", "1e308,0", "@1e308,0"});
    EXPECT_THAT(shown(), HasSubstr("That point is too far away."));
    ed::copyEntities(entities(), MxGeMatrix3d::translation({std::numeric_limits<double>::infinity(), 0, 0}));
    EXPECT_EQ(entities().size(), 2U);
}
