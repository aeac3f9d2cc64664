// SPDX-License-Identifier: MIT
// The real program, ended by signals.
#include "tests/support/process.h"

#include <QDeadlineTimer>
#include <QFile>

#include <gtest/gtest.h>

#include <csignal>

using merix::test::Outcome;
using merix::test::runScript;

namespace {

class EndedProgramTest : public testing::Test {
protected:
    /// Starts a session whose input stays open, and waits until it has printed `mark`.
    void start(const QByteArray& lines, const QByteArray& mark) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
            environment.insert(QString::fromLatin1(name), m_folder.path() + QLatin1String("/home"));
        m_process.setProcessEnvironment(environment);
        m_process.setWorkingDirectory(m_folder.path());
        m_process.start(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"),
                        {QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral("-")});
        ASSERT_TRUE(m_process.waitForStarted());
        m_process.write(lines);
        while (!m_out.contains(mark) && m_process.waitForReadyRead(60'000))
            m_out += m_process.readAllStandardOutput();
        ASSERT_TRUE(m_out.contains(mark)) << m_out.constData();
    }
    void endBy(int signal) {
        ::kill(pid_t(m_process.processId()), signal);
        ASSERT_TRUE(m_process.waitForFinished(60'000));
        EXPECT_EQ(m_process.exitStatus(), QProcess::CrashExit) << "a signal ended it";
        EXPECT_EQ(m_process.exitCode(), signal);
        EXPECT_EQ(m_process.readAllStandardError(), QByteArray());
    }
    bool isThere(const char* name) const { return QFile::exists(m_folder.filePath(QString::fromLatin1(name))); }
    void expectOffer() {
        const Outcome next = runScript("RECOVER\nRecover\nAll\n@expect Recovered \nSAVEAS got.dxf\n", m_folder.path());
        EXPECT_EQ(next.status, 0) << next.err.constData() << next.out.constData();
        QFile got(m_folder.filePath(QStringLiteral("got.dxf")));
        ASSERT_TRUE(got.open(QFile::ReadOnly));
        EXPECT_EQ(got.readAll().replace("\r\n", "\n").count("\n  0\nLINE\n"), 1);
    }
    QTemporaryDir m_folder;
    QProcess m_process;
    QByteArray m_out;
};

class EndSignalsTest : public EndedProgramTest, public testing::WithParamInterface<int> {};

TEST_P(EndSignalsTest, UnsavedWorkIsOfferedAtTheNextStart) {
    start("NEW\nSAVEAS plan.dxf\nLINE 0,0 0,9\n\nMODULES\n", "MODULES");
    endBy(GetParam());
    EXPECT_TRUE(isThere("plan.dxf.ms$"));
    expectOffer();
}

TEST_P(EndSignalsTest, APromptThatWaitsIsCancelled) {
    start("NEW\nSAVEAS plan.dxf\nLINE 0,0 0,9\n\nCIRCLE 5,5\n", "CIRCLE 5,5");
    endBy(GetParam());
    expectOffer();
}

TEST_P(EndSignalsTest, AScriptThatWaitsGoesNoFurther) {
    start("NEW\nSAVEAS plan.dxf\nLINE 0,0 0,9\n\nREGEN\n@wait 3000000\nLINE 0,0 1,1\n\n", "REGEN");
    endBy(GetParam());
    expectOffer();
}

TEST_P(EndSignalsTest, WithNothingUnsavedNoCopyStays) {
    start("NEW\nSAVEAS plan.dxf\nLINE 0,0 0,9\n\nAUTOSAVE\nSAVE\nREGEN\n", "REGEN");
    endBy(GetParam());
    EXPECT_TRUE(isThere("plan.dxf"));
    EXPECT_FALSE(isThere("plan.dxf.ms$"));
}

TEST_P(EndSignalsTest, AModalDialogIsLeft) {
    start("NEW\nSAVEAS plan.dxf\nLINE 0,0 0,9\n\nVOICEMAN\n@windows\n", "\"Voice notes\"");
    endBy(GetParam());
    expectOffer();
}

INSTANTIATE_TEST_SUITE_P(Signals, EndSignalsTest, testing::Values(SIGTERM, SIGHUP, SIGINT));

// A process stopped in between gets both at once: the second finds the first not worked off.
TEST_F(EndedProgramTest, ASecondOneEndsAtOnce) {
    start("NEW\nREGEN\n", "REGEN");
    const auto process = pid_t(m_process.processId());
    ::kill(process, SIGSTOP);
    ::kill(process, SIGTERM);
    ::kill(process, SIGINT);
    ::kill(process, SIGCONT);
    ASSERT_TRUE(m_process.waitForFinished(60'000));
    EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
    EXPECT_GT(m_process.exitCode(), 128);
}

TEST_F(EndedProgramTest, AnUnsavedChangeOutlivesACrashWithoutACommand) {
    start("NEW\nSAVEAS plan.dxf\nLINE 0,0 0,9\n\nREGEN\n", "REGEN");
    for (const QDeadlineTimer bound(60'000); !isThere("plan.dxf.ms$") && !bound.hasExpired();)
        m_process.waitForReadyRead(50);
    ASSERT_TRUE(isThere("plan.dxf.ms$"));
    ::kill(pid_t(m_process.processId()), SIGSEGV);
    ASSERT_TRUE(m_process.waitForFinished(60'000));
    expectOffer();
}

} // namespace
