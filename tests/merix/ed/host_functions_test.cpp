// SPDX-License-Identifier: MIT
#include "merix/ed/host_functions.h"

#include "host/ed/commands.h"
#include "host/ed/input.h"
#include "merix/ed/console.h"
#include "merix/rx/module_loader.h"

#include <gtest/gtest.h>

using namespace merix::ed;

namespace {

int g_called = -2;
bool g_answers = true;

/// A module that defines "Answer" for each drawing and undefines it again.
int entryPoint(int message, void*) {
    switch (message) {
    case kLoadDwgMsg:
        return mxedDefun(L"Answer", 7);
    case kUnloadDwgMsg:
        return mxedUndef(L"Answer", 7);
    case kInvkSubrMsg:
        g_called = mxedGetFunCode();
        if (g_answers)
            mxedRetInt(42);
        return 0;
    default:
        return 0;
    }
}

class HostFunctionsTest : public testing::Test {
protected:
    HostFunctionsTest() {
        m_module.entryPoint = &entryPoint;
        m_module.state = merix::rx::ModuleState::kLoaded;
        HostFunctions::instance().setContext(&m_drawing);
        g_called = -2;
        g_answers = true;
    }
    ~HostFunctionsTest() override {
        HostFunctions::instance().dropModule(&m_module);
        HostFunctions::instance().setContext(nullptr);
    }
    int send(int message) { return merix::rx::ModuleLoader::instance().sendMessage(m_module, message); }
    static QString call(const char* line) {
        Console::instance().markRead();
        HostFunctions::instance().callLine(QString::fromUtf8(line));
        return Console::instance().unread().section(QLatin1Char('\n'), -1);
    }

    merix::rx::Module m_module;
    int m_drawing = 0, m_other = 0; // only their addresses matter
};

} // namespace

TEST_F(HostFunctionsTest, ACallSendsMessageFiveAndPrintsTheResult) {
    EXPECT_EQ(send(kLoadDwgMsg), kInputNormal);
    EXPECT_EQ(call("(Answer)"), QStringLiteral("42"));
    EXPECT_EQ(g_called, 7);
    EXPECT_EQ(call("  ( answer ) "), QStringLiteral("42"));
}

TEST_F(HostFunctionsTest, AFunctionThatSetsNoResultIsNil) {
    send(kLoadDwgMsg);
    g_answers = false;
    EXPECT_EQ(call("(Answer)"), QStringLiteral("nil"));
}

TEST_F(HostFunctionsTest, FunctionsBelongToOneDrawing) {
    send(kLoadDwgMsg);
    HostFunctions::instance().setContext(&m_other);
    EXPECT_EQ(call("(Answer)"), QStringLiteral("Unknown function \"Answer\"."));
    HostFunctions::instance().setContext(&m_drawing);
    EXPECT_EQ(call("(Answer)"), QStringLiteral("42"));
}

TEST_F(HostFunctionsTest, AnUndefinedFunctionIsUnknown) {
    send(kLoadDwgMsg);
    EXPECT_EQ(send(kUnloadDwgMsg), kInputNormal);
    EXPECT_EQ(call("(Answer)"), QStringLiteral("Unknown function \"Answer\"."));
    EXPECT_EQ(g_called, -2);
    EXPECT_EQ(send(kUnloadDwgMsg), kInputError) << "it is defined no more";
}

TEST_F(HostFunctionsTest, OutsideAMessageNothingIsDefined) {
    EXPECT_EQ(mxedDefun(L"Answer", 7), kInputError);
}

TEST_F(HostFunctionsTest, OutsideACallThereIsNoCodeAndNoResult) {
    EXPECT_EQ(mxedGetFunCode(), -1);
    EXPECT_EQ(mxedRetInt(1), kInputError);
}

TEST_F(HostFunctionsTest, AModuleThatGoesTakesItsFunctionsAlong) {
    send(kLoadDwgMsg);
    HostFunctions::instance().dropModule(&m_module);
    EXPECT_EQ(call("(Answer)"), QStringLiteral("Unknown function \"Answer\"."));
}

TEST_F(HostFunctionsTest, ALineThatIsNoCallIsTold) {
    EXPECT_EQ(call("(Answer"), QStringLiteral("A function is called as (Name)."));
    EXPECT_EQ(call("()"), QStringLiteral("A function is called as (Name)."));
}
