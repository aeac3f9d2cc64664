// SPDX-License-Identifier: MIT
// The real program as a process.
#include "tests/support/process.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using merix::test::Outcome;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class ProgramTest : public testing::Test {
protected:
    Outcome merix(const QStringList& arguments, const QByteArray& input = {}) {
        return test::run(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"), arguments, m_folder.path(), input);
    }
    /// One line on standard error that says what and where, status 1.
    static void expectComplaint(const Outcome& outcome, const char* where) {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err.toStdString(), StartsWith("merix: "));
        EXPECT_THAT(outcome.err.toStdString(), HasSubstr(where));
        EXPECT_EQ(outcome.err.count('\n'), 1) << outcome.err.constData();
    }
    QString path(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    void write(const char* name, const QByteArray& bytes) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    QByteArray read(const char* name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
    }
    /// A drawing with one line from 0,0 to 100,50.
    void writeDrawing(const char* name) const {
        write(name, "  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n  5\n20\n  8\n0\n 10\n0.0\n 20\n0.0\n 30\n0.0\n"
                    " 11\n100.0\n 21\n50.0\n 31\n0.0\n  0\nENDSEC\n  0\nEOF\n");
    }

    QTemporaryDir m_folder;

private:
    struct test {
        static Outcome run(const QString& program, const QStringList& arguments, const QString& folder,
                           const QByteArray& input) {
            return ::merix::test::run(program, arguments, folder, input);
        }
    };
};

} // namespace

TEST_F(ProgramTest, TellsItsVersionAndItsOptions) {
    const Outcome version = merix({QStringLiteral("--version")});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, QByteArray("merix " MERIX_VERSION "\n"));
    const Outcome help = merix({QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out.toStdString(), HasSubstr("--convert"));
}

TEST_F(ProgramTest, AnUnknownOptionIsAMistake) {
    expectComplaint(merix({QStringLiteral("--fast")}), "--fast");
}

TEST_F(ProgramTest, AFileThatIsNoDrawingIsNamedAndLeftAlone) {
    write("empty.dxf", "");
    const QByteArray junk = QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(5000, '\xC3');
    write("junk.dxf", junk);
    write("junk.merix", junk);
    writeDrawing("whole.dxf");
    write("cut.dxf", read("whole.dxf").left(60));
    QDir(m_folder.path()).mkdir(QStringLiteral("folder.dxf"));
    for (const char* name :
         {"missing.dxf", "missing.merix", "folder.dxf", "empty.dxf", "junk.dxf", "junk.merix", "cut.dxf"}) {
        const QStringList modes[] = {{QStringLiteral("--headless"), QString::fromUtf8(name)},
                                     {QStringLiteral("--convert"), QString::fromUtf8(name), QStringLiteral("out.dxf")},
                                     {QStringLiteral("--render"), QString::fromUtf8(name), QStringLiteral("out.png")}};
        for (const QStringList& arguments : modes) {
            SCOPED_TRACE(arguments.join(QLatin1Char(' ')).toStdString());
            expectComplaint(merix(arguments), name);
        }
    }
    EXPECT_FALSE(QFile::exists(path("out.dxf")));
    EXPECT_FALSE(QFile::exists(path("out.png")));
    EXPECT_EQ(read("junk.dxf"), junk);
    EXPECT_EQ(read("junk.merix"), junk);
    EXPECT_EQ(read("empty.dxf"), QByteArray());
}

TEST_F(ProgramTest, ConvertsByTheSuffixAndBack) {
    writeDrawing("a.dxf");
    EXPECT_EQ(merix({QStringLiteral("--convert"), QStringLiteral("a.dxf"), QStringLiteral("b.merix")}).err,
              QByteArray());
    EXPECT_THAT(read("b.merix").toStdString(), StartsWith("SQLite format 3"));
    const Outcome back = merix({QStringLiteral("--convert"), QStringLiteral("b.merix"), QStringLiteral("c.dxf")});
    EXPECT_EQ(back.status, 0) << back.err.constData();
    EXPECT_THAT(read("c.dxf").toStdString(), HasSubstr("LINE"));
}

TEST_F(ProgramTest, ADrawingIsConvertedBetweenTextAndBinaryDxf) {
    writeDrawing("a.dxf");
    const auto convert = [&](const char* from, const char* to, const char* form) {
        const Outcome outcome = merix(
            {QStringLiteral("--convert"), path(from), path(to), QStringLiteral("--form"), QString::fromLatin1(form)});
        EXPECT_EQ(outcome.status, 0) << outcome.err.constData();
    };
    convert("a.dxf", "b.dxf", "binary");
    EXPECT_TRUE(read("b.dxf").contains("Binary DXF"));
    convert("b.dxf", "c.dxf", "text");
    EXPECT_FALSE(read("c.dxf").contains("Binary DXF"));
    EXPECT_TRUE(read("c.dxf").contains("LINE"));
}

