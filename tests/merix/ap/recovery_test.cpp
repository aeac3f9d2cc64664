// SPDX-License-Identifier: MIT
#include "merix/ap/recovery.h"

#include "host/rx/shutdown.h"
#include "merix/ap/document_imp.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <unistd.h>

using namespace merix;

namespace {

enum class Ends { Main, Another, AnotherThenMain };

/// Whether the thread waits for something: for this one.
bool sleeps(pid_t thread) {
    QFile file(QStringLiteral("/proc/self/task/%1/stat").arg(thread));
    return file.open(QIODevice::ReadOnly) && file.readAll().contains(") S ");
}

/// Opens a drawing, changes it and ends the process from these threads.
void endWithUnsavedWork(const QString& file, Ends ends) {
    int count = 1;
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(count, arguments);
    auto& manager = ap::DocManager::instance();
    ap::Document* document = manager.create();
    manager.saveAs(*document, file);
    MxDbBlockTableRecord* space = nullptr;
    mxdbOpenObject(space, document->database()->currentSpaceId(), Mx::kForWrite);
    MxDbObjectId id;
    auto* line = new db::Line;
    space->appendMxDbEntity(id, line);
    line->close();
    space->close();
    std::atomic<pid_t> other = 0;
    if (ends != Ends::Main)
        std::thread([&other] {
            other = gettid();
            mxrxShutdown(1);
        }).detach();
    if (ends == Ends::Another)
        QCoreApplication::exec();
    while (ends == Ends::AnotherThenMain && !sleeps(other))
        std::this_thread::yield();
    mxrxShutdown(1);
}

class RecoveryTest : public testing::Test {
protected:
    RecoveryTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(RecoveryTest, EndingTheProcessKeepsUnsavedWork) {
    EXPECT_EXIT(endWithUnsavedWork(m_folder.filePath(QStringLiteral("a.dxf")), Ends::Main), testing::ExitedWithCode(1),
                "unsaved changes were kept in .*a.dxf.recovered.merix");
}

TEST_F(RecoveryTest, AWorkerThatEndsTheProcessWaitsForTheMainThreadToKeepUnsavedWork) {
    EXPECT_EXIT(endWithUnsavedWork(m_folder.filePath(QStringLiteral("a.dxf")), Ends::Another),
                testing::ExitedWithCode(1), "unsaved changes were kept in .*a.dxf.recovered.merix");
}

TEST_F(RecoveryTest, AMainThreadThatEndsTheProcessWhileAWorkerDoesKeepsUnsavedWorkForIt) {
    EXPECT_EXIT(endWithUnsavedWork(m_folder.filePath(QStringLiteral("a.dxf")), Ends::AnotherThenMain),
                testing::ExitedWithCode(1), "^merix: unsaved changes were kept in [^\n]*a.dxf.recovered.merix\n$");
}

TEST_F(RecoveryTest, TheFirstFreeNameBesideTheDrawingIsTaken) {
    const QString file = m_folder.filePath(QStringLiteral("a.dxf"));
    EXPECT_EQ(ap::recoveryPath(file, {}), file + QStringLiteral(".recovered.merix"));
    QFile taken(file + QStringLiteral(".recovered.merix"));
    ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
    EXPECT_EQ(ap::recoveryPath(file, {}), file + QStringLiteral(".recovered-2.merix"));
}

TEST_F(RecoveryTest, ADrawingNeverSavedGoesToTheDataFolder) {
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.path()));
    const QString path = ap::recoveryPath({}, QStringLiteral("Drawing7"));
    EXPECT_TRUE(path.startsWith(m_folder.path())) << path.toStdString();
    EXPECT_TRUE(path.endsWith(QStringLiteral("/recovery/Drawing7.recovered.merix"))) << path.toStdString();
}
