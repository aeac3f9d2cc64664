// SPDX-License-Identifier: MIT
#include "merix/ap/autosave.h"

#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/editor.h"
#include "tests/merix/ed/answers.h"

#include "host/ed/editor.h"
#include "host/ed/variables.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <ctime>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

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

/// The messages of failed copies.
struct Told {
    Told() {
        QObject::connect(&Autosave::instance(), &Autosave::failed, &context,
                         [this](const QString& why) { lines << why; });
    }
    QStringList lines;
    QObject context;
};

/// While it lives no file of this process can be longer than a sector: for writers a disk that is full.
class FullDisk {
public:
    FullDisk() {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = 512;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before{};
};

class AutosaveTest : public testing::Test {
protected:
    AutosaveTest() {
        qputenv("XDG_DATA_HOME", folder.filePath(QStringLiteral("data")).toUtf8());
        qputenv("XDG_CONFIG_HOME", folder.filePath(QStringLiteral("config")).toUtf8());
        Autosave::instance();
        path = folder.filePath(QStringLiteral("plan.dxf"));
        document = DocManager::instance().create();
        EXPECT_TRUE(DocManager::instance().saveAs(*document, path).ok);
    }
    ~AutosaveTest() override {
        for (Document* open : DocManager::instance().all())
            DocManager::instance().close(*open);
        Autosave::instance().setInterval(0);
    }
    /// Lets the time pass in which copies are made many times.
    static void letLooksPass() {
        Autosave::instance().setInterval(0.0001); // 6 ms, with a look each
        QEventLoop loop;
        QTimer::singleShot(100, &loop, &QEventLoop::quit);
        loop.exec();
    }
    static void waitFor(const QString& file) {
        for (const QDeadlineTimer bound(60'000); !QFile::exists(file) && !bound.hasExpired();)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        EXPECT_TRUE(QFile::exists(file)) << file.toStdString();
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
    const QString copy = path + QStringLiteral(".ms$");
    ASSERT_TRUE(DocManager::instance().writeCopy(*document, copy).ok);
    const ap::Result result = Autosave::instance().recover({copy, path, {}, {}});
    EXPECT_FALSE(result.ok);
    EXPECT_NE(result.message.indexOf(QStringLiteral("close the drawing")), -1);
    EXPECT_EQ(DocManager::instance().all().size(), 1U);
}

TEST_F(AutosaveTest, AFullDiskIsToldOnceAndLeavesTheWorkAndTheEarlierCopyAsTheyWere) {
    const Told told;
    addLine(*document, 5);
    const QString copy = Autosave::instance().saveNow().value(0);
    const QByteArray earlier = bytes(copy), drawing = bytes(path);
    {
        const FullDisk full;
        for (int line = 0; line < 3; ++line) {
            addLine(*document, 6);
            EXPECT_TRUE(Autosave::instance().saveNow().isEmpty());
        }
    }
    ASSERT_EQ(told.lines.size(), 1);
    EXPECT_TRUE(told.lines[0].startsWith(QStringLiteral("Automatic save: ")));
    EXPECT_NE(told.lines[0].indexOf(copy), -1) << told.lines[0].toStdString();
    EXPECT_EQ(bytes(copy), earlier);
    EXPECT_EQ(bytes(path), drawing);
    EXPECT_EQ(QDir(folder.path()).entryList({QStringLiteral(".merix-*")}, QDir::Files | QDir::Hidden), QStringList());
    EXPECT_EQ(linesIn(*document), 4);
    EXPECT_TRUE(document->isChanged());
    EXPECT_EQ(Autosave::instance().saveNow(), QStringList{copy}) << "there is room again";
    {
        const FullDisk full;
        addLine(*document, 7);
        Autosave::instance().saveNow();
    }
    EXPECT_EQ(told.lines.size(), 2) << "a failure after a success is told again";
}

TEST_F(AutosaveTest, AFolderThatCannotBeWrittenHasItsCopiesInTheUsersDataFolder) {
    const QString gone = folder.filePath(QStringLiteral("gone"));
    ASSERT_TRUE(QDir().mkpath(gone));
    ASSERT_TRUE(DocManager::instance().saveAs(*document, gone + QStringLiteral("/plan.dxf")).ok);
    ASSERT_TRUE(QDir(gone).removeRecursively());
    const Told told;
    addLine(*document, 5);
    const QString copy = Autosave::instance().saveNow().value(0);
    EXPECT_TRUE(copy.startsWith(folder.filePath(QStringLiteral("data")))) << copy.toStdString();
    EXPECT_TRUE(QFile::exists(copy));
    EXPECT_TRUE(told.lines.isEmpty());
}

TEST_F(AutosaveTest, WithoutAnyPlaceForACopyTheWorkGoesOn) {
    QFile(folder.filePath(QStringLiteral("file"))).open(QFile::WriteOnly);
    qputenv("XDG_DATA_HOME", folder.filePath(QStringLiteral("file/data")).toUtf8());
    const Told told;
    Document* fresh = DocManager::instance().create();
    addLine(*fresh, 5);
    EXPECT_TRUE(Autosave::instance().saveNow().isEmpty());
    EXPECT_TRUE(Autosave::instance().saveNow().isEmpty());
    EXPECT_EQ(told.lines, QStringList{QStringLiteral("Automatic save: %1: no folder for a copy").arg(fresh->title())});
    EXPECT_EQ(linesIn(*fresh), 1);
}

TEST_F(AutosaveTest, ACopyThatNobodyWillBeOfferedIsToldOf) {
    QFile(folder.filePath(QStringLiteral("file"))).open(QFile::WriteOnly);
    qputenv("XDG_DATA_HOME", folder.filePath(QStringLiteral("file/data")).toUtf8());
    const Told told;
    addLine(*document, 5);
    Autosave::instance().saveNow();
    EXPECT_TRUE(QFile::exists(path + QStringLiteral(".ms$")));
    ASSERT_EQ(told.lines.size(), 1);
    EXPECT_NE(told.lines[0].indexOf(QStringLiteral("nobody will be offered")), -1) << told.lines[0].toStdString();
    DocManager::instance().close(*document);
    EXPECT_FALSE(QFile::exists(path + QStringLiteral(".ms$")));
}

TEST_F(AutosaveTest, ACopyOfAnotherRunIsKeptUntilTheDrawingIsNewer) {
    const QString left = path + QStringLiteral(".ms$");
    QFile file(left);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("left behind");
    file.close();
    addLine(*document, 5);
    EXPECT_EQ(Autosave::instance().saveNow(), QStringList{path + QStringLiteral(".2.ms$")});
    EXPECT_EQ(bytes(left), QByteArray("left behind"));
    ASSERT_TRUE(DocManager::instance().save(*document).ok);
    EXPECT_FALSE(QFile::exists(path + QStringLiteral(".2.ms$")));
    EXPECT_TRUE(QFile::exists(left));
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    file.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFile::FileModificationTime);
    file.close();
    addLine(*document, 6);
    struct Reactor : MxEditorReactor {
        void beginSave(MxDbDatabase*, const wchar_t* name) override {
            there = QFile::exists(QString::fromWCharArray(name));
        }
        bool there = true;
    } reactor;
    ed::Editor::instance().addReactor(&reactor);
    EXPECT_EQ(Autosave::instance().saveNow(), QStringList{left}) << "nobody is offered that one any more";
    ed::Editor::instance().removeReactor(&reactor);
    EXPECT_FALSE(reactor.there) << "it would be taken for the new one if the program died now";
}

TEST_F(AutosaveTest, WhatReactorsWriteAlongWithACopyIsNoChangeAndNoStep) {
    struct Reactor : MxEditorReactor {
        void beginSave(MxDbDatabase*, const wchar_t*) override { addLine(*document, 9); }
        Document* document = nullptr;
    } reactor;
    reactor.document = document;
    addLine(*document, 5);
    addLine(*document, 6);
    ASSERT_TRUE(DocManager::instance().undo(*document));
    const db::UndoRecorder& undo = document->database()->imp().undo;
    const auto undoSteps = undo.undoUnits().size(), redoSteps = undo.redoUnits().size();
    const quint64 changes = document->changes();
    ed::Editor::instance().addReactor(&reactor);
    EXPECT_EQ(Autosave::instance().saveNow().size(), 1);
    ed::Editor::instance().removeReactor(&reactor);
    EXPECT_EQ(undo.undoUnits().size(), undoSteps);
    EXPECT_EQ(undo.redoUnits().size(), redoSteps);
    EXPECT_EQ(document->changes(), changes);
    EXPECT_TRUE(document->isChanged());
    EXPECT_TRUE(DocManager::instance().redo(*document));
    EXPECT_TRUE(DocManager::instance().undo(*document));
    EXPECT_TRUE(DocManager::instance().undo(*document));
    EXPECT_FALSE(DocManager::instance().undo(*document));
}

TEST_F(AutosaveTest, NoCopyIsMadeInTheMiddleOfACommandButWhileItWaitsForTheUser) {
    static std::function<void()> body;
    const QString copy = path + QStringLiteral(".ms$");
    body = [&] {
        addLine(*document, 5);
        letLooksPass();
        EXPECT_FALSE(QFile::exists(copy));
        QString answer;
        ed::Prompter::instance().getString(false, QStringLiteral("Next: "), answer);
    };
    ed::CommandStack::instance().addCommand(L"TEST", L"SLOW", L"SLOW", 0, [] { body(); });
    test::Answers answers({QStringLiteral("on")});
    answers.before = [&] { waitFor(copy); };
    EXPECT_EQ(ed::CommandStack::instance().runLine(QStringLiteral("SLOW")), ed::CommandStack::Outcome::kEnded);
    EXPECT_EQ(document->database()->imp().undo.undoUnits().size(), 1U);
    EXPECT_TRUE(document->isChanged());
}

TEST_F(AutosaveTest, TheVariableSetsTheIntervalAndNoughtMakesNoCopies) {
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 7), Mx::eOk);
    EXPECT_EQ(Autosave::instance().interval(), 7.0);
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 601), Mx::eOutOfRange);
    EXPECT_EQ(Autosave::instance().interval(), 7.0);
    letLooksPass();
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 0), Mx::eOk);
    EXPECT_EQ(Autosave::instance().interval(), 0.0);
    addLine(*document, 5);
    QEventLoop loop;
    QTimer::singleShot(100, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_FALSE(QFile::exists(path + QStringLiteral(".ms$")));
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 5), Mx::eOk);
}

