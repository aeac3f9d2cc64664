// SPDX-License-Identifier: MIT
#include "merix/ui/undo_menu.h"

#include "merix/db/database_imp.h"
#include "merix/ed/command_stack.h"

namespace merix::ui {

namespace {

constexpr int kShown = 30; ///< more would not fit on a small screen

/// "GRIP_STRETCH" and "Grip stretch" are "Grip stretch" to a reader.
QString readable(const std::wstring& unit) {
    QString name = QString::fromStdWString(unit).replace(QLatin1Char('_'), QLatin1Char(' '));
    if (name == name.toUpper())
        name = name.left(1) + name.mid(1).toLower();
    return name.isEmpty() ? UndoMenu::tr("A change") : name;
}

} // namespace

QStringList stepNames(const ap::Document& document, Steps steps, int most) {
    const db::UndoRecorder& undo = document.database()->imp().undo;
    const auto& units = steps == Steps::kUndo ? undo.undoUnits() : undo.redoUnits();
    QStringList names;
    for (auto unit = units.rbegin(); unit != units.rend() && names.size() < most; ++unit)
        names << readable(unit->name);
    return names;
}

UndoMenu::UndoMenu(Steps steps, std::function<ap::Document*()> document, QWidget* parent)
    : QMenu(parent)
    , m_steps(steps)
    , m_document(std::move(document)) {
    connect(this, &QMenu::aboutToShow, this, &UndoMenu::fill);
}

void UndoMenu::fill() {
    clear();
    const ap::Document* document = m_document();
    if (!document)
        return;
    int count = 0;
    for (QString& name : stepNames(*document, m_steps, kShown)) {
        QAction* action = addAction(name.replace(QLatin1Char('&'), QLatin1String("&&")));
        // Typed for the hand: the command line then tells what was taken back.
        const QString line = QStringLiteral("%1 %2")
                                 .arg(m_steps == Steps::kUndo ? QLatin1String("_UNDO") : QLatin1String("_REDO"))
                                 .arg(++count);
        connect(action, &QAction::triggered, this, [line] { ed::CommandStack::instance().submit(line); });
    }
}

} // namespace merix::ui
