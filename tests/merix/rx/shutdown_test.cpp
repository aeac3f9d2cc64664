// SPDX-License-Identifier: MIT
#include "merix/rx/shutdown.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using merix::rx::setShutdownHook;

TEST(ShutdownDeathTest, TheHookRunsBeforeTheProcessEndsWithTheStatus) {
    EXPECT_EXIT(
        {
            setShutdownHook([] { std::fputs("recovered", stderr); });
            mxrxShutdown(3);
        },
        testing::ExitedWithCode(3), "recovered");
}

TEST(ShutdownDeathTest, AShutdownFromInsideTheHookEndsTheProcess) {
    EXPECT_EXIT(
        {
            setShutdownHook([] { mxrxShutdown(4); });
            mxrxShutdown(3);
        },
        testing::ExitedWithCode(4), "");
}

TEST(ShutdownDeathTest, AHookThatThrowsDoesNotKeepTheProcessAlive) {
    EXPECT_EXIT(
        {
            setShutdownHook([] { throw 1; });
            mxrxShutdown(5);
        },
        testing::ExitedWithCode(5), "writing the recovery files failed");
}

TEST(ShutdownDeathTest, WhatWasPrintedIsWritten) {
    EXPECT_EXIT(
        {
            std::setvbuf(stderr, nullptr, _IOFBF, 1 << 16);
            std::fputs("last words", stderr);
            mxrxShutdown(0);
        },
        testing::ExitedWithCode(0), "last words");
}

} // namespace
