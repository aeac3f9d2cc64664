// SPDX-License-Identifier: MIT
#include "merix/ap/doc_manager_private.h"

namespace merix::ap {

bool DocManager::Private::begin(const QString& localName) {
    ed::Console& console = ed::Console::instance();
    if (!current) {
        console.print(QStringLiteral("\nNo drawing is open."));
        return false;
    }
    // Commands run one at a time: a lock that is still there was forgotten by whoever took it, and would shut out every
    // command from now on.
    if (current->m->commands == 0)
        current->m->releaseLocks();
    commandTarget = current;
    ++commandTarget->m->commands;
    commandTarget->m->changedBeforeCommand = commandTarget->m->changed;
    commandTarget->database()->imp().undo.begin(localName.toStdWString());
    return true;
}

void DocManager::Private::end(bool failed) {
    Document::Private& state = *commandTarget->m;
    db::UndoRecorder& undo = state.database->imp().undo;
    if (failed) {
        state.releaseLocks();
        if (undo.abandon())
            state.changed = state.changedBeforeCommand;
        ++state.changes; // a copy of the half-done state is none of what the drawing is now
    } else {
        if (state.commands == 1)
            state.releaseLocks(); // those that the command left to its end
        undo.end();
    }
    --state.commands;
    commandTarget->followLayouts();
    commandTarget->noteChange();
    commandTarget = nullptr;
}

void DocManager::Private::idle() {
    for (Document* document : owner.all())
        if (owner.find(document) && document->m->closeLater && document->m->commands == 0)
            owner.close(*document);
}

} // namespace merix::ap
