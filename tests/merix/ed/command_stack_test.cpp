// SPDX-License-Identifier: MIT
#include "merix/ed/command_stack.h"

#include "answers.h"
#include "host/ed/variables.h"
#include "host/rx/registry.h"
#include "merix/ed/editor.h"
#include "merix/ed/prompter.h"
#include "merix/rx/module_loader.h"
#include "merix/rx/system_registry.h"
#include "tests/merix/rx/modules/recording_module.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include <dlfcn.h>

using namespace merix::ed;
using merix::test::Answers;
using Outcome = CommandStack::Outcome;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::vector<std::string> g_log;

void note(const std::string& what) {
    g_log.push_back(what);
}

std::string narrow(const wchar_t* text) {
    return QString::fromWCharArray(text).toStdString();
}

class Recorder : public MxEditorReactor {
public:
    Recorder() { Editor::instance().addReactor(this); }
    ~Recorder() override { Editor::instance().removeReactor(this); }
    void commandWillStart(const wchar_t* name) override { note("start " + narrow(name)); }
    void commandEnded(const wchar_t* name) override { note("ended " + narrow(name)); }
    void commandCancelled(const wchar_t* name) override { note("cancelled " + narrow(name)); }
    void commandFailed(const wchar_t* name) override { note("failed " + narrow(name)); }
};

struct Scope : CommandScope {
    bool allow = true;
    Scope()
        : m_before(CommandStack::instance().scope()) {
        CommandStack::instance().setScope(this);
    }
    ~Scope() override { CommandStack::instance().setScope(m_before); }
    bool begin(const QString& name) override {
        note("begin " + name.toStdString());
        return allow;
    }
    void end(bool failed) override { note(failed ? "take back" : "keep"); }
    void idle() override { note("idle"); }

private:
    CommandScope* const m_before;
};

void askTwice() {
    MxGePoint3d point;
    note("asked " + std::to_string(mxedGetPoint(nullptr, L"\nA: ", point)));
    note("asked " + std::to_string(mxedGetPoint(nullptr, L"\nB: ", point)));
}

class CommandStackTest : public testing::Test {
protected:
    CommandStackTest() {
        g_log.clear();
        auto& stack = CommandStack::instance();
        m_scope = stack.scope();
        stack.setScope(nullptr);
        stack.addCommand(L"TEST", L"WORK", L"ARBEIT", 1, [] { note("work"); });
        stack.addCommand(L"TEST", L"THROW", L"THROW", 1, [] { throw std::runtime_error("bad day"); });
        stack.addCommand(L"TEST", L"ASK", L"ASK", 1, askTwice);
        stack.addCommand(L"TEST", L"SESSION", L"SESSION", kSessionCommand, [] { note("session"); });
        Console::instance().markRead();
    }
    ~CommandStackTest() override { CommandStack::instance().setScope(m_scope); }
    static Outcome run(const char* line) { return CommandStack::instance().runLine(QString::fromUtf8(line)); }
    static std::string shown() { return Console::instance().unread().toStdString(); }

private:
    CommandScope* m_scope; ///< of the documents, when another test has made them
};

} // namespace

TEST_F(CommandStackTest, StandsInTheSystemRegistryAfterTheStart) {
    startEditor();
    MxRxObject* stack = mxrxSysRegistry()->at(L"MERIX_REGISTERED_COMMANDS");
    ASSERT_TRUE(stack);
    EXPECT_TRUE(stack->isKindOf(MxEdCommandStack::desc()));
    EXPECT_TRUE(stack->isA()->isDerivedFrom(MxEdCommandStack::desc()));
    MxRxObject* editor = mxrxSysRegistry()->at(L"MxEditor");
    ASSERT_TRUE(editor);
    EXPECT_TRUE(editor->isKindOf(MxEditor::desc()));
}

TEST_F(CommandStackTest, LocalNamesAreTypedPlainAndGlobalOnesAfterAnUnderscore) {
    EXPECT_EQ(run("arbeit"), Outcome::kEnded);
    EXPECT_EQ(run("_Work"), Outcome::kEnded);
    EXPECT_EQ(run("_.WORK"), Outcome::kEnded);
    EXPECT_EQ(run("'._work"), Outcome::kEnded);
    EXPECT_EQ(run(".arbeit"), Outcome::kEnded);
    EXPECT_EQ(run("work"), Outcome::kUnknown);
    EXPECT_EQ(run("_arbeit"), Outcome::kUnknown);
    EXPECT_EQ(g_log.size(), 5U);
}

