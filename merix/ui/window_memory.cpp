// SPDX-License-Identifier: MIT
#include "merix/ui/window_memory.h"

#include "merix/ed/user_settings.h"

#include <QFileInfo>
#include <QMainWindow>
#include <QScreen>

namespace merix::ui {

namespace {

const QString kPlaceKey = QStringLiteral("Window/Place"), kRecentKey = QStringLiteral("Recent/Drawings");

void keepList(const QStringList& paths) {
    ed::userSettings().setValue(kRecentKey, paths);
}

} // namespace

void placeAsBefore(QMainWindow& window) {
    if (window.restoreGeometry(ed::userSettings().value(kPlaceKey).toByteArray()))
        return;
    if (const QScreen* screen = window.screen())
        window.resize(window.size().boundedTo(screen->availableSize()));
}

void keepPlace(const QMainWindow& window) {
    ed::userSettings().setValue(kPlaceKey, window.saveGeometry());
}

QStringList recentDrawings() {
    QStringList paths = ed::userSettings().value(kRecentKey).toStringList();
    paths.removeAll(QString());
    return paths.mid(0, kRecentDrawings);
}

void keepRecent(const QString& path) {
    if (path.isEmpty())
        return;
    const QString whole = QFileInfo(path).absoluteFilePath();
    QStringList paths = recentDrawings();
    paths.removeAll(whole);
    paths.prepend(whole);
    keepList(paths.mid(0, kRecentDrawings));
}

void forgetRecent(const QString& path) {
    QStringList paths = recentDrawings();
    paths.removeAll(path);
    keepList(paths);
}

QString lastFolder() {
    const QStringList paths = recentDrawings();
    return paths.isEmpty() ? QString() : QFileInfo(paths.first()).path();
}

} // namespace merix::ui
