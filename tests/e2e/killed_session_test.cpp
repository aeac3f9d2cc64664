// SPDX-License-Identifier: MIT
// The program is killed at a random moment of its work on several drawings, again and again: what it had told to be
// kept is offered at the next start, and the drawings themselves open.
#include "tests/support/process.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QThread>

#include <gtest/gtest.h>

#include <array>
#include <iostream>

using merix::test::Outcome;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kKills = 25; // a start of the program takes seconds there, and a kill four of them
#else
constexpr int kKills = 100;
#endif
constexpr int kStepsPerSession = 400; ///< more than a session lives to do
constexpr int kLongestLife = 15;      ///< steps that are waited for before the kill
constexpr unsigned kLongestRest = 20; ///< the kill falls within so much time after them, milliseconds

/// The drawings that a session works on, in the order in which it opens them.
constexpr std::array<const char*, 3> kDrawings = {"plan.dxf", "site.merix", "Drawing1"};
using Counts = std::array<int, kDrawings.size()>;
constexpr std::size_t kNeverSaved = 2;

/// A working session: its script, the drawing of each step, and what it printed until it was killed.
struct Session {
    QByteArray lines, out;
    std::vector<std::size_t> drawings;
};

int linesIn(const QString& path) {
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll().replace("\r\n", "\n").count("\n  0\nLINE\n") : -1;
}

