// SPDX-License-Identifier: MIT
#include "merix/ap/session_list.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

using namespace merix::ap;

namespace {

/// Every test has a user's data folder of its own.
class SessionListTest : public testing::Test {
protected:
    SessionListTest() { qputenv("XDG_DATA_HOME", folder.path().toUtf8()); }
    QString write(const QString& name, const QByteArray& bytes = "x") {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
        return path;
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
    QStringList lists() const {
        QStringList found;
        QDir data(folder.path());
        for (const QString& application : data.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            found += QDir(data.filePath(application) + QStringLiteral("/recovery")).entryList(QDir::Files);
        return found + QDir(data.filePath(QStringLiteral("recovery"))).entryList(QDir::Files);
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
    setAge(copy, 60);
    dieWith(copy, drawing);
    EXPECT_EQ(lists().size(), 1);
    EXPECT_TRUE(SessionList::leftBehind().empty());
    EXPECT_TRUE(lists().isEmpty());
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
    const QString list = SessionList::leftBehind().empty() ? QString() : lists().front();
    ASSERT_FALSE(list.isEmpty());
    for (const QByteArray& text : {QByteArray("nonsense\n\n\n\n"), QByteArray("merix copies 1\nonly"), QByteArray()}) {
        QDir data(folder.path());
        for (const QString& at : {QStringLiteral("recovery"), QStringLiteral("merix_ap_test/recovery")})
            if (data.exists(at))
                write(at + QLatin1Char('/') + list, text);
        EXPECT_TRUE(SessionList::leftBehind().empty());
        EXPECT_TRUE(lists().isEmpty());
    }
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
