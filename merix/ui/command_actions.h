// SPDX-License-Identifier: MIT
// Commands as entries of menus and buttons of the tool bar.
#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QAction;
class QMainWindow;
class QMenu;
class QToolBar;

namespace merix::ui {

/// Each action types its command for the hand. One whose command is not registered cannot be chosen.
class CommandActions : public QObject {
    Q_OBJECT
public:
    explicit CommandActions(QObject* parent);

    /// Adds the entries of a menu ("Draw", "Modify", "View", "Notes"), and those with an icon to the tool bar.
    void fill(const char* menuName, QMenu& menu, QToolBar& bar);
    /// Allows what can be chosen now.
    void refresh(bool hasDrawing);

private:
    struct Known {
        QAction* action;
        QString command;
    };
    QList<Known> m_known;
};

} // namespace merix::ui
