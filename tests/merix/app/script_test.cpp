// SPDX-License-Identifier: MIT
// Scripts in the real program.
#include "tests/support/process.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using merix::test::Outcome;
using merix::test::runScript;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

namespace {

class ScriptTest : public testing::Test {
protected:
    Outcome run(const QByteArray& script, const QStringList& drawings = {}) {
        return runScript(script, m_folder.path(), drawings);
    }
    void expectFine(const QByteArray& script, const QStringList& drawings = {}) {
        const Outcome outcome = run(script, drawings);
        EXPECT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.constData();
        EXPECT_EQ(outcome.err, QByteArray());
    }
    void expectFailure(const QByteArray& script, const char* message) {
        const Outcome outcome = run(script);
        EXPECT_EQ(outcome.status, 1) << outcome.out.constData();
        EXPECT_EQ(outcome.err.toStdString(), std::string("merix: ") + message + "\n");
    }
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(ScriptTest, TheHistoryGoesToStandardOutput) {
    const Outcome outcome = run("NEW\nSAVEAS a.dxf\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out.toStdString(), "Command: NEW\nCommand: SAVEAS a.dxf\nSave drawing as: a.dxf\nSaved a.dxf\n");
}

TEST_F(ScriptTest, LinesAnswerPromptsAndAnEmptyLineIsEnter) {
    expectFine("NEW\n"
               "ZOOM\n"
               "\n"
               "@expect The drawing shows nothing.\n"
               "ZOOM\nWindow\n0,0\n@10,5\n"
               "@expect Opposite corner: @10,5\n"
               "ZOOM\n@click 5 2\n@key Escape\n"
               "@expect *Cancel*\n");
}

TEST_F(ScriptTest, CommentsAreNoLines) {
    expectFine("; nothing\n"
               "  ; nothing either\n"
               "NEW ; a drawing\n"
               "@expect NEW\n");
}

TEST_F(ScriptTest, AFailingLineEndsTheScriptWithItsNumber) {
    expectFailure("NEW\n\n@nosuch\nSAVEAS never.dxf\n", "stdin:3: unknown line @nosuch");
    EXPECT_FALSE(QFile::exists(m_folder.filePath(QStringLiteral("never.dxf"))));
}

TEST_F(ScriptTest, EachKindOfFailureIsTold) {
    expectFailure("nosuch\n", "stdin:1: Unknown command \"nosuch\".");
    expectFailure("(NoSuch)\n", "stdin:1: Unknown function \"NoSuch\".");
    expectFailure("@expect hello\n", "stdin:1: @expect: the command line does not show \"hello\"");
    expectFailure("NEW\n@hover 1\n", "stdin:2: @hover: a point is X Y in drawing units");
    expectFailure("NEW\n@hover 1e9 0\n", "stdin:2: @hover: the point 1e9 0 is not in the view");
    expectFailure("@click 1 1\n", "stdin:1: @click: no drawing is open");
    expectFailure("@wait soon\n", "stdin:1: @wait: a time is a whole number of milliseconds");
    expectFailure("@key NoSuchKey\n", "stdin:1: @key: unknown key NoSuchKey");
    expectFailure("@activate 1\n", "stdin:1: @activate: there is no drawing number 1");
    expectFailure("NEW\n@layout none\n", "stdin:2: @layout: there is no layout none");
    expectFailure("NEW\n@undo\n", "stdin:2: @undo: nothing to undo");
    expectFailure("NEW\n@redo\n", "stdin:2: @redo: nothing to redo");
    expectFailure("@shot no/such/a.png\n",
                  "stdin:1: @shot: no/such/a.png: cannot be written: No such file or directory");
}

TEST_F(ScriptTest, AFileNamesItsLines) {
    QFile file(m_folder.filePath(QStringLiteral("work.scr")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("NEW\r\n@close\r\n@close");
    file.close();
    const Outcome outcome = ::merix::test::run(
        QStringLiteral(MERIX_BINARY_DIR "/bin/merix"),
        {QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral("work.scr")}, m_folder.path());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, QByteArray("merix: work.scr:3: @close: no drawing is open\n"));
}

TEST_F(ScriptTest, ExpectSeesOnlyWhatCameSinceTheLastExpect) {
    expectFine("NEW\n@expect NEW\n@windows\n@expect Merix\n");
    expectFailure("NEW\n@expect NEW\n@expect NEW\n", "stdin:3: @expect: the command line does not show \"NEW\"");
}

TEST_F(ScriptTest, DrawingsAreOpenedSavedActivatedAndClosed) {
    expectFine("NEW\n@save a.dxf\nNEW\n@save b.merix\n@close\n@close\n");
    expectFine(
        "@activate 1\n@save\n@activate 2\n@close\n@layout Layout1\n@layout Model\n@open b.merix\n@close\n@close\n",
        {QStringLiteral("a.dxf"), QStringLiteral("b.merix")});
}

TEST_F(ScriptTest, ASaveUnderNoNameFails) {
    expectFailure("NEW\n@save\n", "stdin:2: @save: Drawing1: it has no file name yet");
}

TEST_F(ScriptTest, APictureShowsTheWindow) {
    expectFine("NEW\n@shot a.png\n");
    const QImage picture(m_folder.filePath(QStringLiteral("a.png")));
    EXPECT_GE(picture.width(), 800);
    EXPECT_GE(picture.height(), 600);
}

TEST_F(ScriptTest, KeysGoToTheCommandLine) {
    expectFine("@key N\n@key E\n@key W\n@key Return\n@expect Command: new\n@close\n");
}

TEST_F(ScriptTest, KeysWithCtrlAreControlCharactersAndTypeNothing) {
    for (const char* modifier : {"Ctrl+", "Ctrl+Shift+", "Ctrl+Alt+", "Ctrl+Meta+"}) {
        QByteArray script("NEW\n");
        for (const char* key : {"F", "T", "L", "B", "G", "R", "1", "2", "8", "/", "+", "-", "Space", "Tab", "F1"})
            script += QByteArray("@key ") + modifier + key + '\n';
        expectFine(script + "@key U\n@key Return\n@expect Command: u\n");
    }
}

TEST_F(ScriptTest, ShortcutsWorkAsUnderAHand) {
    expectFine("@key Ctrl+N\n@wait 10\n@save a.dxf\n");
    EXPECT_TRUE(QFile::exists(m_folder.filePath(QStringLiteral("a.dxf"))));
}

TEST_F(ScriptTest, QuitEndsTheScript) {
    expectFine("QUIT\n@nosuch\n");
}

TEST_F(ScriptTest, APromptAtTheEndIsCancelled) {
    const Outcome outcome = run("NEW\nZOOM\nWindow\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out.toStdString(), HasSubstr("First corner: *Cancel*"));
}

TEST_F(ScriptTest, TheModuleAnswersItsFunction) {
    expectFine("NEW\n(PhonomarkShow)\n@expect 1\n");
}

TEST_F(ScriptTest, ANoteIsPlacedByAClickUndoneAndRedone) {
    expectFine("NEW\nPHONOMARK\n@click 100 100\n@undo\n@redo\n@save a.dxf\n");
    QFile file(m_folder.filePath(QStringLiteral("a.dxf")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_THAT(file.readAll().toStdString(), HasSubstr("PHONOMARK"));
}

TEST_F(ScriptTest, EveryBranchOfPlacingANoteCanBeDriven) {
    QFile drawing(m_folder.filePath(QStringLiteral("line.dxf")));
    ASSERT_TRUE(drawing.open(QIODevice::WriteOnly));
    drawing.write("0\nSECTION\n2\nENTITIES\n0\nLINE\n8\n0\n10\n0\n20\n0\n11\n100\n21\n50\n0\nENDSEC\n0\nEOF\n");
    drawing.close();
    expectFine("PHONOMARK\n@expect note type = Point\n"
               "Settings\nSpokesman\nAnna\n@expect speaker = Anna\n"
               "Settings\nSpokesman\n\n@expect <Anna>\n"
               "Settings\nRegion\n@expect note type = Region, speaker = Anna\n"
               "Settings\n\n@expect note type = Point\n"
               "Settings\nreg\n10,10\n@20,15\n@expect Specify the opposite corner: @20,15\n"
               "PHONOMARK\n@expect note type = Region, speaker = Anna\n"
               "@click 10 10\n@key Escape\n@expect *Cancel*\n"
               "PHONOMARK\nSettings\n@key Escape\n@expect *Cancel*\n"
               "PHONOMARK\nSettings\nSpokesman\n@key Escape\n@expect *Cancel*\n"
               "PHONOMARK\nSettings\nObject\n50,40\n@expect or [Settings]: 50,40\n"
               "@click 60 30\n"
               "PHONOMARK\n@expect note type = Object\n60,30\n@expect This object already carries a voice note.\n"
               "PHONOMARK\n@key Escape\n@expect *Cancel*\n"
               "PHONOMARK\nSettings\nPoint\n40,40\n"
               "PHONOMARK\nSettings\nReply\n@expect note type = Reply\n"
               "@save placed.dxf\n",
               {drawing.fileName()});
    QFile file(m_folder.filePath(QStringLiteral("placed.dxf")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll().replace("\r\n", "\n");
    EXPECT_EQ(text.count("\n  0\nPHONOMARK\n") + text.count("\n0\nPHONOMARK\n"), 4);
    EXPECT_THAT(text.toStdString(), HasSubstr("{ACAD_REACTORS"));
    EXPECT_THAT(text.toStdString(), HasSubstr("PHONOMARKASSOC"));
}

TEST_F(ScriptTest, APictureOfTheViewHasTheSizeAskedFor) {
    expectFine("NEW\n@viewsize 640 400\n@viewshot a.png\n");
    EXPECT_EQ(QImage(m_folder.filePath(QStringLiteral("a.png"))).size(), QSize(640, 400));
    expectFailure("@viewsize 640\n", "stdin:1: @viewsize: a size is WIDTH HEIGHT in pixels, 1 to 10000 each");
    const Outcome outcome = run("@viewsize 1 1\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err.toStdString(), HasSubstr("stdin:1: @viewsize: the view is "));
}