TEST_F(CommandStackTest, AnUnknownCommandIsToldInOneLine) {
    EXPECT_EQ(run("nosuch 1,2"), Outcome::kUnknown);
    EXPECT_EQ(shown(), "\nCommand: nosuch 1,2\nUnknown command \"nosuch\".");
}

TEST_F(CommandStackTest, EnterRepeatsTheLastCommandWithoutItsAnswers) {
    run("ARBEIT");
    run("nosuch");
    EXPECT_EQ(run(""), Outcome::kEnded);
    EXPECT_THAT(g_log, ElementsAre("work", "work"));
    EXPECT_THAT(shown(), HasSubstr("Command: ARBEIT"));
}

TEST_F(CommandStackTest, WhatIsUnderWayInTheWindowTakesTypedLinesFirst) {
    struct Taker : LineTaker {
        bool take(const QString& line) override {
            lines << line;
            return line != QLatin1String("NOPE");
        }
        QStringList lines;
    } taker;
    auto& stack = CommandStack::instance();
    stack.setLineTaker(&taker);
    EXPECT_EQ(stack.runLine(QStringLiteral("90")), Outcome::kEnded);
    EXPECT_EQ(stack.runLine({}), Outcome::kEnded);
    EXPECT_EQ(stack.runLine(QStringLiteral("NOPE")), Outcome::kUnknown);
    stack.submit(QStringLiteral("NEITHER")); // from a menu: a command
    QCoreApplication::processEvents();
    stack.setLineTaker(nullptr);
    EXPECT_EQ(stack.runLine(QStringLiteral("90")), Outcome::kUnknown);
    EXPECT_EQ(taker.lines, (QStringList{QStringLiteral("90"), QString(), QStringLiteral("NOPE")}));
}

TEST_F(CommandStackTest, WordsAfterTheCommandAreItsFirstAnswers) {
    Answers answers({QStringLiteral("2,2")});
    EXPECT_EQ(run("ASK 1,1"), Outcome::kEnded);
    EXPECT_EQ(answers.used(), 1U);
    EXPECT_THAT(g_log, ElementsAre("asked 5100", "asked 5100"));
}

TEST_F(CommandStackTest, AnswersLeftOverAreNoCommands) {
    Answers answers({});
    run("ARBEIT 1,1");
    EXPECT_EQ(run("ASK"), Outcome::kCancelled);
    EXPECT_THAT(g_log, ElementsAre("work", "asked -5002", "asked -5002"));
}

TEST_F(CommandStackTest, ReactorsAreToldOfStartAndEnd) {
    const Recorder recorder;
    run("_WORK");
    EXPECT_THAT(g_log, ElementsAre("start WORK", "work", "ended WORK"));
}

TEST_F(CommandStackTest, ACommandIsCancelledWhenItsLastPromptWas) {
    const Recorder recorder;
    {
        Answers answers({QStringLiteral("1,1")});
        EXPECT_EQ(run("ASK"), Outcome::kCancelled);
    }
    EXPECT_EQ(g_log.back(), "cancelled ASK");
    Answers answers({});
    answers.before = [&] {
        if (Console::instance().prompt() == QStringLiteral("B: "))
            Prompter::instance().submitPoint({});
    };
    EXPECT_EQ(run("ASK"), Outcome::kEnded) << "only the first prompt was cancelled";
    EXPECT_EQ(g_log.back(), "ended ASK");
}

TEST_F(CommandStackTest, AnExceptionFailsTheCommandAndTakesBackWhatItDid) {
    const Recorder recorder;
    const Scope scope;
    EXPECT_EQ(run("THROW"), Outcome::kFailed);
    EXPECT_THAT(g_log, ElementsAre("begin THROW", "start THROW", "take back", "failed THROW", "idle"));
    EXPECT_THAT(shown(), HasSubstr("THROW failed: bad day"));
    EXPECT_FALSE(CommandStack::instance().isRunning());
}

TEST_F(CommandStackTest, ACommandRunsInsideAnUndoUnitUnlessItWorksOnTheSession) {
    Scope scope;
    run("_WORK");
    EXPECT_THAT(g_log, ElementsAre("begin ARBEIT", "work", "keep", "idle"));
    g_log.clear();
    run("SESSION");
    EXPECT_THAT(g_log, ElementsAre("session", "idle"));
    scope.allow = false;
    EXPECT_EQ(run("_WORK"), Outcome::kRefused);
}

