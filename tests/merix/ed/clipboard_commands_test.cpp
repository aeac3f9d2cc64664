// SPDX-License-Identifier: MIT
#include "merix/ed/clipboard_commands.h"

#include "command_fixture.h"

using namespace merix;
using testing::HasSubstr;

namespace {

class ClipboardCommandsTest : public test::CommandFixture {
protected:
    ClipboardCommandsTest() {
        type({"LAYER", "M", "Walls", "", "LINE", "10,20", "30,20", ""});
        shown();
    }
};

} // namespace

TEST_F(ClipboardCommandsTest, WhatIsCopiedIsPastedByItsLowerLeftCorner) {
    typeInVain({"COPYCLIP", "all", ""});
    typeUndoable({"PASTECLIP", "100,100"});
    typeUndoable({"PASTECLIP", "200,100"});
    ASSERT_EQ(entities().size(), 3U);
    EXPECT_EQ(entity<db::Line>(1).start, MxGePoint3d(100, 100, 0));
    EXPECT_EQ(entity<db::Line>(2).end, MxGePoint3d(220, 100, 0));
    EXPECT_EQ(last<db::Line>().layerId(), database.layerNamed(L"Walls"));
}

TEST_F(ClipboardCommandsTest, WhatIsCutIsPastedIntoAnotherDrawing) {
    typeUndoable({"CUTCLIP", "all", ""});
    EXPECT_TRUE(entities().empty());
    ap::Document& other = *ap::DocManager::instance().create();
    type({"PASTECLIP", "5,5"});
    const auto& imp = other.database()->imp();
    ASSERT_EQ(imp.block(imp.currentSpace)->entityIds().size(), 1U);
    EXPECT_FALSE(imp.layerNamed(L"Walls").isNull());
    ap::DocManager::instance().close(other);
}

TEST_F(ClipboardCommandsTest, EscEmptySelectionsAndLockedLayersChangeNothing) {
    typeInVain({"COPYCLIP", "all", ""});
    typeInVain({"PASTECLIP"});
    typeInVain({"CUTCLIP"});
    typeInVain({"CUTCLIP", ""});
    type({"LAYER", "LO", "Walls", ""});
    typeInVain({"CUTCLIP", "all", ""});
    EXPECT_THAT(shown(), HasSubstr("1 was on a locked layer."));
    typeInVain({"COPYCLIP", "all", ""});
    typeUndoable({"PASTECLIP", "0,0"});
}
