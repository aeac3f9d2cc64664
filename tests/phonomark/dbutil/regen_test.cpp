// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/regen.h"

#include "host/ed/variables.h"
#include "tests/phonomark/module_fixture.h"

using testing::HasSubstr;

namespace {

/// Counts how often everything is made anew.
class CountingView : public TransformView {
public:
    using TransformView::TransformView;
    void regenerate() override { ++count; }
    int count = 0;
};

using RegenTest = ModuleTest;

int echo() {
    MxEdVariableValue value;
    EXPECT_EQ(mxedGetVar(L"CMDECHO", value), Mx::eOk);
    return std::get<int>(value);
}

} // namespace

TEST_F(RegenTest, TheGraphicsAreMadeAnewWithAndWithoutEcho) {
    CountingView view(1.0);
    printed();
    InvokeRegenCommand(false);
    EXPECT_EQ(view.count, 1);
    EXPECT_EQ(printed(), "");
    InvokeRegenCommand(true);
    EXPECT_EQ(view.count, 2);
    EXPECT_NE(printed().find("egen"), std::string::npos);
}

TEST_F(RegenTest, TheEchoIsSetBackToWhatItWas) {
    const CountingView view(1.0);
    for (const int before : {1, 0}) {
        ASSERT_EQ(mxedSetVar(L"CMDECHO", before), Mx::eOk);
        InvokeRegenCommand(false);
        EXPECT_EQ(echo(), before);
        InvokeRegenCommand(true);
        EXPECT_EQ(echo(), before);
    }
    mxedSetVar(L"CMDECHO", 1);
}

TEST_F(RegenTest, WithoutADrawingThereIsNothingToMakeAnew) {
    CountingView view(1.0);
    merix::ap::DocManager::instance().close(document());
    printed();
    InvokeRegenCommand(false);
    EXPECT_EQ(view.count, 0);
    EXPECT_EQ(printed(), "");
    EXPECT_EQ(echo(), 1) << "as before";
    InvokeRegenCommand(true);
    EXPECT_EQ(view.count, 0);
    EXPECT_EQ(echo(), 1);
}
