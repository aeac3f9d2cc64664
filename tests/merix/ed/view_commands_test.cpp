// SPDX-License-Identifier: MIT
#include "merix/ed/view_commands.h"

#include "command_fixture.h"

#include "host/ed/commands.h"

using namespace merix;
using testing::HasSubstr;

namespace {

class ViewCommandsTest : public test::CommandFixture {
protected:
    MxGePoint2d center() const { return view->transform().center; }
    double scale() const { return view->transform().unitsPerPixel; }
};

} // namespace

TEST_F(ViewCommandsTest, PanMovesTheFirstPointToTheSecond) {
    typeInVain({"PAN", "10,10", "30,5"});
    EXPECT_EQ(center(), (MxGePoint2d{180, 155}));
    typeInVain({"-PAN", "0,0", "@-20,5"});
    EXPECT_EQ(center(), (MxGePoint2d{200, 150}));
}

TEST_F(ViewCommandsTest, AModulePansWithTwoPoints) {
    EXPECT_EQ(mxedCommand(L"_.-PAN", {MxGePoint3d(300, 100, 0), MxGePoint3d(200, 150, 0)}), 5100);
    EXPECT_EQ(center(), (MxGePoint2d{300, 100})) << "300,100 is in the middle now";
}

TEST_F(ViewCommandsTest, EscLeavesTheViewAlone) {
    const auto before = view->transform();
    for (const auto& lines : std::vector<std::vector<const char*>>{
             {"PAN"}, {"PAN", "1,1"}, {"ZOOM"}, {"ZOOM", "W"}, {"ZOOM", "W", "1,1"}, {"ZOOM", "1,1"}}) {
        typeInVain(lines);
        EXPECT_EQ(view->transform(), before);
    }
}

TEST_F(ViewCommandsTest, ZoomShowsAWindow) {
    type({"ZOOM", "W", "100,100", "@40,30"});
    EXPECT_EQ(center(), (MxGePoint2d{120, 115}));
    EXPECT_DOUBLE_EQ(scale(), 0.1);
    type({"ZOOM", "0,0", "400,300"});
    EXPECT_DOUBLE_EQ(scale(), 1.0);
    type({"ZOOM", "5,5", "5,5"});
    EXPECT_THAT(shown(), HasSubstr("The window has no size."));
}

TEST_F(ViewCommandsTest, ZoomTakesAFactor) {
    type({"ZOOM", "2x"});
    EXPECT_DOUBLE_EQ(scale(), 0.5);
    type({"ZOOM", "0.5"});
    EXPECT_DOUBLE_EQ(scale(), 1.0);
    type({"ZOOM", "In"});
    EXPECT_DOUBLE_EQ(scale(), 0.5);
    type({"ZOOM", "out"});
    EXPECT_DOUBLE_EQ(scale(), 1.0);
    for (const char* text : {"0", "-1x", "x", "1e300", "nan"}) {
        type({"ZOOM", text});
        EXPECT_THAT(shown(), HasSubstr("A zoom factor is a number above 0")) << text;
    }
    EXPECT_DOUBLE_EQ(scale(), 1.0);
}

TEST_F(ViewCommandsTest, ZoomPreviousGoesBackStepByStep) {
    const auto first = view->transform();
    type({"ZOOM", "2x", "PAN", "0,0", "10,10", "ZOOM", "P", "ZOOM", "Previous"});
    EXPECT_EQ(view->transform(), first);
    type({"ZOOM", "P"});
    EXPECT_THAT(shown(), HasSubstr("There is no previous view."));
    type({"ZOOM", "2x"});
    ed::forgetViews(document.database());
    type({"ZOOM", "P"});
    EXPECT_THAT(shown(), HasSubstr("There is no previous view."));
}

TEST_F(ViewCommandsTest, ZoomExtentsTellsWhenThereIsNothing) {
    type({"ZOOM", ""});
    EXPECT_THAT(shown(), HasSubstr("The drawing shows nothing."));
}

TEST_F(ViewCommandsTest, RegenAndRedrawWorkOnTheView) {
    type({"REGEN", "REDRAW"});
    EXPECT_EQ(view->regenerations, 1);
    EXPECT_EQ(view->updates, 1);
    view.reset();
    type({"REGEN", "REDRAW", "ZOOM", "PAN"});
    EXPECT_THAT(shown(), HasSubstr("There is no drawing view."));
}
