// SPDX-License-Identifier: MIT
#include "merix/ed/setvar_command.h"

#include "command_fixture.h"

#include "merix/ed/variables.h"

using namespace merix;
using testing::HasSubstr;

using SetvarCommandTest = test::CommandFixture;

TEST_F(SetvarCommandTest, SetsAVariableOfEachType) {
    typeUndoable({"SETVAR", "ltscale", "2.5"});
    EXPECT_EQ(database.header.linetypeScale, 2.5);
    typeUndoable({"SETVAR", "CECOLOR", "red"});
    EXPECT_EQ(database.header.currentColor, 1);
    typeUndoable({"SET", "CELWEIGHT", "25"});
    EXPECT_EQ(database.header.currentLineWeight, 25);
}

TEST_F(SetvarCommandTest, RefusesWhatTheVariableDoesNotTake) {
    typeInVain({"SETVAR", "CLAYER", "nosuch", "SETVAR", "nosuch", "SETVAR", "VIEWCTR"});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("CLAYER does not take the value nosuch."));
    EXPECT_THAT(said, HasSubstr("There is no variable nosuch."));
    EXPECT_THAT(said, HasSubstr("VIEWCTR = 200,150,0 (read only)"));
}

TEST_F(SetvarCommandTest, ListsThemAll) {
    typeInVain({"SETVAR", "?"});
    const std::string said = shown();
    for (const ed::Variable& variable : ed::systemVariables())
        EXPECT_THAT(said, HasSubstr(std::string("\n") + variable.name + " = "));
}

TEST_F(SetvarCommandTest, EnterAndEscChangeNothing) {
    typeInVain({"SETVAR"});
    typeInVain({"SETVAR", "LTSCALE"});
    typeInVain({"SETVAR", "LTSCALE", ""});
    typeInVain({"SETVAR", "CLAYER", ""});
}
