// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/geom_extents.h"

#include "host/db/construction.h"
#include "tests/phonomark/module_fixture.h"

namespace {

class Ray : public MxDbRay {
public:
    explicit Ray(const MxGePoint3d& base) { m_basePoint = base; }
};
class Xline : public MxDbXline {
public:
    explicit Xline(const MxGePoint3d& base) { m_basePoint = base; }
};

using GeomExtentsTest = ModuleTest;

} // namespace

TEST_F(GeomExtentsTest, NoEntityLeavesTheBoxAlone) {
    MxDbExtents box({1, 2, 3}, {4, 5, 6});
    EXPECT_EQ(getGeomExtentsEx(box, nullptr), 20);
    EXPECT_EQ(box.minPoint(), MxGePoint3d(1, 2, 3));
}

TEST_F(GeomExtentsTest, AnEntityWithoutBoundsIsItsBasePoint) {
    const Ray ray({1, 2, 3});
    const Xline xline({4, 5, 6});
    MxDbExtents box;
    EXPECT_EQ(getGeomExtentsEx(box, &ray), Mx::eOk);
    EXPECT_EQ(box.minPoint(), MxGePoint3d(1, 2, 3));
    EXPECT_EQ(box.maxPoint(), MxGePoint3d(1, 2, 3));
    EXPECT_EQ(getGeomExtentsEx(box, &xline), Mx::eOk);
    EXPECT_EQ(box.minPoint(), MxGePoint3d(4, 5, 6));
    EXPECT_EQ(box.maxPoint(), MxGePoint3d(4, 5, 6));
}

TEST_F(GeomExtentsTest, AnyOtherEntityGivesItsOwnBox) {
    MxDbEntity* line = nullptr;
    ASSERT_EQ(mxdbOpenObject(line, addLine(), Mx::kForRead), Mx::eOk);
    MxDbExtents box;
    EXPECT_EQ(getGeomExtentsEx(box, line), Mx::eOk);
    EXPECT_EQ(box.minPoint(), MxGePoint3d(0, 0, 0));
    EXPECT_EQ(box.maxPoint(), MxGePoint3d(10, 5, 0));
    line->close();
}
