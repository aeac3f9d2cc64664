// SPDX-License-Identifier: MIT
#include "merix/ap/session_list.h"

#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace merix::ap;

namespace {

/// Every test has a user's data folder of its own.
class SessionListTest : public testing::Test {
protected:
    SessionListTest() { qputenv("XDG_DATA_HOME", folder.path().toUtf8()); }
    QString write(const QString& name) {
        writeTo(folder.filePath(name), "x");
        return folder.filePath(name);
    }
    static void writeTo(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
    }
    void setAge(const QString& path, int secondsAgo) {
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        file.setFileTime(QDateTime::currentDateTime().addSecs(-secondsAgo), QFile::FileModificationTime);
    }
    /// Another program puts something aside and dies.
    void dieWith(const QString& copy, const QString& drawing) {
        const pid_t child = fork();
        if (child == 0) {
            SessionList::instance().add(copy, drawing, QStringLiteral("title %\n of it"));
            _exit(0); // no destructor runs
        }
        int status = 0;
        waitpid(child, &status, 0);
    }
    /// Their paths. The folder carries the program's name, which other tests of the process may have set.
    QStringList lists() const {
        QStringList found;
        for (QDirIterator at(folder.path(), {QStringLiteral("*.list")}, QDir::Files, QDirIterator::Subdirectories);
             at.hasNext();)
            found << at.next();
        return found;
    }
    QByteArray bytesOf(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        return file.readAll();
    }
    QTemporaryDir folder;
};

} // namespace

TEST_F(SessionListTest, WhatADeadProgramPutAsideIsFoundWithItsNames) {
    const QString drawing = write(QStringLiteral("plän 1.dxf")), copy = write(QStringLiteral("plän 1.dxf.ms$"));
    setAge(drawing, 60);
    dieWith(copy, drawing);
    const auto found = SessionList::leftBehind();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].copy, copy);
    EXPECT_EQ(found[0].drawing, drawing);
    EXPECT_EQ(found[0].title, QStringLiteral("title %\n of it"));
}

TEST_F(SessionListTest, ACopyOlderThanItsDrawingIsNotOfferedAndItsListGoes) {
    const QString drawing = write(QStringLiteral("a.dxf")), copy = write(QStringLiteral("a.dxf.ms$"));
    dieWith(copy, drawing);
    writeTo(drawing, "saved since");
    setAge(copy, 60);
    EXPECT_EQ(lists().size(), 1);
    EXPECT_TRUE(SessionList::leftBehind().empty());
    EXPECT_TRUE(lists().isEmpty());
}

TEST_F(SessionListTest, ADrawingWhoseSaveDiedHalfWayIsNotNewerThanItsCopy) {
    const QString drawing = write(QStringLiteral("a.merix")), copy = write(QStringLiteral("a.merix.ms$"));
    dieWith(copy, drawing);
    setAge(copy, 60); // the drawing was written to since
    EXPECT_TRUE(SessionList::isListed(copy));
    EXPECT_EQ(SessionList::leftBehind().size(), 1U) << "what was written has been rolled back: it is as it was";
    writeTo(drawing, "half of it");
    const QString journal = write(QStringLiteral("a.merix-journal"));
    EXPECT_EQ(SessionList::leftBehind().size(), 1U) << "it will be rolled back";
    QFile::remove(journal);
    EXPECT_TRUE(SessionList::leftBehind().empty()) << "it was saved";
    EXPECT_FALSE(SessionList::isListed(copy));
}

