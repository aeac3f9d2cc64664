// SPDX-License-Identifier: MIT
// A test program with an application object, and settings of its own in a directory that goes with it.
#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen"); // the build asks for the list of tests
    new QApplication(argc, argv);                // lives as long as the process: the platform does not free its screen
    return RUN_ALL_TESTS();
}