TEST_F(AutosaveTest, ACopyThatAnOpenDrawingHasIsNeitherRecoveredNorDiscarded) {
    addLine(*document, 5);
    const QString copy = Autosave::instance().saveNow().value(0);
    const ap::Recovery recovery{copy, folder.filePath(QStringLiteral("other.dxf")), {}, {}};
    for (const ap::Result& result : {Autosave::instance().check(recovery), Autosave::instance().recover(recovery),
                                     Autosave::instance().discard(recovery)}) {
        EXPECT_FALSE(result.ok);
        EXPECT_NE(result.message.indexOf(QStringLiteral("of a drawing that is open")), -1);
    }
    EXPECT_TRUE(QFile::exists(copy));
    EXPECT_EQ(DocManager::instance().all().size(), 1U);
}

TEST_F(AutosaveTest, ACopyThatIsGoneIsNeitherRecoveredNorDiscarded) {
    const ap::Recovery recovery{path + QStringLiteral(".ms$"), {}, {}, {}};
    for (const ap::Result& result : {Autosave::instance().check(recovery), Autosave::instance().recover(recovery),
                                     Autosave::instance().discard(recovery)}) {
        EXPECT_FALSE(result.ok);
        EXPECT_NE(result.message.indexOf(QStringLiteral("not there any more")), -1);
    }
}

