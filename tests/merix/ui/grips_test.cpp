// SPDX-License-Identifier: MIT
#include "merix/ui/grips.h"

#include "tests/merix/ui/window_test.h"

using namespace merix;

namespace {

class GripsTest : public WindowTest {
protected:
    ui::Grips grips;
};

TEST_F(GripsTest, EveryGripPointOfTheEntitiesIsThere) {
    const MxDbObjectId a = addLine({0, 0, 0}, {10, 0, 0}), b = addLine({10, 0, 0}, {10, 10, 0});
    grips.gather({a, b});
    ASSERT_NE(grips.at({0.4, 0, 0}, 0.5), nullptr);
    EXPECT_EQ(grips.at({0.4, 0, 0}, 0.5)->id, a);
    ASSERT_NE(grips.at({10, 10.4, 0}, 0.5), nullptr);
    EXPECT_EQ(grips.at({10, 10.4, 0}, 0.5)->id, b);
    EXPECT_EQ(grips.at({0.6, 0, 0}, 0.5), nullptr);
}

TEST_F(GripsTest, TheNearestOfSeveralIsTaken) {
    grips.gather({addLine({0, 0, 0}, {1, 0, 0})});
    EXPECT_EQ(grips.at({0.9, 0, 0}, 5.0)->point, MxGePoint3d(1, 0, 0));
    EXPECT_EQ(grips.at({0.1, 0, 0}, 5.0)->point, MxGePoint3d(0, 0, 0));
}

TEST_F(GripsTest, GripsInOnePointGetHotTogether) {
    const MxDbObjectId a = addLine({0, 0, 0}, {10, 0, 0}), b = addLine({10, 0, 0}, {10, 10, 0});
    grips.gather({a, b});
    grips.setHot({10, 0, 0}, true);
    ASSERT_EQ(grips.hot().size(), 2U);
    EXPECT_EQ(grips.hot()[0].id, a);
    EXPECT_EQ(grips.hot()[1].id, b);
    EXPECT_TRUE(grips.isHot({10, 0, 0}));
    EXPECT_FALSE(grips.isHot({0, 0, 0}));
    grips.gather({b});
    EXPECT_EQ(grips.hot().size(), 1U); // it stays hot through a change of the selection
    grips.coolDown();
    EXPECT_TRUE(grips.hot().empty());
}

TEST_F(GripsTest, ManyEntitiesHaveNone) {
    std::vector<MxDbObjectId> ids;
    for (int i = 0; i < 100; ++i)
        ids.push_back(addLine({double(i), 0, 0}, {double(i), 1, 0}));
    grips.gather(ids);
    EXPECT_FALSE(grips.all().empty());
    ids.push_back(addLine({0, 0, 0}, {1, 1, 0}));
    grips.gather(ids);
    EXPECT_TRUE(grips.all().empty());
}

} // namespace
