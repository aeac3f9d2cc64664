// SPDX-License-Identifier: MIT
// What windows know of the time before: where they stood, which drawings were open. It is kept with the user's
// settings; a setting that makes no sense counts as none.
#pragma once

#include <QString>
#include <QStringList>

class QMainWindow;
class QMenu;

namespace merix::ui {

/// Gives the window the place and the size that the last one had, on a screen that is there; without such, its own
/// size, but no more than the screen has.
void placeAsBefore(QMainWindow& window);
void keepPlace(const QMainWindow& window);

constexpr int kRecentDrawings = 9;

/// The paths of the drawings that were opened or saved last, the latest first, at most kRecentDrawings.
QStringList recentDrawings();
void keepRecent(const QString& path);
void forgetRecent(const QString& path);

/// Where the drawing used last lies; empty for none.
QString lastFolder();

} // namespace merix::ui