TEST_F(CommandStackTest, OneCommandRunsAtATime) {
    Answers answers({QStringLiteral("1,1"), QStringLiteral("1,1")});
    Outcome inner = Outcome::kNothing;
    answers.before = [&] { inner = run("_WORK"); };
    run("ASK");
    EXPECT_EQ(inner, Outcome::kRefused);
    EXPECT_THAT(shown(), HasSubstr("The command ASK is under way."));
}

TEST_F(CommandStackTest, RegisteringAGroupAndNameAgainReplacesTheCommand) {
    auto& stack = CommandStack::instance();
    const auto before = stack.commands().size();
    MxEdCommand* created = nullptr;
    EXPECT_EQ(stack.addCommand(
                  L"test", L"work", L"ARBEIT", 7, [] { note("new"); }, nullptr, -1, nullptr, &created),
              Mx::eOk);
    EXPECT_EQ(stack.commands().size(), before);
    run("ARBEIT");
    EXPECT_THAT(g_log, ElementsAre("new"));
    ASSERT_TRUE(created);
    EXPECT_EQ(created->flags(), 7);
    EXPECT_STREQ(created->groupName(), L"test");
    EXPECT_TRUE(created->isKindOf(MxEdCommand::desc()));
}

TEST_F(CommandStackTest, ACommandWithoutNameOrBodyIsRefused) {
    auto& stack = CommandStack::instance();
    EXPECT_EQ(stack.addCommand(L"T", L"", L"X", 0, [] {}), Mx::eInvalidInput);
    EXPECT_EQ(stack.addCommand(L"T", L"X", nullptr, 0, [] {}), Mx::eInvalidInput);
    EXPECT_EQ(stack.addCommand(L"T", L"X", L"X", 0, nullptr), Mx::eInvalidInput);
}

TEST_F(CommandStackTest, AnAliasStandsForACommandUnlessACommandHasItsName) {
    auto& stack = CommandStack::instance();
    stack.addAlias(QStringLiteral("wk"), QStringLiteral("WORK"));
    stack.addAlias(QStringLiteral("ARBEIT"), QStringLiteral("ASK"));
    EXPECT_EQ(run("WK"), Outcome::kEnded);
    EXPECT_EQ(run("_wk"), Outcome::kEnded);
    EXPECT_EQ(run("arbeit"), Outcome::kEnded);
    EXPECT_THAT(g_log, ElementsAre("work", "work", "work"));
}

TEST_F(CommandStackTest, AModuleRunsACommandWithTextsAndPointsForAnswers) {
    const Recorder recorder;
    EXPECT_EQ(mxedCommand(L"_.Ask", {L"1,1", MxGePoint3d(2, 3, 0)}), 5100);
    EXPECT_THAT(g_log, ElementsAre("start ASK", "asked 5100", "asked 5100", "ended ASK"));
    EXPECT_EQ(shown(), "\nCommand: _.Ask\nA: 1,1\nB: 2,3");
}

TEST_F(CommandStackTest, APromptLeftWithoutAnAnswerIsCancelled) {
    const Answers user({QStringLiteral("9,9")});
    EXPECT_EQ(mxedCommand(L"_ASK", {L"1,1"}), -5002);
    EXPECT_THAT(g_log, ElementsAre("asked 5100", "asked -5002"));
    EXPECT_EQ(user.used(), 0U) << "the answers are not the user's to give";
}

TEST_F(CommandStackTest, WhatAModuleCannotRunIsAnError) {
    EXPECT_EQ(mxedCommand(L"_NOSUCH"), -5001);
    EXPECT_EQ(mxedCommand(nullptr), -5001);
    EXPECT_EQ(mxedCommand(L"_THROW"), -5001);
    EXPECT_EQ(mxedCommand(L"_SESSION"), -5001) << "it works on the set of open drawings";
    Answers answers({QStringLiteral("1,1"), QStringLiteral("1,1")});
    int inside = 0;
    answers.before = [&] { inside = mxedCommand(L"_WORK"); };
    run("ASK");
    EXPECT_EQ(inside, -5001) << "a prompt waits";
}

