// SPDX-License-Identifier: MIT
#include "phonomark/app/mouse_filter.h"

#include "merix/ed/editor.h"
#include "phonomark/app/module_state.h"
#include "phonomark/app/ui_context.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/module_fixture.h"

using MouseFilterTest = ModuleTest;

TEST_F(MouseFilterTest, AMoveWithTheMiddleButtonAloneHoldsRedrawsBack) {
    tagMSG message;
    message.message = 0x200;
    message.wParam = 0x10;
    EXPECT_EQ(filterMouse(&message), 0);
    EXPECT_FALSE(bEntUpd);
    message.wParam = 0x11;
    EXPECT_EQ(filterMouse(&message), 0);
    EXPECT_TRUE(bEntUpd);
    bEntUpd = false;
    message.message = 0x201;
    message.wParam = 0x10;
    filterMouse(&message);
    EXPECT_TRUE(bEntUpd);
}

TEST_F(MouseFilterTest, AViewChangeRedrawsNotesUnlessPannedOrHidden) {
    const MxDbObjectId id = addNote();
    const auto changes = [&] {
        const auto before = note(id).data().graphicsVersion;
        merix::ed::Editor::instance().notifyViewChanged();
        return note(id).data().graphicsVersion > before;
    };
    EXPECT_TRUE(changes());
    bEntUpd = false;
    EXPECT_FALSE(changes());
    bEntUpd = true;
    SetPhonomarkVar(false);
    EXPECT_FALSE(changes());
    SetPhonomarkVar(true);
}

TEST_F(MouseFilterTest, TheFilterIsNotInstalledAndSaysSo) {
    RegisterFilterWinMsg();
    EXPECT_THAT(printed(), ::testing::HasSubstr("Can't register Windows Msg hook - filterMouse"));
    RemoveFilterWinMsg();
}

TEST_F(MouseFilterTest, TheContextMenuIsEmpty) {
    PhonomarkUICtxApp context;
    EXPECT_EQ(context.getMenuContext(), nullptr);
    context.onCommand(1);
}
