// SPDX-License-Identifier: MIT
#include "merix/ge/ocs.h"

#include <gtest/gtest.h>

namespace {

using merix::ge::Affine;
using merix::ge::ocsToWorld;

void expectNear(const MxGeVector3d& found, const MxGeVector3d& wanted) {
    EXPECT_NEAR(found.x, wanted.x, 1e-12);
    EXPECT_NEAR(found.y, wanted.y, 1e-12);
    EXPECT_NEAR(found.z, wanted.z, 1e-12);
}

TEST(Ocs, TheWorldsOwnAxisAndNoAxisLeavePointsAsTheyAre) {
    for (const MxGeVector3d& normal : {MxGeVector3d(0, 0, 1), MxGeVector3d(0, 0, 5), MxGeVector3d()})
        EXPECT_EQ(ocsToWorld(normal) * MxGePoint3d(1, 2, 3), MxGePoint3d(1, 2, 3));
}

TEST(Ocs, AMirroredDrawingHasItsXReversed) {
    expectNear((ocsToWorld({0, 0, -1}) * MxGePoint3d(1, 2, 3)).asVector(), {-1, 2, -3});
}

TEST(Ocs, TheXAxisLiesInTheWorldsPlaneUnlessTheNormalIsCloseToZ) {
    expectNear(ocsToWorld({1, 0, 0}).x, {0, 1, 0});
    expectNear(ocsToWorld({1, 0, 0}).y, {0, 0, 1});
    // Within 1/64 of the z axis it comes from the y axis instead.
    EXPECT_GT(ocsToWorld({0.01, 0, 1}).x.x, 0.99);
    EXPECT_GT(ocsToWorld({0.02, 0, 1}).x.y, 0.99);
}

TEST(Ocs, TheAxesAreOfUnitLengthAndSquareToEachOther) {
    const Affine ocs = ocsToWorld({1, -2, 3});
    EXPECT_NEAR(ocs.x.length(), 1, 1e-12);
    EXPECT_NEAR(ocs.y.length(), 1, 1e-12);
    EXPECT_NEAR(ocs.x.dot(ocs.y), 0, 1e-12);
    expectNear(ocs.x.cross(ocs.y), ocs.z);
}

TEST(Affine, AProductDoesTheRightFactorFirst) {
    const Affine map = Affine::translation({10, 0, 0}) * Affine::rotation(std::acos(0.0)) * Affine::scaling(2, 3, 1);
    expectNear((map * MxGePoint3d(1, 1, 0)).asVector(), {7, 2, 0});
    expectNear(map * MxGeVector3d(1, 1, 0), {-3, 2, 0});
}

} // namespace
