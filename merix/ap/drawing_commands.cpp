// SPDX-License-Identifier: MIT
// The commands on whole drawings. They ask on the command line; menus with file dialogs call the manager themselves.
#include "merix/ap/drawing_commands.h"

#include "merix/ap/ask_path.h"
#include "merix/ap/document_imp.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"

#include <QPointer>

#include <algorithm>

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

bool report(const Result& result, const QString& done) {
    tell(result.ok ? done : result.message);
    return result.ok;
}

/// While a prompt waits the user may close any drawing, also the one that is asked about: null from then on.
using OpenDocument = QPointer<Document>;

bool saveUnder(const OpenDocument& document) {
    const QString path = askPath(QStringLiteral("Save drawing as: "));
    return document && !path.isEmpty() &&
           report(DocManager::instance().saveAs(*document, path), QStringLiteral("Saved %1").arg(path));
}

bool saveOrAsk(const OpenDocument& document) {
    if (document->path().isEmpty())
        return saveUnder(document);
    return report(DocManager::instance().save(*document), QStringLiteral("Saved %1").arg(document->path()));
}

/// True when the drawing may be closed: nothing to lose, saved now, the user lets the changes go, or it is closed.
bool mayClose(const OpenDocument& document) {
    if (!document->isChanged())
        return true;
    ed::Prompter& prompter = ed::Prompter::instance();
    prompter.init(0, QStringLiteral("Yes No Cancel"));
    QString answer = QStringLiteral("Yes");
    const int result = prompter.getKeyword(
        QStringLiteral("Save changes to %1? [Yes/No/Cancel] <Yes>: ").arg(document->title()), answer);
    if (!document)
        return true;
    if (result != kInputNormal && result != kInputNone)
        return false;
    if (answer == QLatin1String("Yes"))
        return saveOrAsk(document) || !document;
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
        saveOrAsk(document);
}

void saveAs() {
    if (Document* document = currentOrTell())
        saveUnder(document);
}

void close() {
    const OpenDocument document(currentOrTell());
    if (document && mayClose(document) && document)
        DocManager::instance().close(*document);
}

OpenDocument nextChanged(const std::vector<OpenDocument>& settled) {
    for (Document* document : DocManager::instance().all())
        if (document->isChanged() && std::find(settled.begin(), settled.end(), document) == settled.end())
            return document;
    return nullptr;
}

/// Asks about every changed drawing. False when the user cancels. Drawings may be closed and opened while the user is
/// asked about another one.
bool mayCloseAll() {
    std::vector<OpenDocument> settled;
    while (const OpenDocument document = nextChanged(settled)) {
        settled.push_back(document);
        DocManager::instance().activate(document);
        if (document && !mayClose(document))
            return false;
    }
    return true;
}

void closeAll() {
    if (mayCloseAll())
        DocManager::instance().closeAll();
}

void quit() {
    if (mayCloseAll())
        DocManager::instance().requestQuit();
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
    add(L"CLOSEALL", closeAll);
    add(L"QUIT", quit);
}

} // namespace merix::ap