class KilledSessionTest : public testing::Test {
protected:
    KilledSessionTest() {
        const int given = testing::UnitTest::GetInstance()->random_seed();
        const quint32 seed = given > 0 ? quint32(given) : QRandomGenerator::global()->bounded(1, 99'999);
        std::cout << "seed " << seed << " (--gtest_shuffle --gtest_random_seed=" << seed << ")" << std::endl;
        m_random.seed(seed);
    }
    Outcome script(const QByteArray& lines) { return merix::test::runScript(lines, m_folder.path()); }
    QByteArray fine(const QByteArray& lines) {
        const Outcome outcome = script(lines);
        EXPECT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.constData();
        return outcome.out;
    }
    QString path(const QByteArray& name) const { return m_folder.filePath(QString::fromUtf8(name)); }

    /// Every step draws a line in one of the drawings; most have it kept by a copy or, for one with a file, by a save.
    Session plannedWork() {
        Session session{"OPEN plan.dxf\nOPEN site.merix\nNEW\n", {}, {}};
        for (int step = 0; step < kStepsPerSession; ++step) {
            const auto drawing = std::size_t(m_random.bounded(int(kDrawings.size())));
            const QByteArray number = QByteArray::number(step);
            session.drawings.push_back(drawing);
            session.lines +=
                "@activate " + QByteArray::number(int(drawing) + 1) + "\nLINE " + number + ",0 " + number + ",9\n\n";
            const int how = m_random.bounded(5);
            if (how == 0 && drawing != kNeverSaved)
                session.lines += "SAVE\n";
            else if (how != 1)
                session.lines += "AUTOSAVE\n";
        }
        return session;
    }

    /// Runs a script until `mark` was printed `times` times and a little longer, then kills it. Gives what it printed.
    QByteArray runAndKill(const QByteArray& lines, const QByteArray& mark, int times) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
            environment.insert(QString::fromLatin1(name), m_folder.path() + QLatin1String("/home"));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_folder.path());
        process.start(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"),
                      {QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral("-")});
        EXPECT_TRUE(process.waitForStarted());
        process.write(lines); // its input stays open: a session never comes to its end
        QByteArray out;
        while (out.count(mark) < times && process.waitForReadyRead(120'000))
            out += process.readAllStandardOutput();
        QThread::usleep(m_random.bounded(kLongestRest * 1000));
        process.kill();
        process.waitForFinished(60'000);
        EXPECT_EQ(process.exitStatus(), QProcess::CrashExit) << process.readAllStandardError().constData();
        return out + process.readAllStandardOutput();
    }

    /// Lines of each drawing that the session told were kept: all that were drawn in it before the last such word. And
    /// all that it may have drawn.
    static void readOut(const Session& session, Counts& told, Counts& drawn) {
        told = drawn = {};
        std::size_t step = 0;
        for (const QByteArray& line : session.out.split('\n')) {
            if (line.startsWith("Command: LINE"))
                ++drawn[session.drawings.at(step++)];
            for (std::size_t i = 0; i < kDrawings.size(); ++i)
                if ((line.startsWith("Saved ") || line.startsWith("Copied to ")) && line.contains(kDrawings[i]))
                    told[i] = drawn[i];
        }
    }

    /// What the next start finds: the drawings open, and what is offered, in order, as indices of kDrawings.
    std::vector<std::size_t> offered(Counts& onDisk) {
        const QByteArray out =
            fine("OPEN plan.dxf\n@expect Opened \nAUDIT\n@expect No faults found\nSAVEAS plan-was.dxf\nCLOSE\n"
                 "OPEN site.merix\n@expect Opened \nAUDIT\n@expect No faults found\nSAVEAS site-was.dxf\nCLOSE\n"
                 "RECOVER\n");
        onDisk = {linesIn(path("plan-was.dxf")), linesIn(path("site-was.dxf")), 0};
        std::vector<std::size_t> found;
        static const QRegularExpression entry(QStringLiteral("^\\d+  (?:.*/)?([^/\\n]*), \\d{4}-"),
                                              QRegularExpression::MultilineOption);
        for (auto match = entry.globalMatch(QString::fromUtf8(out)); match.hasNext();) {
            const QByteArray name = match.next().captured(1).toUtf8();
            const auto place = std::find(kDrawings.begin(), kDrawings.end(), name);
            if (place == kDrawings.end())
                ADD_FAILURE() << name.constData() << " is offered";
            else
                found.push_back(std::size_t(place - kDrawings.begin()));
        }
        return found;
    }

    /// Takes everything that is offered and saves it; gives the lines of each drawing afterwards.
    Counts recover(const std::vector<std::size_t>& offers, Counts lines) {
        if (offers.empty())
            return lines;
        QByteArray work = "RECOVER\nRecover\nAll\n";
        for (std::size_t i = 0; i < offers.size(); ++i) {
            work += "@activate " + QByteArray::number(int(i) + 1) + "\nAUDIT\n@expect No faults found\n";
            if (offers[i] != kNeverSaved)
                work += "SAVE\n@expect Saved \n";
            work += "SAVEAS got-" + QByteArray::number(int(i)) + ".dxf\n@expect Saved \n";
        }
        const QByteArray out = fine(work + "RECOVER\n@expect Nothing was left behind.\n");
        for (std::size_t i = 0; i < offers.size(); ++i) {
            EXPECT_TRUE(out.contains(QByteArray("Recovered ") + kDrawings[offers[i]])) << out.constData();
            lines[offers[i]] = linesIn(path("got-" + QByteArray::number(int(i)) + ".dxf"));
        }
        return lines;
    }

    /// What a killed process wrote is the system's: it need not reach a disk to be there.
    QTemporaryDir m_folder{QDir(QStringLiteral("/dev/shm")).exists()
                               ? QStringLiteral("/dev/shm/killed-XXXXXX")
                               : QDir::tempPath() + QStringLiteral("/killed-XXXXXX")};
    QRandomGenerator m_random;
};

} // namespace

TEST_F(KilledSessionTest, WhatWasKeptIsOfferedAtTheNextStartAndTheDrawingsOpen) {
    fine("NEW\nSAVEAS plan.dxf\nNEW\nSAVEAS site.merix\n");
    Counts before{}, offers{};
    for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
        SCOPED_TRACE(testing::Message() << "kill " << kill);
        Session session = plannedWork();
        session.out = runAndKill(session.lines, "Command: LINE", int(m_random.bounded(kLongestLife)));
        Counts told{}, drawn{}, onDisk{};
        readOut(session, told, drawn);

        std::vector<std::size_t> found = offered(onDisk);
        if (!found.empty() && m_random.bounded(4) == 0) { // the program dies again before what it recovered is saved
            runAndKill("RECOVER\nRecover\nAll\n", "Recovered ", 1);
            EXPECT_EQ(offered(onDisk), found);
        }
        const Counts now = recover(found, onDisk);
        for (const std::size_t drawing : found)
            ++offers[drawing];
        for (std::size_t i = 0; i < kDrawings.size(); ++i) {
            EXPECT_GE(now[i], before[i] + told[i]) << kDrawings[i] << "\n" << session.out.constData();
            EXPECT_LE(now[i], before[i] + drawn[i]) << kDrawings[i] << "\n" << session.out.constData();
        }
        before = {now[0], now[1], 0};
        // A copy that a save had overtaken may stand there still; the next one takes its place.
        EXPECT_EQ(QDir(m_folder.path()).entryList({QStringLiteral("*.2.ms$")}), QStringList());
    }
    for (std::size_t i = 0; i < kDrawings.size(); ++i)
        EXPECT_GT(offers[i], kKills / 10) << kDrawings[i] << ": few kills hit a session with a copy of it";
}
