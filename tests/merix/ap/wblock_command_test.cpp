// SPDX-License-Identifier: MIT
#include "merix/ap/wblock_command.h"

#include "merix/io/drawing_file.h"
#include "tests/merix/ed/command_fixture.h"

#include <QFile>
#include <QTemporaryDir>

using namespace merix;
using testing::HasSubstr;

namespace {

class WblockCommandTest : public test::CommandFixture {
protected:
    WblockCommandTest() {
        type({"LINE", "10,10", "50,10", "", "CIRCLE", "100,100", "20"});
        shown();
    }
    QString path(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    void wblock(const QString& file, std::vector<QString> rest) {
        rest.insert(rest.begin(), {QStringLiteral("WBLOCK"), file});
        const auto before = snapshot();
        type(rest);
        EXPECT_TRUE(snapshot() == before);
    }
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(WblockCommandTest, TheSelectionIsWrittenAsADrawing) {
    for (const char* name : {"part.dxf", "part.merix"}) {
        wblock(path(name), {QStringLiteral("10,10"), QStringLiteral("30,10"), QString()});
        MxDbDatabase part;
        ASSERT_EQ(io::readDrawing(path(name).toStdString(), part).error, "");
        const auto& entities = part.imp().block(part.imp().roots.modelSpace)->entityIds();
        ASSERT_EQ(entities.size(), 1U);
        EXPECT_EQ(dynamic_cast<db::Line&>(*db::DatabaseImp::peek(entities[0])).start, MxGePoint3d(0, 0, 0));
    }
}

TEST_F(WblockCommandTest, AFileThatIsThereIsReplacedOnlyWhenToldSo) {
    QFile file(path("a.dxf"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    wblock(path("a.dxf"), {QString()});
    EXPECT_EQ(QFileInfo(path("a.dxf")).size(), 4);
    wblock(path("a.dxf"), {QStringLiteral("Yes"), QStringLiteral("0,0"), QStringLiteral("all"), QString()});
    EXPECT_GT(QFileInfo(path("a.dxf")).size(), 4);
}

TEST_F(WblockCommandTest, AnOpenDrawingIsNotWrittenOver) {
    ASSERT_TRUE(ap::DocManager::instance().saveAs(document, path("open.dxf")).ok);
    wblock(path("open.dxf"), {});
    EXPECT_THAT(shown(), HasSubstr("it is open as a drawing"));
}

TEST_F(WblockCommandTest, EscAndWhatCannotBeWrittenLeaveNoFile) {
    wblock(path("a.dxf"), {});
    wblock(path("a.dxf"), {QStringLiteral("0,0")});
    wblock(path("a.dxf"), {QStringLiteral("0,0"), QString()});
    EXPECT_FALSE(QFile::exists(path("a.dxf")));
    wblock(path("a.xyz"), {QStringLiteral("0,0"), QStringLiteral("all"), QString()});
    EXPECT_FALSE(QFile::exists(path("a.xyz")));
}