TEST_F(ProgramTest, AFileThatCannotBeWrittenIsNamed) {
    writeDrawing("a.dxf");
    const QString in = QStringLiteral("a.dxf");
    expectComplaint(merix({QStringLiteral("--convert"), in, QStringLiteral("no/such/b.dxf")}), "no/such/b.dxf");
    expectComplaint(merix({QStringLiteral("--convert"), in, QStringLiteral("b.dwg")}), "b.dwg");
    expectComplaint(merix({QStringLiteral("--render"), in, QStringLiteral("no/such/b.png")}), "no/such/b.png");
}

TEST_F(ProgramTest, ADiskThatIsFullIsToldAndTheOldFilesStay) {
    writeDrawing("in.dxf");
    ASSERT_EQ(merix({QStringLiteral("--convert"), path("in.dxf"), path("large.merix")}).status, 0);
    const QByteArray large = read("large.merix");
    // No file may grow beyond one block here, which is where a full disk stops it.
    const auto limited = [&](const QStringList& arguments) {
        return ::merix::test::run(QStringLiteral("/bin/sh"),
                                  QStringList{QStringLiteral("-c"),
                                              QStringLiteral("trap '' XFSZ; ulimit -f 1; exec \"$0\" \"$@\""),
                                              QStringLiteral(MERIX_BINARY_DIR "/bin/merix")} +
                                      arguments,
                                  m_folder.path());
    };
    write("out.dxf", "what stood here");
    write("out.png", "what stood here");
    expectComplaint(limited({QStringLiteral("--convert"), path("large.merix"), path("out.merix")}), "out.merix");
    expectComplaint(limited({QStringLiteral("--render"), path("in.dxf"), path("out.png")}), "out.png");
    expectComplaint(limited({QStringLiteral("--convert"), path("large.merix"), path("large.merix")}), "large.merix");
    EXPECT_EQ(read("out.png"), "what stood here");
    EXPECT_EQ(read("large.merix"), large);
    EXPECT_EQ(read("out.merix"), "(cannot be read)");
    QStringList left = QDir(m_folder.path()).entryList(QDir::Files);
    left.sort();
    EXPECT_EQ(left, (QStringList{QStringLiteral("in.dxf"), QStringLiteral("large.merix"), QStringLiteral("out.dxf"),
                                 QStringLiteral("out.png")}));
}

TEST_F(ProgramTest, RendersTheWholeDrawingInTheSizeAskedFor) {
    writeDrawing("a.dxf");
    const Outcome outcome = merix({QStringLiteral("--render"), QStringLiteral("a.dxf"), QStringLiteral("a.png"),
                                   QStringLiteral("--size"), QStringLiteral("400x200")});
    ASSERT_EQ(outcome.status, 0) << outcome.err.constData();
    const QImage picture(path("a.png"));
    ASSERT_EQ(picture.size(), QSize(400, 200));
    // The line runs from lower left to upper right with a margin around.
    const QRgb ground = picture.pixel(0, 0);
    int left = 400, right = -1;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 400; ++x)
            if (picture.pixel(x, y) != ground)
                left = std::min(left, x), right = std::max(right, x);
    EXPECT_NEAR(left, 16, 3);
    EXPECT_NEAR(right, 384, 3);
}

TEST_F(ProgramTest, AModuleThatCannotBeLoadedIsNamed) {
    expectComplaint(merix({QStringLiteral("--headless"), QStringLiteral("--module"), QStringLiteral("none.mrx")}),
                    "none.mrx");
    write("junk.mrx", "no library");
    expectComplaint(merix({QStringLiteral("--headless"), QStringLiteral("--module"), QStringLiteral("junk.mrx")}),
                    "junk.mrx");
}

TEST_F(ProgramTest, AScriptThatCannotBeReadIsNamed) {
    expectComplaint(merix({QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral("none.scr")}),
                    "none.scr");
    expectComplaint(merix({QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral(".")}), "folder");
}

TEST_F(ProgramTest, WithoutAScreenTheWindowIsRefusedInOneLine) {
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
    const Outcome outcome =
        ::merix::test::run(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"), {}, m_folder.path(), {}, environment);
    expectComplaint(outcome, "no screen");
}
