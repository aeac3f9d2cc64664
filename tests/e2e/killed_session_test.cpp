// SPDX-License-Identifier: MIT
// The program is killed at a random moment of its work, again and again: what it had told to be kept is offered at the
// next start, and the drawing itself opens.
#include "tests/support/process.h"

#include <QFile>
#include <QRandomGenerator>
#include <QThread>

#include <gtest/gtest.h>

using merix::test::Outcome;

namespace {

constexpr int kKills = 100;
/// A session is killed in its first steps or in later ones, never after its end.
constexpr int kLongestWaitMs = 250, kStepsPerSession = 400;

int linesIn(const QByteArray& dxf) {
    return QByteArray(dxf).replace("\r\n", "\n").count("\n  0\nLINE\n");
}

QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

class KilledSessionTest : public testing::Test {
protected:
    Outcome script(const QByteArray& lines) { return merix::test::runScript(lines, m_folder.path()); }

    /// Every step draws a line and has it kept by a copy or by a save.
    static QByteArray work(QRandomGenerator& random) {
        QByteArray lines = "OPEN plan.dxf\n";
        for (int step = 0; step < kStepsPerSession; ++step) {
            lines += "LINE " + QByteArray::number(step) + ",0 " + QByteArray::number(step) + ",9\n\n";
            lines += random.bounded(5) == 0 ? "SAVE\n" : "AUTOSAVE\n";
        }
        return lines;
    }
    /// Lines that the session told were kept: all that were drawn before the last such word.
    static int kept(const QByteArray& out) {
        int drawn = 0, told = 0;
        for (const QByteArray& line : out.split('\n')) {
            drawn += line.startsWith("Command: LINE");
            if (line.startsWith("Saved ") || line.startsWith("Copied to "))
                told = drawn;
        }
        return told;
    }
    QByteArray workAndDie(const QByteArray& lines, int waitMs) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
            environment.insert(QString::fromLatin1(name), m_folder.path() + QLatin1String("/home"));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_folder.path());
        process.start(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"),
                      {QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral("-")});
        EXPECT_TRUE(process.waitForStarted());
        process.write(lines);
        process.closeWriteChannel();
        QByteArray out;
        while (!out.contains("Command: LINE") && process.waitForReadyRead(60'000))
            out += process.readAllStandardOutput();
        QThread::msleep(static_cast<unsigned long>(waitMs));
        process.kill();
        process.waitForFinished(60'000);
        return out + process.readAllStandardOutput();
    }
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(KilledSessionTest, WhatWasKeptIsOfferedAtTheNextStartAndTheDrawingOpens) {
    const int seed = testing::UnitTest::GetInstance()->random_seed();
    QRandomGenerator random(seed > 0 ? quint32(seed) : QRandomGenerator::global()->generate());
    const QString plan = m_folder.filePath(QStringLiteral("plan.dxf"));
    ASSERT_EQ(script("NEW\nSAVEAS plan.dxf\n").status, 0);
    int recovered = 0;
    for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
        SCOPED_TRACE(testing::Message() << "kill " << kill);
        const int before = linesIn(bytesOf(plan));
        const int told = kept(workAndDie(work(random), int(random.bounded(kLongestWaitMs))));

        const Outcome opened = script("OPEN plan.dxf\n@expect Opened \n");
        EXPECT_EQ(opened.status, 0) << opened.err.constData();
        const Outcome offered = script("RECOVER\n@expect  \n");
        EXPECT_EQ(offered.status, 0) << offered.err.constData();
        if (offered.out.contains("plan.dxf, ")) {
            ++recovered;
            const Outcome outcome = script("RECOVER Recover All\n@expect Recovered plan.dxf\nSAVE\n@expect Saved\n");
            EXPECT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.constData();
        }
        EXPECT_GE(linesIn(bytesOf(plan)), before + told) << offered.out.constData();
        // Nothing is offered twice.
        EXPECT_TRUE(script("RECOVER\n").out.contains("Nothing was left behind."));
    }
    EXPECT_GT(recovered, kKills / 10) << "few kills hit a session with copies: the test sees too little";
}
