// SPDX-License-Identifier: MIT
#include "merix/ap/recovery.h"

#include "merix/ap/document_imp.h"
#include "merix/rx/shutdown.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSemaphore>
#include <QStandardPaths>
#include <QThread>

#include <cstdio>
#include <memory>

#include <unistd.h>

namespace merix::ap {

namespace {

/// How long another thread that ends the process waits for the main thread to come to its event loop, milliseconds.
/// Past it the main thread is taken to hang; drawings that are being changed cannot be written.
constexpr int kPatience = 10000;

QString freeName(const QString& stem) {
    for (int n = 1; n < 1000; ++n) {
        const QString number = n == 1 ? QString() : QStringLiteral("-%1").arg(n);
        const QString path = stem + QStringLiteral(".recovered") + number + QStringLiteral(".merix");
        if (!QFileInfo::exists(path))
            return path;
    }
    return {};
}

void writeAndTell() {
    for (const QString& path : DocManager::instance().writeRecoveryFiles())
        std::fprintf(stderr, "merix: unsaved changes were kept in %s\n", qPrintable(path));
}

void atShutdown() {
    DocManager& manager = DocManager::instance();
    if (QThread::currentThread() == manager.thread()) {
        writeAndTell();
        return;
    }
    // Shared with the main thread: whoever comes last finds it alive.
    const auto written = std::make_shared<QSemaphore>();
    QMetaObject::invokeMethod(
        &manager,
        [written] {
            writeAndTell();
            written->release();
            for (;;)
                pause(); // the other thread ends the process; nothing may change until then
        },
        Qt::QueuedConnection);
    if (!written->tryAcquire(1, kPatience))
        std::fputs("merix: the program hangs, unsaved changes could not be kept\n", stderr);
}

} // namespace

QString recoveryPath(const QString& path, const QString& title) {
    if (!path.isEmpty() && QFileInfo(QFileInfo(path).absolutePath()).isWritable())
        return freeName(path);
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/recovery");
    if (!QDir().mkpath(folder))
        return {};
    return freeName(folder + QLatin1Char('/') + title);
}

void writeRecoveryFilesAtShutdown() {
    rx::setShutdownHook(&atShutdown);
}

} // namespace merix::ap
