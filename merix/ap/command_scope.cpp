// SPDX-License-Identifier: MIT
#include "merix/ap/doc_manager_private.h"

namespace merix::ap {

bool DocManager::Private::begin(const QString& globalName) {
    ed::Console& console = ed::Console::instance();
    if (!current) {
        console.print(QStringLiteral("\nNo drawing is open."));
        return false;
    }
    if (current->m->lockDepth > 0) {
        console.print(QStringLiteral("\n%1: the drawing is held by %2.").arg(globalName, current->m->lockName));
        return false;
    }
    commandTarget = current;
    ++commandTarget->m->commands;
    commandTarget->database()->imp().undo.begin(globalName.toStdWString());
    return true;
}

void DocManager::Private::end(bool failed) {
    db::UndoRecorder& undo = commandTarget->database()->imp().undo;
    if (failed)
        undo.abandon();
    else
        undo.end();
    --commandTarget->m->commands;
    commandTarget->noteChange();
    commandTarget = nullptr;
}

void DocManager::Private::idle() {
    for (Document* document : owner.all())
        if (document->m->closeLater && document->m->commands == 0)
            owner.close(*document);
}

} // namespace merix::ap
