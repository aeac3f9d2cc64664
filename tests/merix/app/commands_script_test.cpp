// SPDX-License-Identifier: MIT
// Every command in the real program: registered, named, reachable from a script, and undone as one step.
#include "tests/support/process.h"

#include <QFile>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

using merix::test::Outcome;
using merix::test::runScript;
using testing::ContainsRegex;

namespace {

class CommandsScriptTest : public testing::Test {
protected:
    void expectFine(const QByteArray& script, const QStringList& drawings = {}) {
        const Outcome outcome = runScript(script, m_folder.path(), drawings);
        EXPECT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.constData();
        EXPECT_EQ(outcome.err, QByteArray());
    }
    QByteArray bytes(const char* name) const {
        QFile file(m_folder.filePath(QString::fromUtf8(name)));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
        return file.readAll();
    }
    /// The drawing without what a save counts on: the next free handle.
    QByteArray drawing(const char* name) const {
        QString text = QString::fromUtf8(bytes(name)).remove(QLatin1Char('\r'));
        text.replace(QRegularExpression(QStringLiteral("\\$HANDSEED\\n\\s*5\\n[0-9A-F]+")),
                     QStringLiteral("$HANDSEED"));
        return text.toUtf8();
    }
    QTemporaryDir m_folder;
};

const QByteArray kSheet = "NEW\n"
                          "LINE\n10,10\n50,10\n\n"
                          "CIRCLE\n100,100\n20\n"
                          "LAYER\nNew\nWalls\n\n"
                          "ZOOM\n0,0\n200,150\n";

} // namespace

TEST_F(CommandsScriptTest, WhatEachCommandDoesIsUndoneInOneStepAndRedone) {
    const std::map<QByteArray, QByteArray> commands = {
        {"ARC", "10,0\n0,10\n-10,0\n"},
        {"CHPROP", "all\n\nColor\nred\n\n"},
        {"CIRCLE", "5,5\n3\n"},
        {"COPY", "30,10\n\n0,0\n5,5\n\n"},
        {"CUTCLIP", "30,10\n\n"},
        {"ERASE", "30,10\n\n"},
        {"LAYER", "New\nA\nSet\nA\n\n"},
        {"-LAYER", "LOck\nWalls\n\n"},
        {"LAYOUT", "New\nSheet\n"},
        {"-LAYOUT", "Rename\nLayout1\nFirst\n"},
        {"LINE", "0,0\n1,1\n\n"},
        {"MIRROR", "all\n\n0,0\n0,1\nYes\n"},
        {"MOVE", "all\n\n0,0\n5,5\n"},
        {"PLINE", "0,0\nWidth\n1\n2\n10,0\nArc\n10,10\nClose\n"},
        {"RECTANG", "0,0\n10,5\n"},
        {"ROTATE", "all\n\n0,0\n30\n"},
        {"SCALE", "all\n\n0,0\n3\n"},
        {"SETVAR", "LTSCALE\n2\n"},
        {"STRETCH", "60,20\n40,0\n\n0,0\n10,5\n"},
        {"TEXT", "0,0\n5\n30\nsome text\n"},
    };
    for (const auto& [name, answers] : commands) {
        SCOPED_TRACE(name.constData());
        expectFine(kSheet + "@save before.dxf\n_" + name + "\n" + answers +
                   "@save after.dxf\n@undo\n@save undone.dxf\n@redo\n@save redone.dxf\n");
        EXPECT_NE(drawing("before.dxf"), drawing("after.dxf"));
        EXPECT_EQ(drawing("before.dxf"), drawing("undone.dxf"));
        EXPECT_EQ(drawing("after.dxf"), drawing("redone.dxf"));
    }
}

TEST_F(CommandsScriptTest, ShortNamesStandForCommands) {
    expectFine("NEW\nL\n0,0\n10,0\n\n@expect First point: 0,0\n"
               "C\n0,0\n5\n@expect Radius or [Diameter]: 5\n"
               "E\nall\n\n@expect 2 erased\n"
               "U\n@expect Undone: ERASE\n"
               "Z\n\nRE\nLA\n?\n\n@expect 0: white, Continuous, Default, current\n");
}

TEST_F(CommandsScriptTest, ObjectsAreSelectedByTheHandInsideACommand) {
    expectFine(kSheet + "MOVE\n@click 30 10\n@expect 1 found, 1 in all\n@key Return\n0,0\n0,5\n"
                        "ERASE\n@click 30 15\n\n@expect 1 erased\n");
}

TEST_F(CommandsScriptTest, WhatIsDrawnOnALayoutIsOnItsPaper) {
    expectFine("NEW\nLAYOUT\nSet\nLayout1\nLINE\n0,0\n10,0\n\nLAYOUTSWITCH\nModel\nERASE\nall\n\n@expect Nothing is "
               "selected.\n@save a.dxf\n");
    EXPECT_THAT(drawing("a.dxf").toStdString(), ContainsRegex("\n *67\n *1\n"));
}

TEST_F(CommandsScriptTest, ANoteIsMovedAndErasedButNeverCopied) {
    expectFine(kSheet + "PHONOMARK\n150,50\n"
                        "COPY\n@click 150 50\n\n0,0\n20,0\n\n@expect 1 cannot be copied.\n"
                        "MOVE\n150,50\n\n0,0\n0,20\n"
                        "ERASE\n150,70\n\n@expect 1 erased\n");
}

TEST_F(CommandsScriptTest, VariablesAreSavedWithTheDrawing) {
    expectFine(kSheet + "SETVAR\nCLAYER\nWalls\nSETVAR\nCECOLOR\n3\n@save a.merix\n@close\n"
                        "@open a.merix\nSETVAR\nCLAYER\n\n@expect <Walls>\nSETVAR\nCECOLOR\n\n@expect <green>\n");
}

TEST_F(CommandsScriptTest, PartsOfADrawingAreCopiedIntoAnother) {
    expectFine(kSheet + "COPYCLIP\nall\n\nNEW\nPASTECLIP\n0,0\nERASE\nall\n\n@expect 2 erased\n");
}

TEST_F(CommandsScriptTest, TheTimeBetweenCopiesIsKeptForTheNextRun) {
    expectFine(
        "NEW\nSETVAR\nSAVETIME\n\n@expect <5>\nSETVAR\nSAVETIME\n601\n@expect SAVETIME does not take the value 601.\n"
        "SETVAR\nSAVETIME\n17\n");
    expectFine("NEW\nSETVAR\nSAVETIME\n\n@expect <17>\n");
}
