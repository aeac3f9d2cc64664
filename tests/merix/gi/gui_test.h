// SPDX-License-Identifier: MIT
// The application object that fonts and pictures need.
#pragma once

#include <QGuiApplication>

#include <gtest/gtest.h>

class GuiTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!QCoreApplication::instance())
            new QGuiApplication(s_argc, s_argv); // lives as long as the process
    }

private:
    static inline char s_name[] = "test";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;
};
