// SPDX-License-Identifier: MIT
#include "merix/ap/session_list.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
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
    /// Another program that has put something aside and works on until this goes.
    class AtWork {
    public:
        explicit AtWork(const QString& copy, const QString& drawing = {}) {
            EXPECT_EQ(::pipe(m_ready), 0);
            EXPECT_EQ(::pipe(m_done), 0);
            m_child = fork();
            if (m_child == 0) {
                ::close(m_done[1]);
                SessionList::instance().add(copy, drawing, QStringLiteral("a"));
                char byte = 1;
                if (::write(m_ready[1], &byte, 1) == 1 && ::read(m_done[0], &byte, 1) == 1)
                    _exit(0);
                _exit(1);
            }
            char byte = 0;
            EXPECT_EQ(::read(m_ready[0], &byte, 1), 1);
        }
        ~AtWork() {
            EXPECT_EQ(::write(m_done[1], "x", 1), 1);
            ::waitpid(m_child, nullptr, 0);
            for (const int end : {m_ready[0], m_ready[1], m_done[0], m_done[1]})
                ::close(end);
        }
        AtWork(const AtWork&) = delete;
        AtWork& operator=(const AtWork&) = delete;

    private:
        int m_ready[2]{}, m_done[2]{};
        pid_t m_child = 0;
    };
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
    {
        const AtWork other(copy);
        EXPECT_TRUE(SessionList::leftBehind().empty());
    }
    EXPECT_EQ(SessionList::leftBehind().size(), 1U);
}

TEST_F(SessionListTest, WhatAProgramAtWorkHoldsIsTakenWhateverItIsWorth) {
    const QString drawing = write(QStringLiteral("a.dxf")), copy = write(QStringLiteral("a.dxf.ms$"));
    const QString coming = folder.filePath(QStringLiteral("b.dxf.ms$"));
    {
        const AtWork other(copy, drawing), third(coming);
        writeTo(drawing, "saved by yet another");
        setAge(copy, 60);
        EXPECT_TRUE(SessionList::isListed(copy)) << "the drawing has overtaken it";
        EXPECT_TRUE(SessionList::isHeld(copy));
        EXPECT_TRUE(SessionList::isListed(coming)) << "it is not written yet";
        EXPECT_TRUE(SessionList::isHeld(coming));
    }
    EXPECT_FALSE(SessionList::isListed(copy));
    EXPECT_FALSE(SessionList::isHeld(coming));
}

TEST_F(SessionListTest, ACopyWhoseDiskIsNotThereNowIsOfferedWhenItIsBack) {
    const QString disk = folder.filePath(QStringLiteral("disk")), away = folder.filePath(QStringLiteral("away"));
    ASSERT_TRUE(QDir().mkdir(disk));
    dieWith(write(QStringLiteral("disk/a.ms$")), QString());
    ASSERT_TRUE(QDir().rename(disk, away));
    EXPECT_TRUE(SessionList::leftBehind().empty());
    EXPECT_EQ(lists().size(), 1);
    ASSERT_TRUE(QDir().rename(away, disk));
    EXPECT_EQ(SessionList::leftBehind().size(), 1U);
}

TEST_F(SessionListTest, AListThatIsNotOfThisVersionIsLeftAlone) {
    dieWith(write(QStringLiteral("a.ms$")), QString());
    const QString list = lists().value(0);
    for (const QByteArray& text : {QByteArray("merix copies 2\nx\n"), QByteArray("merix copies 10\nend\n"),
                                   "merix copies 1\n" + QByteArray(1 << 20, 'x')}) {
        writeTo(list, text);
        EXPECT_TRUE(SessionList::leftBehind().empty());
        EXPECT_TRUE(QFile::exists(list)) << text.left(20).constData();
    }
}

/// Runs where the system refuses every lock.
TEST_F(SessionListTest, WhereThereAreNoLocksNoListsAreLeft) {
    const pid_t child = fork();
    if (child == 0) {
        sock_filter filter[] = {
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_flock, 0, 1),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOLCK),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        };
        const sock_fprog program{4, filter};
        if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
            ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
            _exit(2);
        _exit(SessionList::instance().add(write(QStringLiteral("a.ms$")), QString(), QStringLiteral("a")) ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(lists().isEmpty());
}

TEST_F(SessionListTest, ADamagedListIsPassedOverAndDeleted) {
    const QString copy = write(QStringLiteral("a.ms$"));
    dieWith(copy, QString());
    ASSERT_EQ(SessionList::leftBehind().size(), 1U);
    const QString list = lists().value(0);
    for (const QByteArray& text : {QByteArray("merix copies 1\nonly"), QByteArray("merix copies 1\n"), QByteArray()}) {
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
