// SPDX-License-Identifier: MIT
#include "phonomark/commands/command_group.h"

#include "phonomark/app/module_state.h"
#include "tests/phonomark/module_fixture.h"

using ::testing::HasSubstr;

using DisplayTest = ModuleTest;

TEST_F(DisplayTest, TwiceReturnsToTheFirstState) {
    run("VOICESHOW");
    EXPECT_FALSE(IsShowPhonomark());
    EXPECT_THAT(printed(), HasSubstr("Voice notes are hidden."));
    run("VOICESHOW");
    EXPECT_TRUE(IsShowPhonomark());
    EXPECT_THAT(printed(), HasSubstr("Voice notes are shown."));
}

TEST_F(DisplayTest, TheNotesOfTheCurrentDrawingAreDrawnInTheirNewState) {
    TransformView view(1.0);
    const MxDbObjectId id = addNote();
    view.drawn.clear();
    const auto before = note(id).data().graphicsVersion;
    run("VOICESHOW");
    ASSERT_FALSE(view.drawn.empty());
    EXPECT_EQ(view.drawn.front(), std::make_pair(id, false));
    EXPECT_GT(note(id).data().graphicsVersion, before);
}
