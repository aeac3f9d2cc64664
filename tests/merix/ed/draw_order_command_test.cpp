// SPDX-License-Identifier: MIT
#include "merix/ed/draw_order_command.h"

#include "command_fixture.h"

#include "merix/db/draw_order.h"

using namespace merix;
using testing::ElementsAre;

namespace {

class DrawOrderCommandTest : public test::CommandFixture {
protected:
    DrawOrderCommandTest() {
        type({"LINE", "10,10", "30,10", "", "LINE", "10,50", "30,50", "", "LINE", "10,90", "30,90", ""});
        lines = entities();
    }
    std::vector<MxDbObjectId> order() const {
        std::vector<MxDbObjectId> sorted;
        return db::drawOrder(*database.block(database.currentSpace), sorted);
    }
    std::vector<MxDbObjectId> lines;
};

} // namespace

TEST_F(DrawOrderCommandTest, TheSelectionGoesToTheFrontOrTheBack) {
    typeUndoable({"DRAWORDER", "20,10", "", "F"});
    EXPECT_THAT(order(), ElementsAre(lines[1], lines[2], lines[0]));
    typeUndoable({"DR", "20,90", "", ""});
    EXPECT_THAT(order(), ElementsAre(lines[2], lines[1], lines[0]));
}

TEST_F(DrawOrderCommandTest, EscEmptySelectionsAndLockedLayersChangeNothing) {
    typeInVain({"DRAWORDER"});
    typeInVain({"DRAWORDER", ""});
    typeInVain({"DRAWORDER", "20,10", ""});
    type({"LAYER", "LO", "0", ""});
    typeInVain({"DRAWORDER", "20,10", "", "F"});
    EXPECT_THAT(order(), ElementsAre(lines[0], lines[1], lines[2]));
}