TEST_F(AutosaveTest, ACopyThatCannotBeWrittenWhereItWasGoesToTheUsersDataFolder) {
    const QString gone = folder.filePath(QStringLiteral("gone"));
    ASSERT_TRUE(QDir().mkpath(gone));
    ASSERT_TRUE(DocManager::instance().saveAs(*document, gone + QStringLiteral("/plan.dxf")).ok);
    addLine(*document, 5);
    const QString first = Autosave::instance().saveNow().value(0);
    ASSERT_TRUE(first.startsWith(gone));
    ASSERT_TRUE(QDir(gone).removeRecursively());
    const Told told;
    addLine(*document, 6);
    const QString second = Autosave::instance().saveNow().value(0);
    EXPECT_TRUE(second.startsWith(folder.filePath(QStringLiteral("data")))) << second.toStdString();
    EXPECT_TRUE(QFile::exists(second));
    EXPECT_TRUE(told.lines.isEmpty());
    EXPECT_TRUE(ap::SessionList::isHeld(second));
    EXPECT_FALSE(ap::SessionList::isHeld(first));
    DocManager::instance().close(*document);
    EXPECT_FALSE(QFile::exists(second));
}

TEST_F(AutosaveTest, NobodyButTheUserReadsACopy) {
    addLine(*document, 5);
    const QString copy = Autosave::instance().saveNow().value(0);
    EXPECT_EQ(QFile::permissions(copy) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(AutosaveTest, TheCopyOfAnotherProgramAtWorkIsLeftThoughTheDrawingHasOvertakenIt) {
    const QString theirs = path + QStringLiteral(".ms$");
    int ready[2], done[2];
    ASSERT_EQ(::pipe(ready), 0);
    ASSERT_EQ(::pipe(done), 0);
    const pid_t child = fork();
    if (child == 0) {
        addLine(*document, 5);
        const bool isMade = Autosave::instance().saveNow() == QStringList{theirs};
        char byte = isMade ? 'y' : 'n';
        _exit(::write(ready[1], &byte, 1) == 1 && ::read(done[0], &byte, 1) == 1 ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    const QByteArray before = bytes(theirs);
    addLine(*document, 6);
    EXPECT_TRUE(DocManager::instance().save(*document).ok);
    QFile old(theirs);
    ASSERT_TRUE(old.open(QFile::ReadWrite));
    EXPECT_TRUE(old.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFile::FileModificationTime));
    old.close();
    addLine(*document, 7);
    EXPECT_EQ(Autosave::instance().saveNow(), QStringList{path + QStringLiteral(".2.ms$")});
    EXPECT_EQ(bytes(theirs), before);
    EXPECT_EQ(::write(done[1], &byte, 1), 1);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    for (const int end : {ready[0], ready[1], done[0], done[1]})
        ::close(end);
}

namespace {

/// What a copy takes of the processor, at least.
struct Costly : MxEditorReactor {
    explicit Costly(int milliseconds)
        : cost(milliseconds) {
        ed::Editor::instance().addReactor(this);
    }
    ~Costly() override { ed::Editor::instance().removeReactor(this); }
    void beginSave(MxDbDatabase*, const wchar_t*) override {
        ++copies;
        last.start();
        const auto spent = [] { return qint64(std::clock()) * 1000 / CLOCKS_PER_SEC; };
        for (const qint64 until = spent() + cost + 1; spent() < until;) {
        }
    }
    bool waitFor(int count) const {
        for (const QDeadlineTimer bound(60'000); copies < count && !bound.hasExpired();)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return copies == count;
    }
    int cost, copies = 0;
    QElapsedTimer last;
};

} // namespace

TEST_F(AutosaveTest, AChangeIsCopiedWhenItIsOldEnoughHoweverLongTheInterval) {
    Autosave::instance().setInterval(600);
    Autosave::instance().setAge(20);
    addLine(*document, 5);
    waitFor(path + QStringLiteral(".ms$"));
    Autosave::instance().setAge(4000);
}

TEST_F(AutosaveTest, CopiesTakeNoMoreThanAHundredthOfTheProcessor) {
    Autosave::instance().setInterval(600);
    Autosave::instance().setAge(1);
    Costly costly(10);
    addLine(*document, 5);
    ASSERT_TRUE(costly.waitFor(1));
    const QElapsedTimer first = costly.last;
    addLine(*document, 6);
    ASSERT_TRUE(costly.waitFor(2));
    EXPECT_GE(first.msecsTo(costly.last), 100 * costly.cost);
    Autosave::instance().setAge(4000);
}

TEST_F(AutosaveTest, CostlyCopiesAreMadeWhenTheIntervalIsOver) {
    Autosave::instance().setInterval(0.0005); // 30 ms
    Costly costly(500);
    addLine(*document, 5);
    ASSERT_TRUE(costly.waitFor(1));
    const QElapsedTimer first = costly.last;
    addLine(*document, 6);
    ASSERT_TRUE(costly.waitFor(2));
    EXPECT_LT(first.msecsTo(costly.last), 100 * costly.cost);
}

TEST_F(AutosaveTest, AnEndWithoutAQuestionLeavesCopiesOfWhatIsUnsavedOnly) {
    addLine(*document, 5);
    Document* saved = DocManager::instance().create();
    const QString other = folder.filePath(QStringLiteral("other.dxf"));
    addLine(*saved, 5);
    ASSERT_EQ(Autosave::instance().saveNow().size(), 2);
    ASSERT_TRUE(DocManager::instance().saveAs(*saved, other).ok);
    addLine(*document, 6);
    Autosave::instance().keepUnsaved();
    DocManager::instance().closeAll();
    EXPECT_TRUE(QFile::exists(path + QStringLiteral(".ms$")));
    EXPECT_FALSE(QFile::exists(other + QStringLiteral(".ms$")));
    const auto left = QDir(ap::recoveryFolder()).entryList({QStringLiteral("*.ms$")});
    EXPECT_EQ(left, QStringList()) << "the copy from before the drawing had a name";
    EXPECT_EQ(linesIn(*DocManager::instance().create()), 0);
}
