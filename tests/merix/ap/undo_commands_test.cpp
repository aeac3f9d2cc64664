// SPDX-License-Identifier: MIT
#include "merix/ap/undo_commands.h"

#include "tests/merix/ed/command_fixture.h"

using namespace merix;
using testing::HasSubstr;

namespace {

class UndoCommandsTest : public test::CommandFixture {
protected:
    UndoCommandsTest() {
        type({"LINE", "0,0", "10,0", "", "CIRCLE", "0,0", "5", "LAYER", "N", "A", ""});
        shown();
    }
};

} // namespace

TEST_F(UndoCommandsTest, UTakesOneCommandBackAndNamesIt) {
    type({"U"});
    EXPECT_THAT(shown(), HasSubstr("Undone: LAYER"));
    EXPECT_TRUE(database.layerNamed(L"A").isNull());
    EXPECT_EQ(entities().size(), 2U);
}

TEST_F(UndoCommandsTest, SeveralAreUndoneAndRedone) {
    const auto whole = snapshot();
    type({"UNDO", "2"});
    EXPECT_THAT(shown(), HasSubstr("Undone: LAYER, CIRCLE"));
    EXPECT_EQ(entities().size(), 1U);
    type({"REDO", "5"});
    EXPECT_THAT(shown(), HasSubstr("Redone: CIRCLE, LAYER"));
    EXPECT_TRUE(snapshot() == whole);
    type({"REDO", ""});
    EXPECT_THAT(shown(), HasSubstr("Nothing to redo."));
    type({"UNDO", "99", "UNDO", ""});
    EXPECT_THAT(shown(), HasSubstr("Nothing to undo."));
    EXPECT_TRUE(entities().empty());
}

TEST_F(UndoCommandsTest, EnterIsOneAndEscIsNone) {
    type({"UNDO", ""});
    EXPECT_THAT(shown(), HasSubstr("Undone: LAYER"));
    type({"UNDO"});
    EXPECT_EQ(entities().size(), 2U);
    type({"UNDO", "0", "-1", "1"});
    EXPECT_THAT(shown(), HasSubstr("A number above 0 is needed."));
    EXPECT_EQ(entities().size(), 1U);
}

TEST_F(UndoCommandsTest, WithoutADrawingTheyTellSo) {
    ap::DocManager::instance().activate(nullptr);
    type({"U", "UNDO", "REDO"});
    EXPECT_THAT(shown(), HasSubstr("No drawing is open."));
    ap::DocManager::instance().activate(&document);
}

TEST_F(UndoCommandsTest, ADrawingClosedWhileTheNumberIsAskedForIsLeftAlone) {
    ap::DocManager& manager = ap::DocManager::instance();
    ap::Document* other = manager.create();
    for (const char* command : {"UNDO", "REDO"}) {
        ap::Document* gone = manager.create();
        test::Answers answers({QStringLiteral("1")});
        bool closed = false;
        answers.before = [&] {
            if (!std::exchange(closed, true))
                manager.close(*gone);
        };
        ed::CommandStack::instance().runLine(QLatin1String(command));
        EXPECT_TRUE(closed);
        EXPECT_THAT(shown(), testing::Not(HasSubstr("Nothing to")));
    }
    manager.close(*other);
    manager.activate(&document);
}
