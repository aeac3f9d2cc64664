// SPDX-License-Identifier: MIT
#include "merix/gi/display_list.h"

#include <gtest/gtest.h>

#include <numbers>

using namespace merix::gi;

namespace {

DisplayList listOf(Primitive::Kind kind, std::vector<MxGePoint2d> points) {
    DisplayList list;
    list.styles.push_back({});
    list.primitives.push_back({kind, 0, 0, static_cast<std::uint32_t>(points.size())});
    list.points = std::move(points);
    return list;
}

TEST(HitTest, AStrokeIsHitNearItAndNotBesideIt) {
    const DisplayList line = listOf(Primitive::Kind::kStroke, {{0, 0}, {100, 100}});
    EXPECT_TRUE(touches(line, {50, 52, 0}, 3));
    EXPECT_FALSE(touches(line, {50, 60, 0}, 3));
}

TEST(HitTest, AStrokeThatPassesThroughTheApertureIsHitWithoutAnEndInIt) {
    EXPECT_TRUE(touches(listOf(Primitive::Kind::kStroke, {{-1000, 1}, {1000, 1}}), {0, 0, 0}, 2));
}

TEST(HitTest, AFillIsHitInsideFarFromItsEdges) {
    const DisplayList square = listOf(Primitive::Kind::kFill, {{0, 0}, {100, 0}, {100, 100}, {0, 100}});
    EXPECT_TRUE(touches(square, {50, 50, 0}, 1));
    EXPECT_FALSE(touches(square, {150, 50, 0}, 1));
}

TEST(HitTest, ADotIsHit) {
    EXPECT_TRUE(touches(listOf(Primitive::Kind::kStroke, {{5, 5}}), {6, 6, 0}, 2));
}

TEST(HitTest, ACurveIsHitOnItsArcOnly) {
    DisplayList list;
    list.styles.push_back({});
    list.primitives.push_back({Primitive::Kind::kCurve, 0, 0});
    list.curves.push_back({{0, 0}, {10, 0}, {0, 10}, 0, std::numbers::pi / 2});
    EXPECT_TRUE(touches(list, {7.07, 7.07, 0}, 0.1));
    EXPECT_FALSE(touches(list, {-7.07, 7.07, 0}, 0.1));
    EXPECT_FALSE(touches(list, {0, 0, 0}, 1));
}

TEST(HitTest, ATextIsHitInItsBoxAlsoBetweenTheLetters) {
    DisplayList list;
    list.styles.push_back({});
    list.primitives.push_back({Primitive::Kind::kText, 0, 0});
    PlacedText text;
    text.outline.advance = 4.0;
    text.toWorld = QTransform(0, 10, -10, 0, 100, 0); // upwards, capitals 10 high
    list.texts.push_back(text);
    EXPECT_TRUE(touches(list, {95, 20, 0}, 0.5));
    EXPECT_FALSE(touches(list, {105, 20, 0}, 0.5));
    EXPECT_FALSE(touches(list, {95, 50, 0}, 0.5));
}

} // namespace
