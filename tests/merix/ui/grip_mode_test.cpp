// SPDX-License-Identifier: MIT
#include "merix/ui/grip_mode.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <cmath>

using namespace merix::ui;

namespace {

const MxGePoint3d kBase(10, 20, 0), kPoint(14, 20, 0);

void expectAt(const std::optional<MxGeMatrix3d>& map, double x, double y) {
    ASSERT_TRUE(map);
    const MxGePoint3d p = *map * kPoint;
    EXPECT_NEAR(p.x, x, 1e-9);
    EXPECT_NEAR(p.y, y, 1e-9);
}

TEST(GripMode, EnterLeadsThroughAllAndBack) {
    QStringList names;
    GripMode mode = GripMode::kStretch;
    do {
        names << QString::fromWCharArray(undoNameOf(mode)) << QString::fromWCharArray(commandOf(mode));
        mode = nextMode(mode);
    } while (mode != GripMode::kStretch);
    EXPECT_EQ(names.join(QLatin1Char(',')),
              QStringLiteral("Grip stretch,GRIP_STRETCH,Grip move,GRIP_MOVE,Grip rotate,GRIP_ROTATE,"
                             "Grip scale,GRIP_SCALE,Grip mirror,GRIP_MIRROR"));
}

TEST(GripMode, AWordOrItsOnlyBeginningNamesAnOption) {
    const auto named = [](const char* word) { return modeNamed(optionNamed(QLatin1String(word))); };
    EXPECT_EQ(named("mirror"), GripMode::kMirror);
    EXPECT_EQ(named("MO"), GripMode::kMove);
    EXPECT_EQ(named("ST"), GripMode::kStretch);
    EXPECT_EQ(named("sc"), GripMode::kScale);
    EXPECT_EQ(named("r"), GripMode::kRotate);
    EXPECT_EQ(named("M"), std::nullopt);
    EXPECT_EQ(named("ERASE"), std::nullopt);
    EXPECT_EQ(named("c"), std::nullopt);
    EXPECT_EQ(optionNamed(QStringLiteral("c")), QStringLiteral("Copy"));
    EXPECT_EQ(optionNamed(QStringLiteral("BASE")), QStringLiteral("Base"));
}

TEST(GripMode, ThePromptOffersTheOthersAndSaysWhatEnterDoes) {
    EXPECT_EQ(promptOf(GripMode::kStretch, false),
              QStringLiteral("Stretch to or [Base/Move/Rotate/Scale/Mirror] <Move>: "));
    EXPECT_EQ(promptOf(GripMode::kMirror, true),
              QStringLiteral(
                  "Second point of the mirror line (copies) or [Base/Copy/Stretch/Move/Rotate/Scale] <Stretch>: "));
    EXPECT_EQ(optionsOf(GripMode::kScale), QStringLiteral("Base Copy Mirror Stretch Move Rotate"));
}

TEST(GripMode, TheHandShowsWhereTheSelectionGoes) {
    expectAt(mapOf(GripMode::kMove, kBase, MxGePoint3d(13, 15, 0)), 17, 15);
    expectAt(mapOf(GripMode::kRotate, kBase, MxGePoint3d(10, 99, 0)), 10, 24);
    expectAt(mapOf(GripMode::kScale, kBase, MxGePoint3d(10, 23, 0)), 22, 20);
    expectAt(mapOf(GripMode::kMirror, kBase, MxGePoint3d(11, 21, 0)), 10, 24);
    EXPECT_FALSE(mapOf(GripMode::kStretch, kBase, kPoint));
}

TEST(GripMode, AHandAtTheBaseOrAboveItShowsNothing) {
    for (const GripMode mode : {GripMode::kMove, GripMode::kRotate, GripMode::kScale, GripMode::kMirror}) {
        EXPECT_FALSE(mapOf(mode, kBase, kBase));
        EXPECT_FALSE(mapOf(mode, kBase, MxGePoint3d(10, 20, 5)));
    }
}

TEST(GripMode, AnglesAndFactorsMayBeNumbers) {
    expectAt(mapOf(GripMode::kRotate, kBase, std::acos(-1.0)), 6, 20);
    expectAt(mapOf(GripMode::kScale, kBase, 0.5), 12, 20);
    EXPECT_FALSE(mapOf(GripMode::kMove, kBase, 0.5));
}

} // namespace
