// SPDX-License-Identifier: MIT
// The module is unloaded and loaded again in the real program, with drawings and a tag window open: nothing in the
// drawings shows it.
#include "tests/support/process.h"

#include <QFile>

#include <gtest/gtest.h>

using merix::test::Outcome;

namespace {

constexpr int kTurns = 50;
const QByteArray kUnload =
    "MODUNLOAD\nMrxPhonomark\n@expect Unloaded libMrxPhonomark.mrx\n"; // not so if it stays mapped
const QByteArray kLoad = "MODLOAD\n" MERIX_BINARY_DIR "/bin/libMrxPhonomark.mrx\n@expect Loaded libMrxPhonomark.mrx\n";
const QByteArray kClean = "AUDIT\n@expect 0 broken, 0 loose\n";

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(ModuleTurns, FiftyTurnsInTheRealProgramLeaveEveryDrawingAsItWas) {
    const QTemporaryDir folder;
    const auto path = [&](const QByteArray& name) { return folder.filePath(QString::fromLatin1(name)); };
    ASSERT_TRUE(
        QFile::copy(QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/drawings/recorded.dxf"), path("recorded.dxf")));
    // The second drawing's note stands in the middle of its view; the cursor rests on it when the module goes.
    QByteArray script = "@open recorded.dxf\n@save first.dxf\nNEW\n@viewsize 800 600\nZOOM\nWindow\n0,0\n400,300\n"
                        "PHONOMARK\n200,150\n@save second.dxf\n";
    for (int turn = 0; turn < kTurns; ++turn) {
        const QByteArray number = QByteArray::number(turn);
        script += "@hover 208 158\n@wait 60\n" + kUnload;
        script += "@activate 1\n@save away1-" + number + ".dxf\n" + kClean + "@activate 2\n@save away2-" + number +
                  ".dxf\n" + kLoad;
        script += "@activate 1\n@save back1-" + number + ".dxf\n" + kClean + "@activate 2\n@save back2-" + number +
                  ".dxf\n" + kClean + "@hover 10 10\n@wait 60\n";
    }
    script += "MODULES\n@expect libMrxPhonomark.mrx: loaded\n";
    // The cursor did open the window all the while: its box for deleting is where it should be.
    script += "@hover 208 158\n@wait 60\n@click 215 166\n@save gone.dxf\n";
    const Outcome outcome = merix::test::runScript(script, folder.path());
    ASSERT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.right(4000).constData();
    const QByteArray first = contents(path("first.dxf")), second = contents(path("second.dxf"));
    EXPECT_TRUE(first.contains("PHONOMARKASSOC"));
    EXPECT_TRUE(second.contains("VOICE_LIST"));
    EXPECT_TRUE(second.contains("\nPHONOMARK\n  5\n") || second.contains("\nPHONOMARK\n5\n"));
    EXPECT_FALSE(contents(path("gone.dxf")).contains("\nMxDbPhonomark\n100"));
    for (int turn = 0; turn < kTurns; ++turn)
        for (const char* when : {"away", "back"}) {
            const QByteArray end = '-' + QByteArray::number(turn) + ".dxf";
            EXPECT_TRUE(contents(path(when + QByteArray("1") + end)) == first) << when << turn;
            EXPECT_TRUE(contents(path(when + QByteArray("2") + end)) == second) << when << turn;
        }
}
