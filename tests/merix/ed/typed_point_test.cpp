// SPDX-License-Identifier: MIT
#include "merix/ed/typed_point.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace merix::ed;

namespace {

const MxGePoint3d kLast(10, 20, 5);

std::optional<MxGePoint3d> typed(const char* text) {
    return parseTypedPoint(QString::fromUtf8(text), kLast);
}

} // namespace

TEST(TypedPoint, AbsoluteCoordinates) {
    EXPECT_EQ(typed("1.5,-2"), MxGePoint3d(1.5, -2, 0));
    EXPECT_EQ(typed("1,2,3"), MxGePoint3d(1, 2, 3));
    EXPECT_EQ(typed("1e3,2"), MxGePoint3d(1000, 2, 0));
}

TEST(TypedPoint, AtCountsFromTheLastPoint) {
    EXPECT_EQ(typed("@1,2"), MxGePoint3d(11, 22, 5));
    EXPECT_EQ(typed("@"), MxGePoint3d(10, 20, 5));
}

TEST(TypedPoint, DistanceAndAngleInDegrees) {
    const auto point = typed("@10<90");
    ASSERT_TRUE(point);
    EXPECT_NEAR(point->x, 10, 1e-12);
    EXPECT_NEAR(point->y, 30, 1e-12);
    EXPECT_EQ(typed("5<0"), MxGePoint3d(5, 0, 0));
}

TEST(TypedPoint, WhatIsNoPointIsNone) {
    for (const char* text :
         {"", "1", "1,", ",1", "1,2,3,4", "1,x", "nan,1", "inf,1", "1e999,1", "1<", "1<2<3", "1;2", "1,2 3"})
        EXPECT_FALSE(typed(text)) << text;
}

TEST(TypedPoint, IsShownWithAtMostTenDigits) {
    EXPECT_EQ(formatPoint({1.0 / 3, -2, 9}), QStringLiteral("0.3333333333,-2"));
}

TEST(TypedPoint, FarAwayIsOutOfReach) {
    EXPECT_TRUE(isInReach({1e100, -1e100, 0}));
    EXPECT_FALSE(isInReach({1e101, 0, 0}));
    EXPECT_FALSE(isInReach({0, -1e101, 0}));
    EXPECT_FALSE(isInReach({0, 0, std::nan("")}));
    EXPECT_FALSE(isInReach({0, 0, std::numeric_limits<double>::infinity()}));
}
