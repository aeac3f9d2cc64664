// SPDX-License-Identifier: MIT
#include "merix/ui/command_actions.h"

#include "merix/ed/command_stack.h"
#include "merix/ui/icons.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QSet>
#include <QToolBar>

#include <array>

namespace merix::ui {

namespace {

struct Entry {
    const char* menu;
    const char* text;
    const char* line; ///< as typed
    const char* icon; ///< empty: only in the menu
    const char* keys;
};

constexpr auto kEntries = std::to_array<Entry>({
    {"Draw", QT_TRANSLATE_NOOP("Commands", "&Line"), "_LINE", "LINE", ""},
    {"Draw", QT_TRANSLATE_NOOP("Commands", "&Polyline"), "_PLINE", "PLINE", ""},
    {"Draw", QT_TRANSLATE_NOOP("Commands", "&Rectangle"), "_RECTANG", "RECTANG", ""},
    {"Draw", QT_TRANSLATE_NOOP("Commands", "&Circle"), "_CIRCLE", "CIRCLE", ""},
    {"Draw", QT_TRANSLATE_NOOP("Commands", "&Arc"), "_ARC", "ARC", ""},
    {"Draw", QT_TRANSLATE_NOOP("Commands", "&Text"), "_TEXT", "TEXT", ""},
    {"Modify", QT_TRANSLATE_NOOP("Commands", "&Move"), "_MOVE", "MOVE", ""},
    {"Modify", QT_TRANSLATE_NOOP("Commands", "&Copy"), "_COPY", "COPY", ""},
    {"Modify", QT_TRANSLATE_NOOP("Commands", "&Rotate"), "_ROTATE", "ROTATE", ""},
    {"Modify", QT_TRANSLATE_NOOP("Commands", "&Scale"), "_SCALE", "SCALE", ""},
    {"Modify", QT_TRANSLATE_NOOP("Commands", "M&irror"), "_MIRROR", "MIRROR", ""},
    {"Modify", QT_TRANSLATE_NOOP("Commands", "S&tretch"), "_STRETCH", "STRETCH", ""},
    {"Modify", QT_TRANSLATE_NOOP("Commands", "&Erase"), "_ERASE", "ERASE", "Del"},
    {"View", QT_TRANSLATE_NOOP("Commands", "Zoom &Window"), "_ZOOM _Window", "ZOOM_WINDOW", ""},
    {"View", QT_TRANSLATE_NOOP("Commands", "Zoom &Previous"), "_ZOOM _Previous", "ZOOM_PREVIOUS", ""},
    {"View", QT_TRANSLATE_NOOP("Commands", "Zoom &Extents"), "_ZOOM _Extents", "ZOOM_EXTENTS", "Ctrl+0"},
    {"View", QT_TRANSLATE_NOOP("Commands", "P&an"), "_PAN", "", ""},
    {"View", QT_TRANSLATE_NOOP("Commands", "&Regenerate"), "_REGEN", "", ""},
    {"Notes", QT_TRANSLATE_NOOP("Commands", "&Voice Note"), "_PHONOMARK", "PHONOMARK", ""},
    {"Notes", QT_TRANSLATE_NOOP("Commands", "&All Voice Notes…"), "_VOICEMAN", "VOICEMAN", ""},
    {"Notes", QT_TRANSLATE_NOOP("Commands", "&Show or Hide Voice Notes"), "_VOICESHOW", "VOICESHOW", ""},
    {"Edit", QT_TRANSLATE_NOOP("Commands", "Cu&t"), "_CUTCLIP", "", "Ctrl+X"},
    {"Edit", QT_TRANSLATE_NOOP("Commands", "&Copy"), "_COPYCLIP", "", "Ctrl+C"},
    {"Edit", QT_TRANSLATE_NOOP("Commands", "&Paste"), "_PASTECLIP", "", "Ctrl+V"},
    {"Edit", QT_TRANSLATE_NOOP("Commands", "Au&dit"), "_AUDIT", "", ""},
});

/// "LINE" of "_LINE _Option".
QString commandOf(const char* line) {
    return QString::fromLatin1(line).section(QLatin1Char(' '), 0, 0).mid(1);
}

} // namespace

CommandActions::CommandActions(QObject* parent)
    : QObject(parent) {}

void CommandActions::fill(const char* menuName, QMenu& menu, QToolBar& bar) {
    bool first = true;
    for (const Entry& entry : kEntries) {
        if (qstrcmp(entry.menu, menuName) != 0)
            continue;
        auto* action = new QAction(QCoreApplication::translate("Commands", entry.text), this);
        const QString line = QString::fromLatin1(entry.line), name = commandOf(entry.line);
        action->setShortcut(QKeySequence(QString::fromLatin1(entry.keys)));
        action->setToolTip(QStringLiteral("%1 (%2)").arg(action->text().remove(QLatin1Char('&')), name));
        connect(action, &QAction::triggered, this, [line] { ed::CommandStack::instance().submit(line); });
        menu.addAction(action);
        if (*entry.icon) {
            action->setIcon(iconNamed(QString::fromLatin1(entry.icon)));
            action->setIconVisibleInMenu(true);
            if (std::exchange(first, false))
                bar.addSeparator();
            bar.addAction(action);
        }
        m_known.append({action, name});
    }
}

void CommandActions::refresh(bool hasDrawing) {
    QSet<QString> registered;
    for (const QString& name : ed::CommandStack::instance().commands())
        registered.insert(name.section(QLatin1Char('.'), -1).toUpper());
    for (const Known& known : qAsConst(m_known))
        known.action->setEnabled(hasDrawing && registered.contains(known.command));
}

} // namespace merix::ui
