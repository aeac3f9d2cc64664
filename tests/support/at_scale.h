// SPDX-License-Identifier: MIT
// The same test on screens of other scales: the scale of a program is fixed when it starts.
#pragma once

#include "tests/support/process.h"

#include <QFile>

#include <string>

namespace merix::test {

/// Screen pixels in one of the windows' that this program was started with.
inline double scaleOfScreen() {
    return qEnvironmentVariableIsSet("QT_SCALE_FACTOR") ? qEnvironmentVariable("QT_SCALE_FACTOR").toDouble() : 1.0;
}

/// Runs one test of this program anew with so many screen pixels in one of the windows'.
inline void expectPassesAtScale(const std::string& test, double scale) {
    const QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(scale));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.remove(QStringLiteral("GTEST_OUTPUT"));
    const Outcome outcome = run(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")),
                                {QString::fromStdString("--gtest_filter=" + test)}, folder.path(), {}, environment);
    EXPECT_EQ(outcome.status, 0) << outcome.out.constData() << outcome.err.constData();
    EXPECT_TRUE(outcome.out.contains("[  PASSED  ] 1 test.")) << outcome.out.constData();
}

} // namespace merix::test
