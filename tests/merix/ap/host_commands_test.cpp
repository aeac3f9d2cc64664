// SPDX-License-Identifier: MIT
// The whole list of the host's commands: what is registered is in it, can be called by either name, and is undone as
// one step where it changes the drawing.
#include "merix/ap/document_imp.h"

#include "merix/ed/view_commands.h"
#include "tests/merix/ed/command_fixture.h"

#include <map>
#include <set>

using namespace merix;

namespace {

enum class Does { kDraw, kView, kSession, kNothing };

struct Case {
    Does does;
    std::vector<const char*> answers; ///< that make it do what it does, in a drawing with a line and a circle
};

const std::map<QString, Case>& cases() {
    static const std::map<QString, Case> all{
        {QStringLiteral("-LAYER"), {Does::kDraw, {"N", "A", ""}}},
        {QStringLiteral("-LAYOUT"), {Does::kDraw, {"N", "A"}}},
        {QStringLiteral("-PAN"), {Does::kView, {"0,0", "5,5"}}},
        {QStringLiteral("ARC"), {Does::kDraw, {"10,0", "0,10", "-10,0"}}},
        {QStringLiteral("AUTOSAVE"), {Does::kSession, {}}},
        {QStringLiteral("AUDIT"), {Does::kNothing, {}}},
        {QStringLiteral("CHPROP"), {Does::kDraw, {"all", "", "C", "red", ""}}},
        {QStringLiteral("CIRCLE"), {Does::kDraw, {"0,0", "5"}}},
        {QStringLiteral("CLOSE"), {Does::kSession, {}}},
        {QStringLiteral("CLOSEALL"), {Does::kSession, {}}},
        {QStringLiteral("COPY"), {Does::kDraw, {"all", "", "0,0", "5,5", ""}}},
        {QStringLiteral("COPYCLIP"), {Does::kNothing, {"all", ""}}},
        {QStringLiteral("CUTCLIP"), {Does::kDraw, {"all", ""}}},
        {QStringLiteral("DRAWORDER"), {Does::kDraw, {"30,10", "", "F"}}},
        {QStringLiteral("ERASE"), {Does::kDraw, {"all", ""}}},
        {QStringLiteral("LAYER"), {Does::kDraw, {"N", "A", ""}}},
        {QStringLiteral("LAYOUT"), {Does::kDraw, {"N", "A"}}},
        {QStringLiteral("LAYOUTSWITCH"), {Does::kNothing, {"Layout1"}}},
        {QStringLiteral("LINE"), {Does::kDraw, {"0,0", "5,5", ""}}},
        {QStringLiteral("MIRROR"), {Does::kDraw, {"all", "", "0,0", "0,1", ""}}},
        {QStringLiteral("MOVE"), {Does::kDraw, {"all", "", "0,0", "5,5"}}},
        {QStringLiteral("NEW"), {Does::kSession, {}}},
        {QStringLiteral("OPEN"), {Does::kSession, {}}},
        {QStringLiteral("PAN"), {Does::kView, {"0,0", "5,5"}}},
        {QStringLiteral("PASTECLIP"), {Does::kDraw, {"50,50"}}},
        {QStringLiteral("PLINE"), {Does::kDraw, {"0,0", "5,5", ""}}},
        {QStringLiteral("QUIT"), {Does::kSession, {}}},
        {QStringLiteral("RECTANG"), {Does::kDraw, {"0,0", "5,5"}}},
        {QStringLiteral("RECOVER"), {Does::kSession, {}}},
        {QStringLiteral("REDO"), {Does::kSession, {}}},
        {QStringLiteral("REDRAW"), {Does::kView, {}}},
        {QStringLiteral("REGEN"), {Does::kView, {}}},
        {QStringLiteral("ROTATE"), {Does::kDraw, {"all", "", "0,0", "30"}}},
        {QStringLiteral("SAVE"), {Does::kSession, {}}},
        {QStringLiteral("SAVEAS"), {Does::kSession, {}}},
        {QStringLiteral("SCALE"), {Does::kDraw, {"all", "", "0,0", "3"}}},
        {QStringLiteral("SETVAR"), {Does::kDraw, {"LTSCALE", "2"}}},
        {QStringLiteral("STRETCH"), {Does::kDraw, {"c", "0,0", "300,300", "", "0,0", "5,5"}}},
        {QStringLiteral("TEXT"), {Does::kDraw, {"0,0", "5", "0", "text"}}},
        {QStringLiteral("U"), {Does::kSession, {}}},
        {QStringLiteral("UNDO"), {Does::kSession, {}}},
        {QStringLiteral("WBLOCK"), {Does::kNothing, {"no-such-folder/a.dxf", "0,0", "all", ""}}},
        {QStringLiteral("ZOOM"), {Does::kView, {"2x"}}},
    };
    return all;
}

std::set<QString> registered() {
    std::set<QString> names;
    const QString group = QString::fromWCharArray(ed::kHostGroup) + QLatin1Char('.');
    for (const QString& command : ed::CommandStack::instance().commands())
        if (command.startsWith(group))
            names.insert(command.mid(group.size()));
    return names;
}

class HostCommandsTest : public test::CommandFixture {
protected:
    HostCommandsTest() { type({"LINE", "10,10", "50,10", "", "CIRCLE", "100,100", "20"}); }
};

} // namespace

TEST_F(HostCommandsTest, TheListIsWhole) {
    std::set<QString> listed;
    for (const auto& [name, what] : cases())
        listed.insert(name);
    EXPECT_EQ(registered(), listed);
}

TEST_F(HostCommandsTest, EveryAliasStandsForACommandAndHidesNone) {
    const std::set<QString> names = registered();
    const auto& aliases = ed::CommandStack::instance().aliases();
    for (auto alias = aliases.begin(); alias != aliases.end(); ++alias) {
        EXPECT_TRUE(names.count(alias.value())) << alias.key().toStdString();
        EXPECT_FALSE(names.count(alias.key())) << alias.key().toStdString();
    }
}

TEST_F(HostCommandsTest, EachThatChangesTheDrawingIsOneStepAndNoOtherIsAny) {
    type({"COPYCLIP", "all", ""});
    for (const auto& [name, what] : cases()) {
        if (what.does == Does::kSession)
            continue;
        SCOPED_TRACE(name.toStdString());
        const auto before = snapshot();
        const std::size_t steps = database.undo.undoUnits().size();
        std::vector<QString> lines{QLatin1Char('_') + name};
        for (const char* answer : what.answers)
            lines.push_back(QString::fromUtf8(answer));
        type(lines);
        if (what.does == Does::kDraw) {
            EXPECT_FALSE(snapshot() == before) << shown();
            ASSERT_EQ(database.undo.undoUnits().size(), steps + 1);
            EXPECT_EQ(QString::fromStdWString(database.undo.undoUnits().back().name), name);
            ASSERT_TRUE(database.undo.undo());
        }
        EXPECT_TRUE(snapshot() == before);
        EXPECT_EQ(database.undo.undoUnits().size(), steps);
        document.setCurrentLayout(QStringLiteral("Model"));
    }
}

TEST_F(HostCommandsTest, EscAtTheFirstPromptOfAnyLeavesEverything) {
    for (const auto& [name, what] : cases()) {
        if (what.does == Does::kSession)
            continue;
        SCOPED_TRACE(name.toStdString());
        const auto before = snapshot();
        const std::size_t steps = database.undo.undoUnits().size();
        type(std::vector<QString>{QLatin1Char('_') + name});
        EXPECT_TRUE(snapshot() == before);
        EXPECT_EQ(database.undo.undoUnits().size(), steps);
    }
}
