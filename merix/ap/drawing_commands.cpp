// SPDX-License-Identifier: MIT
// The commands on whole drawings. They ask on the command line; menus with file dialogs call the manager themselves.
#include "merix/ap/drawing_commands.h"

#include "merix/ap/document_imp.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"

#include <QDir>

namespace merix::ap {

namespace {

void tell(const QString& text) {
    ed::Console::instance().print(QLatin1Char('\n') + text);
}

Document* currentOrTell() {
    Document* document = DocManager::instance().current();
    if (!document)
        tell(QStringLiteral("No drawing is open."));
    return document;
}

/// A path typed at the command line: quotes around it and a leading ~ are understood. Empty when none was given.
QString askPath(const QString& prompt) {
    QString path;
    if (ed::Prompter::instance().getString(true, prompt, path) != kInputNormal)
        return {};
    if (path.size() >= 2 && path.startsWith(QLatin1Char('"')) && path.endsWith(QLatin1Char('"')))
        path = path.mid(1, path.size() - 2);
    if (path.startsWith(QLatin1String("~/")))
        path = QDir::homePath() + path.mid(1);
    return path;
}

bool report(const Result& result, const QString& done) {
    tell(result.ok ? done : result.message);
    return result.ok;
}

bool saveUnder(Document& document) {
    const QString path = askPath(QStringLiteral("Save drawing as: "));
    return !path.isEmpty() &&
           report(DocManager::instance().saveAs(document, path), QStringLiteral("Saved %1").arg(path));
}

bool saveOrAsk(Document& document) {
    if (document.path().isEmpty())
        return saveUnder(document);
    return report(DocManager::instance().save(document), QStringLiteral("Saved %1").arg(document.path()));
}

/// True when the drawing may be closed: nothing to lose, saved now, or the user lets the changes go.
bool mayClose(Document& document) {
    if (!document.isChanged())
        return true;
    ed::Prompter& prompter = ed::Prompter::instance();
    prompter.init(0, QStringLiteral("Yes No Cancel"));
    QString answer = QStringLiteral("Yes");
    const int result = prompter.getKeyword(
        QStringLiteral("Save changes to %1? [Yes/No/Cancel] <Yes>: ").arg(document.title()), answer);
    if (result != kInputNormal && result != kInputNone)
        return false;
    if (answer == QLatin1String("Yes"))
        return saveOrAsk(document);
    return answer == QLatin1String("No");
}

void newDrawing() {
    DocManager::instance().create();
}

void open() {
    const QString path = askPath(QStringLiteral("Open drawing: "));
    if (!path.isEmpty())
        report(DocManager::instance().open(path), QStringLiteral("Opened %1").arg(path));
}

void save() {
    if (Document* document = currentOrTell())
        saveOrAsk(*document);
}

void saveAs() {
    if (Document* document = currentOrTell())
        saveUnder(*document);
}

void close() {
    if (Document* document = currentOrTell(); document && mayClose(*document))
        DocManager::instance().close(*document);
}

void quit() {
    DocManager& manager = DocManager::instance();
    for (Document* document : manager.all()) {
        if (!document->isChanged())
            continue;
        manager.activate(document);
        if (!mayClose(*document))
            return;
    }
    manager.requestQuit();
}

void undo() {
    if (Document* document = currentOrTell(); document && !DocManager::instance().undo(*document))
        tell(QStringLiteral("Nothing to undo."));
}

void redo() {
    if (Document* document = currentOrTell(); document && !DocManager::instance().redo(*document))
        tell(QStringLiteral("Nothing to redo."));
}

} // namespace

void registerDrawingCommands(ed::CommandStack& stack) {
    const auto add = [&](const wchar_t* name, MxEdCommandFunction function) {
        stack.addCommand(ed::kHostGroup, name, name, ed::kSessionCommand, function);
    };
    add(L"NEW", newDrawing);
    add(L"OPEN", open);
    add(L"SAVE", save);
    add(L"SAVEAS", saveAs);
    add(L"CLOSE", close);
    add(L"QUIT", quit);
    add(L"U", undo);
    add(L"UNDO", undo);
    add(L"REDO", redo);
}

} // namespace merix::ap
