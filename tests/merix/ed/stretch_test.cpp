// SPDX-License-Identifier: MIT
#include "merix/ed/stretch.h"

#include "command_fixture.h"

#include "merix/ed/drawing_access.h"

using namespace merix;

namespace {

class StretchTest : public test::CommandFixture {
protected:
    void stretchLast(const MxDbExtents& box, const MxGeVector3d& by) {
        const ed::Opened<MxDbEntity> open(entities().back(), Mx::kForWrite);
        ASSERT_TRUE(open);
        EXPECT_EQ(ed::stretch(*open, box, by), Mx::eOk);
    }
};

} // namespace

TEST_F(StretchTest, TheMiddleOfALineIsNoPointOfItsOwn) {
    type({"LINE", "0,0", "100,0", ""});
    stretchLast({{40, -10, 0}, {60, 10, 0}}, {0, 50, 0});
    EXPECT_EQ(last<db::Line>().start, MxGePoint3d(0, 0, 0));
    EXPECT_EQ(last<db::Line>().end, MxGePoint3d(100, 0, 0));
}

TEST_F(StretchTest, TheEdgeOfTheBoxBelongsToIt) {
    type({"LINE", "0,0", "100,0", ""});
    stretchLast({{100, 0, 0}, {120, 10, 0}}, {5, 0, 0});
    EXPECT_EQ(last<db::Line>().end, MxGePoint3d(105, 0, 0));
}

TEST_F(StretchTest, AnArcKeepsTheEndThatIsNotInTheBox) {
    type({"ARC", "c", "0,0", "10,0", "0,10"});
    stretchLast({{9, -1, 0}, {11, 1, 0}}, {5, 0, 0});
    const auto& arc = last<db::Arc>();
    EXPECT_NEAR(arc.center.x + arc.radius * std::cos(arc.endAngle), 0.0, 1e-9);
    EXPECT_NEAR(arc.center.y + arc.radius * std::sin(arc.endAngle), 10.0, 1e-9);
    EXPECT_NEAR(arc.center.x + arc.radius * std::cos(arc.startAngle), 15.0, 1e-9);
    EXPECT_NEAR(arc.center.y + arc.radius * std::sin(arc.startAngle), 0.0, 1e-9);
}

TEST_F(StretchTest, ATextGoesWithItsInsertionPoint) {
    type({"TEXT", "0,0", "5", "0", "long enough to reach out of the box"});
    stretchLast({{-1, -1, 0}, {1, 1, 0}}, {7, 0, 0});
    EXPECT_EQ(last<db::Text>().position, MxGePoint3d(7, 0, 0));
    stretchLast({{20, -1, 0}, {30, 5, 0}}, {7, 0, 0});
    EXPECT_EQ(last<db::Text>().position, MxGePoint3d(7, 0, 0));
}
