// SPDX-License-Identifier: MIT
// Running the real programs from tests.
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace merix::test {

struct Outcome {
    int status = -1; ///< exit status; -1 when it did not start, was ended by a signal or by the time bound
    QByteArray out, err;
};

/// Runs `program` to its end in `folder`, with `input` on its standard input, and settings, caches and data folders
/// inside `folder` so that nothing of the person who runs the tests is read or changed.
inline Outcome run(const QString& program, const QStringList& arguments, const QString& folder,
                   const QByteArray& input = {},
                   QProcessEnvironment environment = QProcessEnvironment::systemEnvironment(), int boundMs = 240'000) {
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        environment.insert(QString::fromLatin1(name), folder + QLatin1String("/home"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    Outcome outcome;
    if (!process.waitForStarted())
        return outcome;
    process.write(input);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(boundMs);
    if (!ended) {
        process.kill();
        process.waitForFinished();
    }
    outcome.out = process.readAllStandardOutput();
    outcome.err = process.readAllStandardError();
    if (ended && process.exitStatus() == QProcess::NormalExit)
        outcome.status = process.exitCode();
    return outcome;
}

/// Runs merix headless with a script.
inline Outcome runScript(const QByteArray& script, const QString& folder, const QStringList& drawings = {},
                         QProcessEnvironment environment = QProcessEnvironment::systemEnvironment()) {
    return run(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"),
               QStringList{QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral("-")} + drawings,
               folder, script, environment);
}

} // namespace merix::test