TEST_F(SessionListTest, TheStateOfTheDrawingIsTakenAnewWithEachCopy) {
    const QString drawing = write(QStringLiteral("a.dxf")), copy = write(QStringLiteral("a.dxf.ms$"));
    const pid_t child = fork();
    if (child == 0) {
        SessionList::instance().add(copy, drawing, QStringLiteral("a"));
        writeTo(drawing, "saved meanwhile");
        SessionList::instance().add(copy, drawing, QStringLiteral("a"));
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    setAge(copy, 60);
    EXPECT_EQ(SessionList::leftBehind().size(), 1U);
}

TEST_F(SessionListTest, ACopyThatIsGoneIsNotOffered) {
    dieWith(folder.filePath(QStringLiteral("gone.ms$")), QString());
    EXPECT_TRUE(SessionList::leftBehind().empty());
}

TEST_F(SessionListTest, WhatAProgramAtWorkHoldsIsNotOffered) {
    const QString copy = write(QStringLiteral("a.ms$"));
    dieWith(copy, QString());
    ASSERT_EQ(SessionList::leftBehind().size(), 1U);
    int ready[2], done[2];
    ASSERT_EQ(pipe(ready), 0);
    ASSERT_EQ(pipe(done), 0);
    const pid_t child = fork();
    if (child == 0) {
        SessionList::instance().add(copy, QString(), QStringLiteral("a"));
        char byte = 1;
        if (::write(ready[1], &byte, 1) != 1 || ::read(done[0], &byte, 1) != 1)
            _exit(1);
        _exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_TRUE(SessionList::leftBehind().empty());
    ASSERT_EQ(::write(done[1], &byte, 1), 1);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(SessionList::leftBehind().size(), 1U);
}

TEST_F(SessionListTest, ADamagedListIsPassedOverAndDeleted) {
    const QString copy = write(QStringLiteral("a.ms$"));
    dieWith(copy, QString());
    ASSERT_EQ(SessionList::leftBehind().size(), 1U);
    const QString list = lists().value(0);
    for (const QByteArray& text : {QByteArray("nonsense\n\n\n\n"), QByteArray("merix copies 1\nonly"), QByteArray()}) {
        writeTo(list, text);
        EXPECT_TRUE(SessionList::leftBehind().empty());
        EXPECT_TRUE(lists().isEmpty());
    }
}

TEST_F(SessionListTest, WhatStandsBehindTheEndOfAListWasCutOffByADeath) {
    const QString a = write(QStringLiteral("a.ms$")), b = write(QStringLiteral("b.ms$"));
    dieWith(a, QString());
    dieWith(b, QString());
    ASSERT_EQ(lists().size(), 2);
    const QByteArray other = bytesOf(lists()[1]);
    const QByteArray tail = other.mid(other.indexOf('\n') + 1);
    writeTo(lists()[0], bytesOf(lists()[0]) + "rest\nof\none\n" + tail);
    QFile::remove(lists()[1]);
    EXPECT_EQ(SessionList::leftBehind().size(), 1U);
}

TEST_F(SessionListTest, AnotherFileThanACopyIsNeverOffered) {
    const QString drawing = write(QStringLiteral("plan.dxf"));
    dieWith(drawing, QString());
    EXPECT_TRUE(SessionList::leftBehind().empty());
}

TEST_F(SessionListTest, AListDeletedByAnotherProgramBeforeItWasLockedIsNotWrittenTo) {
    const QString path = folder.filePath(QStringLiteral("a.list"));
    const auto make = [&] { return ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL, 0600); };
    const int deleted = make();
    QFile::remove(path);
    EXPECT_FALSE(lockNewList(deleted));
    const int whole = make();
    EXPECT_TRUE(lockNewList(whole));
    const int other = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    EXPECT_NE(::flock(other, LOCK_SH | LOCK_NB), 0) << "it is locked";
    for (const int file : {deleted, whole, other})
        ::close(file);
}

TEST_F(SessionListTest, TheListGoesWithItsLastEntry) {
    const QString a = write(QStringLiteral("a.ms$")), b = write(QStringLiteral("b.ms$"));
    SessionList& list = SessionList::instance();
    ASSERT_TRUE(list.add(a, QString(), QStringLiteral("a")));
    ASSERT_TRUE(list.add(b, QString(), QStringLiteral("b")));
    EXPECT_EQ(lists().size(), 1);
    list.remove(a);
    EXPECT_EQ(lists().size(), 1);
    list.remove(b);
    EXPECT_TRUE(lists().isEmpty());
}
