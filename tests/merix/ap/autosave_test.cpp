// SPDX-License-Identifier: MIT
#include "merix/ap/autosave.h"

#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/ed/editor.h"
#include "merix/ed/reactor_list.h"

#include "host/ed/editor.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace merix;
using ap::Autosave;
using ap::DocManager;
using ap::Document;

namespace {

MxDbObjectId addLine(Document& document, double length) {
    MxDbBlockTableRecord* space = nullptr;
    EXPECT_EQ(mxdbOpenObject(space, document.database()->currentSpaceId(), Mx::kForWrite), Mx::eOk);
    MxDbObjectId id;
    auto* line = new db::Line;
    line->end = {length, 0, 0};
    space->appendMxDbEntity(id, line);
    line->close();
    space->close();
    return id;
}

int linesIn(Document& document) {
    int count = 0;
    for (const db::ObjectStub& stub : document.database()->imp().stubs())
        count += stub.object && !stub.erased && stub.object->isKindOf(db::Line::desc());
    return count;
}

class AutosaveTest : public testing::Test {
protected:
    AutosaveTest() {
        qputenv("XDG_DATA_HOME", folder.filePath(QStringLiteral("data")).toUtf8());
        Autosave::instance();
        path = folder.filePath(QStringLiteral("plan.dxf"));
        document = DocManager::instance().create();
        EXPECT_TRUE(DocManager::instance().saveAs(*document, path).ok);
    }
    ~AutosaveTest() override {
        for (Document* open : DocManager::instance().all())
            DocManager::instance().close(*open);
    }
    QByteArray bytes(const QString& of) {
        QFile file(of);
        EXPECT_TRUE(file.open(QFile::ReadOnly)) << of.toStdString();
        return file.readAll();
    }
    int argumentCount = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QTemporaryDir folder;
    QString path;
    Document* document = nullptr;
};

} // namespace

TEST_F(AutosaveTest, ACopyStandsBesideTheDrawingAndTheDrawingIsLeftAsItWas) {
    const QByteArray before = bytes(path);
    addLine(*document, 5);
    EXPECT_EQ(Autosave::instance().saveNow(), QStringList{path + QStringLiteral(".ms$")});
    EXPECT_EQ(bytes(path), before);
    EXPECT_TRUE(document->isChanged());
    EXPECT_EQ(document->path(), path);
    // What the drawing's own save writes is what it would have been without the copy.
    EXPECT_TRUE(DocManager::instance().save(*document).ok);
    const QByteArray after = bytes(path);
    Document* fresh = DocManager::instance().create();
    const QString other = folder.filePath(QStringLiteral("other.dxf"));
    EXPECT_TRUE(DocManager::instance().saveAs(*fresh, other).ok);
    addLine(*fresh, 5);
    EXPECT_TRUE(DocManager::instance().save(*fresh).ok);
    EXPECT_EQ(after, bytes(other));
}

TEST_F(AutosaveTest, NothingIsCopiedWithoutAFurtherChange) {
    EXPECT_TRUE(Autosave::instance().saveNow().isEmpty());
    addLine(*document, 5);
    EXPECT_EQ(Autosave::instance().saveNow().size(), 1);
    EXPECT_TRUE(Autosave::instance().saveNow().isEmpty());
    addLine(*document, 6);
    EXPECT_EQ(Autosave::instance().saveNow().size(), 1);
}

TEST_F(AutosaveTest, ASaveAndAWilledCloseTakeTheCopyAway) {
    addLine(*document, 5);
    const QString copy = Autosave::instance().saveNow().value(0);
    ASSERT_TRUE(QFile::exists(copy));
    EXPECT_TRUE(DocManager::instance().save(*document).ok);
    EXPECT_FALSE(QFile::exists(copy));
    addLine(*document, 6);
    ASSERT_EQ(Autosave::instance().saveNow().value(0), copy);
    DocManager::instance().close(*document);
    EXPECT_FALSE(QFile::exists(copy));
}

TEST_F(AutosaveTest, ADrawingThatWasNeverSavedIsCopiedToTheUsersDataFolder) {
    Document* fresh = DocManager::instance().create();
    addLine(*fresh, 5);
    const QString copy = Autosave::instance().saveNow().value(0);
    EXPECT_TRUE(copy.startsWith(folder.filePath(QStringLiteral("data")))) << copy.toStdString();
    EXPECT_TRUE(copy.endsWith(QStringLiteral(".ms$")));
    EXPECT_TRUE(QFile::exists(copy));
}

TEST_F(AutosaveTest, ReactorsAreToldOfTheCopysName) {
    struct Reactor : MxEditorReactor {
        void beginSave(MxDbDatabase*, const wchar_t* fileName) override { told = fileName; }
        std::wstring told;
    } reactor;
    ed::Editor::instance().addReactor(&reactor);
    addLine(*document, 5);
    Autosave::instance().saveNow();
    ed::Editor::instance().removeReactor(&reactor);
    EXPECT_EQ(reactor.told, (path + QStringLiteral(".ms$")).toStdWString());
}

TEST_F(AutosaveTest, CopiesAreMadeByThemselvesAfterTheInterval) {
    Autosave::instance().setInterval(0.0005); // 30 ms
    addLine(*document, 5);
    const QString copy = path + QStringLiteral(".ms$");
    for (const QDeadlineTimer bound(60'000); !QFile::exists(copy) && !bound.hasExpired();)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_TRUE(QFile::exists(copy));
    Autosave::instance().setInterval(5);
}

TEST_F(AutosaveTest, ARecoveredDrawingIsTheChangedOneUnderItsOwnName) {
    addLine(*document, 5);
    const QString copy = Autosave::instance().saveNow().value(0);
    const QString kept = folder.filePath(QStringLiteral("kept.ms$"));
    ASSERT_TRUE(QFile::copy(copy, kept)); // as if the program had died now
    DocManager::instance().close(*document);
    const ap::Recovery recovery{kept, path, QStringLiteral("plan.dxf"), {}};
    ASSERT_TRUE(Autosave::instance().recover(recovery).ok);
    Document* recovered = DocManager::instance().current();
    EXPECT_EQ(recovered->path(), path);
    EXPECT_TRUE(recovered->isChanged());
    EXPECT_EQ(linesIn(*recovered), 1);
    EXPECT_TRUE(DocManager::instance().save(*recovered).ok);
    EXPECT_FALSE(QFile::exists(kept));
    EXPECT_TRUE(bytes(path).contains("LINE"));
}

TEST_F(AutosaveTest, ADrawingThatIsOpenIsNotRecoveredOverItself) {
    const ap::Result result = Autosave::instance().recover({path + QStringLiteral(".ms$"), path, {}, {}});
    EXPECT_FALSE(result.ok);
    EXPECT_NE(result.message.indexOf(QStringLiteral("close the drawing")), -1);
    EXPECT_EQ(DocManager::instance().all().size(), 1U);
}

TEST_F(AutosaveTest, AFailureIsToldOnce) {
    QStringList told;
    QObject context;
    QObject::connect(&Autosave::instance(), &Autosave::failed, &context, [&](const QString& why) { told << why; });
    ASSERT_TRUE(QDir().mkpath(path + QStringLiteral(".ms$"))); // a folder stands in the way
    addLine(*document, 5);
    EXPECT_TRUE(Autosave::instance().saveNow().isEmpty());
    EXPECT_TRUE(Autosave::instance().saveNow().isEmpty());
    ASSERT_EQ(told.size(), 1);
    EXPECT_NE(told[0].indexOf(path), -1) << told[0].toStdString();
}
