// SPDX-License-Identifier: MIT
// Taking commands back and doing them again, one or several at a time.
#include "merix/ap/undo_commands.h"

#include "merix/ap/document_imp.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"

#include <QPointer>

namespace merix::ap {

namespace {

Document* currentOrTell() {
    Document* document = DocManager::instance().current();
    if (!document)
        ed::tell(QStringLiteral("No drawing is open."));
    return document;
}

void undoSteps(Document& document, int count) {
    const QStringList known = document.undoNames();
    QStringList names;
    for (; count > 0; --count) {
        if (!DocManager::instance().undo(document))
            break;
        names << known.value(names.size());
    }
    ed::tell(names.isEmpty() ? QStringLiteral("Nothing to undo.")
                             : QStringLiteral("Undone: %1").arg(names.join(QStringLiteral(", "))));
}

void redoSteps(Document& document, int count) {
    const QStringList known = document.redoNames();
    QStringList names;
    for (; count > 0; --count) {
        if (!DocManager::instance().redo(document))
            break;
        names << known.value(names.size());
    }
    ed::tell(names.isEmpty() ? QStringLiteral("Nothing to redo.")
                             : QStringLiteral("Redone: %1").arg(names.join(QStringLiteral(", "))));
}

/// The number of steps; 0 after Esc.
int askCount(const QString& prompt) {
    ed::Prompter& prompter = ed::Prompter::instance();
    int count = 1;
    prompter.init(ed::Prompter::kNotZero | ed::Prompter::kNotNegative, {});
    const int result = prompter.getInteger(prompt, count);
    return result == kInputNormal || result == kInputNone ? count : 0;
}

void undoOne() {
    if (Document* document = currentOrTell())
        undoSteps(*document, 1);
}

void undo() {
    const QPointer<Document> document = currentOrTell();
    const int count = document ? askCount(QStringLiteral("Number of steps to undo <1>: ")) : 0;
    // Another drawing may have become the current one while the number was asked for, and this one may be closed.
    if (count > 0 && document && document == DocManager::instance().current())
        undoSteps(*document, count);
}

void redo() {
    const QPointer<Document> document = currentOrTell();
    const int count = document ? askCount(QStringLiteral("Number of steps to redo <1>: ")) : 0;
    if (count > 0 && document && document == DocManager::instance().current())
        redoSteps(*document, count);
}

} // namespace

void registerUndoCommands(ed::CommandStack& stack) {
    const auto add = [&](const wchar_t* name, MxEdCommandFunction function) {
        stack.addCommand(ed::kHostGroup, name, name, ed::kSessionCommand, function);
    };
    add(L"U", undoOne);
    add(L"UNDO", undo);
    add(L"REDO", redo);
}

} // namespace merix::ap
