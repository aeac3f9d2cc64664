// SPDX-License-Identifier: MIT
#include "merix/ui/undo_menu.h"

#include "merix/ed/command_stack.h"
#include "merix/ui/plain_text.h"

#include <algorithm>

namespace merix::ui {

namespace {

constexpr int kShown = 30; ///< more would not fit on a small screen

/// "GRIP_STRETCH" and "grip stretch" are "Grip stretch" to a reader, as the text of an action.
QString readable(QString name) {
    name.replace(QLatin1Char('_'), QLatin1Char(' '));
    if (name == name.toUpper())
        name = name.toLower();
    return withoutKeys(name.left(1).toUpper() + name.mid(1));
}

} // namespace

QStringList stepNames(const ap::Document& document, Steps steps, int most) {
    QStringList names = (steps == Steps::kUndo ? document.undoNames() : document.redoNames()).mid(0, most);
    std::transform(names.begin(), names.end(), names.begin(), readable);
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
    ap::Document* document = m_document();
    if (!document)
        return;
    int count = 0;
    for (const QString& name : stepNames(*document, m_steps, kShown)) {
        QAction* action = addAction(name);
        // Typed for the hand: the command line then tells what was taken back.
        const QString line = QStringLiteral("%1 %2")
                                 .arg(m_steps == Steps::kUndo ? QLatin1String("_UNDO") : QLatin1String("_REDO"))
                                 .arg(++count);
        connect(action, &QAction::triggered, this, [this, line, document] {
            if (m_document() != document)
                return; // the names were another drawing's
            ap::DocManager::instance().activate(document);
            ed::CommandStack::instance().submit(line);
        });
    }
}

} // namespace merix::ui
