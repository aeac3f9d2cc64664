// SPDX-License-Identifier: MIT
#include "merix/ap/recovery.h"

#include "merix/ap/document_imp.h"
#include "merix/ap/session_list.h"
#include "merix/rx/shutdown.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <semaphore>
#include <utility>

#include <unistd.h>

namespace merix::ap {

namespace {

/// How long another thread that ends the process waits for the main thread to come to its event loop.
/// Past it the main thread is taken to hang; drawings that are being changed cannot be written.
constexpr std::chrono::seconds kPatience(10);

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

/// Tells a worker that the main thread has written. One is enough: the process ends once.
std::binary_semaphore g_written{0};

/// Main thread, once: a failure in writing may end in asking again.
void writeForAnother() {
    static bool isWriting = false;
    if (std::exchange(isWriting, true))
        return;
    writeAndTell();
    g_written.release();
}

/// Lives in the main thread and writes there when a worker asks for it. The worker posts an event that the main thread
/// has made: what the threads share otherwise is the semaphore alone.
class Keeper : public QObject {
public:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        writeForAnother();
        for (;;)
            pause(); // the other thread ends the process; nothing may change until then
    }
};

Keeper* g_keeper = nullptr; // never destroyed: a worker may end the process at any time
std::atomic<QEvent*> g_request = nullptr;

void atShutdown() {
    if (QThread::currentThread() == g_keeper->thread()) {
        writeAndTell();
        return;
    }
    if (QEvent* request = g_request.exchange(nullptr))
        QCoreApplication::postEvent(g_keeper, request);
    if (!g_written.try_acquire_for(kPatience))
        std::fputs("merix: the program hangs, unsaved changes could not be kept\n", stderr);
}

/// The main thread, about to end the process while a worker that does so waits for it, does not come to its event loop
/// any more.
void meanwhile() {
    if (QThread::currentThread() == g_keeper->thread())
        writeForAnother();
}

} // namespace

QString recoveryPath(const QString& path, const QString& title) {
    if (!path.isEmpty() && QFileInfo(QFileInfo(path).absolutePath()).isWritable())
        return freeName(path);
    const QString folder = recoveryFolder();
    return folder.isEmpty() ? QString() : freeName(folder + QLatin1Char('/') + title);
}

void writeRecoveryFilesAtShutdown() {
    if (!g_keeper) {
        g_keeper = new Keeper;
        g_request = new QEvent(QEvent::User);
    }
    rx::setShutdownHook(&atShutdown, &meanwhile);
}

} // namespace merix::ap