TEST_F(CommandStackTest, ACommandInsideACommandIsPartOfItsUndoUnitAndLeavesItsAnswers) {
    const Scope scope;
    CommandStack::instance().addCommand(L"TEST", L"OUTER", L"OUTER", 0, [] {
        MxGePoint3d point;
        mxedGetPoint(nullptr, L"\nFirst: ", point);
        note("inner " + std::to_string(mxedCommand(L"_ASK", {L"1,1"})));
        note("running " + CommandStack::instance().running().toStdString());
        mxedGetPoint(nullptr, L"\nSecond: ", point);
        note("second " + std::to_string(int(point.x)));
    });
    EXPECT_EQ(run("OUTER 5,5 6,6"), Outcome::kEnded) << "the cancelled prompt was not the command's own";
    EXPECT_THAT(g_log, ElementsAre("begin OUTER", "asked 5100", "asked -5002", "inner -5002", "running OUTER",
                                   "second 6", "keep", "idle"));
}

TEST_F(CommandStackTest, NoCommandRunsInsideOneThatWorksOnTheSession) {
    const Scope scope;
    CommandStack::instance().addCommand(L"TEST", L"AROUND", L"AROUND", kSessionCommand,
                                        [] { note("inner " + std::to_string(mxedCommand(L"_WORK"))); });
    run("AROUND");
    EXPECT_THAT(g_log, ElementsAre("inner -5001", "idle"));
}

TEST_F(CommandStackTest, WhatAPromptWasPreparedWithOutlivesACommandInside) {
    CommandStack::instance().addCommand(L"TEST", L"PREPARE", L"PREPARE", 0, [] {
        wchar_t keyword[20] = L"";
        mxedInitGet(0, L"Blue Red");
        mxedGetKword(L"\nColor: ", keyword, 20);
        mxedInitGet(1, L"Big Small");
        mxedCommand(L"_ASK", {L"1,1", L"2,2"});
        mxedGetInput(keyword, 20);
        note("before " + narrow(keyword));
        note("size " + std::to_string(mxedGetKword(L"\nSize: ", keyword, 20)));
        note(narrow(keyword));
    });
    const Answers answers({QStringLiteral("r"), QString(), QStringLiteral("s")});
    run("PREPARE");
    EXPECT_THAT(g_log, ElementsAre("asked 5100", "asked 5100", "before Red", "size 5100", "Small"));
    EXPECT_THAT(shown(), HasSubstr("An answer is needed.")) << "the control bits too";
}

TEST_F(CommandStackTest, WithTheEchoOffAModulesCommandIsNotShown) {
    ASSERT_EQ(mxedSetVar(L"CMDECHO", 0), Mx::eOk);
    mxedCommand(L"_ASK", {L"1,1"});
    EXPECT_EQ(shown(), "");
    const Answers user({QStringLiteral("2,2")});
    run("ASK 1,1");
    EXPECT_EQ(shown(), "\nCommand: ASK 1,1\nA: 1,1\nB: 2,2") << "what the user runs is";
    ASSERT_EQ(mxedSetVar(L"CMDECHO", 1), Mx::eOk);
}

TEST_F(CommandStackTest, ACommandGoesWithTheLoadOfItsModuleThatAddedItEvenWhereTheCodeStaysMapped) {
    TestLog log;
    merix::rx::setSystemRegistryEntry(L"TestLog", &log);
    auto& loader = merix::rx::ModuleLoader::instance();
    log.onMessage = [&](int message) {
        if (message == kUnloadAppMsg)
            run("PINNED");
    };
    const auto addPinned = [](merix::rx::Module& module) {
        const auto function = reinterpret_cast<MxEdCommandFunction>(dlsym(module.library, "pinnedCommand"));
        ASSERT_NE(function, nullptr);
        CommandStack::instance().addCommand(L"TEST", L"PINNED", L"PINNED", 0, function);
    };
    merix::rx::Module* const module = loader.load(MODULE_PINNED).module;
    ASSERT_NE(module, nullptr);
    addPinned(*module);
    EXPECT_EQ(run("PINNED"), Outcome::kEnded);
    EXPECT_THAT(loader.unload(*module).error, HasSubstr("stays mapped"));
    EXPECT_EQ(log.text, "1 100 2 100 ") << "until its last message is over it runs";
    log.text.clear();
    shown();
    EXPECT_EQ(run("PINNED"), Outcome::kUnknown);
    EXPECT_THAT(shown(), HasSubstr("PINNED: module not loaded"));
    ASSERT_EQ(loader.load(MODULE_PINNED).module, module);
    EXPECT_EQ(run("PINNED"), Outcome::kUnknown) << "it was added by another load";
    addPinned(*module);
    EXPECT_EQ(run("PINNED"), Outcome::kEnded);
    EXPECT_EQ(log.text, "1 100 ");
    loader.unload(*module);
    merix::rx::setSystemRegistryEntry(L"TestLog", nullptr);
}
