// SPDX-License-Identifier: MIT
// The document manager: the set of open drawings and the order of what is told when it changes.
#include "merix/ap/doc_manager_private.h"
#include "merix/ap/drawing_commands.h"
#include "merix/ap/layout_commands.h"
#include "merix/ap/recover_command.h"
#include "merix/ap/recovery.h"
#include "merix/ap/undo_commands.h"
#include "merix/ap/wblock_command.h"
#include "merix/ed/editor.h"
#include "merix/ed/host_functions.h"
#include "merix/ed/prompter.h"
#include "merix/ed/select_entities.h"
#include "merix/ed/selection.h"
#include "merix/ed/view_commands.h"
#include "merix/io/drawing_file.h"
#include "merix/rx/class_registry.h"
#include "merix/rx/module_loader.h"
#include "merix/rx/resource_modules.h"

#include <QFileInfo>
#include <QPointer>

MERIX_RX_CLASS(MxApDocManagerReactor, "MxApDocManagerReactor", MxRxObject, nullptr, "")
void MxApDocManagerReactor::documentCreated(MxApDocument*) {}
void MxApDocManagerReactor::documentToBeActivated(MxApDocument*) {}
void MxApDocManagerReactor::documentActivated(MxApDocument*) {}
void MxApDocManagerReactor::documentToBeDeactivated(MxApDocument*) {}
void MxApDocManagerReactor::documentToBeDestroyed(MxApDocument*) {}

MxApDocManager* mxDocManagerPtr() {
    return &merix::ap::DocManager::instance();
}

namespace merix::ap {

namespace {

constexpr const char* kReactor = "A document reactor";

Result failure(const io::FileResult& result, const QString& path) {
    QString why = QString::fromStdString(result.error);
    if (why.isEmpty())
        why = QStringLiteral("%1: status %2").arg(path).arg(int(result.status));
    return {false, why};
}

/// Null: one of those who were told of the document has closed it.
Result handOut(Document* document, Document** opened, const QString& path) {
    if (!document)
        return {false, QStringLiteral("%1: it was closed as it was opened").arg(path)};
    if (opened)
        *opened = document;
    return {};
}

void printNotes(const io::FileResult& result) {
    for (const std::string& note : result.notes)
        ed::Console::instance().print(QLatin1Char('\n') + QString::fromStdString(note));
}

} // namespace

DocManager& DocManager::instance() {
    static DocManager* const manager = new DocManager; // never destroyed: static objects of modules detach at the end
    return *manager;
}

DocManager::DocManager()
    : m(std::make_unique<Private>(*this)) {
    ed::startEditor();
    ed::CommandStack::instance().setScope(m.get());
    registerDrawingCommands(ed::CommandStack::instance());
    registerUndoCommands(ed::CommandStack::instance());
    registerLayoutCommands(ed::CommandStack::instance());
    registerWblockCommand(ed::CommandStack::instance());
    registerRecoverCommands(ed::CommandStack::instance());
    rx::ModuleLoader::instance().setForEachDrawing([this](const auto& call) { forEachDrawing(call); });
    rx::ModuleLoader::instance().setAroundTurn([this](const auto& turn) {
        // What a module writes down and makes of its objects as it comes or goes is no step and no change of the
        // user's.
        const std::vector<Document*> open = all();
        for (Document* document : open)
            document->database()->imp().undo.setEnabled(false);
        turn();
        for (Document* document : open)
            if (find(document))
                document->database()->imp().undo.setEnabled(true);
    });
    writeRecoveryFilesAtShutdown();
}

DocManager::~DocManager() = default;

bool DocManager::Private::tell(const QPointer<Document>& document,
                               void (MxApDocManagerReactor::*event)(MxApDocument*)) {
    reactors.forEach(kReactor, [&](MxApDocManagerReactor& reactor) {
        if (document)
            (reactor.*event)(document);
    });
    return document;
}

Document* DocManager::Private::tellClosing(Document& document) {
    document.m->closing = true;
    if (current == &document)
        tell(&document, &MxApDocManagerReactor::documentToBeDeactivated);
    QPointer<Document> next = current == &document ? nullptr : current;
    const auto asCurrent = [&](const auto& call) {
        owner.makeCurrent(&document);
        call();
        if (current != &document)
            next = current; // one of those who were told activated it
    };
    asCurrent([&] { tell(&document, &MxApDocManagerReactor::documentToBeDestroyed); });
    asCurrent([] { rx::ModuleLoader::instance().drawingToBeUnloaded(); });
    return next;
}

Document* DocManager::current() const {
    return m->current;
}

std::vector<Document*> DocManager::all() const {
    std::vector<Document*> documents;
    for (const auto& document : m->documents)
        documents.push_back(document.get());
    return documents;
}

Document* DocManager::find(const MxApDocument* document) const {
    for (const auto& known : m->documents)
        if (known.get() == document)
            return known.get();
    return nullptr;
}

MxApDocument* DocManager::curDocument() const {
    return m->current;
}

MxApDocument* DocManager::document(const MxDbDatabase* database) const {
    for (const auto& document : m->documents)
        if (document->database() == database)
            return document.get();
    return nullptr;
}

std::vector<MxApDocument*> DocManager::documents() const {
    const std::vector<Document*> documents = all();
    return {documents.begin(), documents.end()};
}

void DocManager::addReactor(MxApDocManagerReactor* reactor) {
    m->reactors.add(reactor);
}

void DocManager::removeReactor(MxApDocManagerReactor* reactor) {
    m->reactors.remove(reactor);
}

void DocManager::pushResourceHandle(void* resource) {
    rx::pushResourceHandle(resource);
}

void DocManager::popResourceHandle() {
    rx::popResourceHandle();
}

void DocManager::makeCurrent(Document* document) {
    m->current = document;
    db::setWorkingDatabase(document ? document->database() : nullptr);
    ed::HostFunctions::instance().setContext(document);
}

void DocManager::forEachDrawing(const std::function<void()>& call) {
    Document* const before = m->current;
    for (Document* document : all()) {
        if (!find(document))
            continue; // closed by the module that was called for another
        makeCurrent(document);
        call();
    }
    if (!before || find(before)) {
        makeCurrent(before);
        return;
    }
    makeCurrent(nullptr);
    activate(m->documents.empty() ? nullptr : m->documents.back().get());
}

Document* DocManager::create() {
    auto database = std::make_unique<MxDbDatabase>();
    {
        const db::WorkingDatabaseScope scope(database.get());
        database->imp().createDefaults();
    }
    const QString title = QStringLiteral("Drawing%1").arg(++m->newDrawings);
    return add(std::unique_ptr<Document>(new Document(std::move(database), {}, title)));
}

Result DocManager::open(const QString& path, Document** opened) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (const auto& document : m->documents)
        if (!document->m->closing && !document->path().isEmpty() &&
            QFileInfo(document->path()) == QFileInfo(absolute)) {
            const QPointer<Document> known = document.get();
            activate(known);
            return handOut(known, opened, absolute);
        }
    std::unique_ptr<MxDbDatabase> database;
    if (const Result result = readInto(database, absolute); !result.ok)
        return result;
    return handOut(add(std::unique_ptr<Document>(new Document(std::move(database), absolute, {}))), opened, absolute);
}

Result DocManager::readInto(std::unique_ptr<MxDbDatabase>& database, const QString& path) {
    database = std::make_unique<MxDbDatabase>();
    const db::WorkingDatabaseScope scope(database.get());
    const io::FileResult result = io::readDrawing(path.toStdString(), *database);
    if (!result)
        return failure(result, path);
    printNotes(result);
    return {};
}

Result DocManager::openCopy(const QString& copy, const QString& drawing, const QString& title, Document** opened) {
    for (const auto& document : m->documents)
        if (!drawing.isEmpty() && !document->path().isEmpty() && QFileInfo(document->path()) == QFileInfo(drawing))
            return {false, QStringLiteral("%1: close the drawing before its copy is opened").arg(drawing)};
    std::unique_ptr<MxDbDatabase> database;
    if (const Result result = readInto(database, copy); !result.ok)
        return result;
    Document* document = add(std::unique_ptr<Document>(new Document(std::move(database), drawing, title)));
    if (document) {
        document->m->changed = document->m->changedBeforeCommand = true;
        document->noteChange();
    }
    return handOut(document, opened, copy);
}

Document* DocManager::add(std::unique_ptr<Document> document) {
    const QPointer<Document> added = document.get();
    m->documents.push_back(std::move(document));
    if (m->tell(added, &MxApDocManagerReactor::documentCreated)) {
        Q_EMIT documentOpened(added);
        activate(added);
    }
    if (added)
        rx::ModuleLoader::instance().drawingLoaded();
    return added;
}

void DocManager::activate(Document* document) {
    if (document == m->current || (document && (!find(document) || document->m->closing)))
        return;
    ed::Prompter::instance().cancel();
    ed::Selection::instance().clear(); // it is of the drawing that was active
    const bool oneWasActive = m->current;
    const QPointer<Document> before = m->current, next = document;
    // Those who are told may close either, or activate another, which then stands.
    const auto overtaken = [&] {
        if (document && !next)
            return true;
        if (oneWasActive && !before)
            activate(next); // what followed the closed one was chosen by its place alone
        return m->current != before;
    };
    if (before && !before->m->closing)
        m->tell(before, &MxApDocManagerReactor::documentToBeDeactivated);
    if (overtaken())
        return;
    m->tell(next, &MxApDocManagerReactor::documentToBeActivated);
    if (overtaken())
        return;
    makeCurrent(next);
    Q_EMIT documentActivated(next);
    if (m->current == next)
        m->tell(next, &MxApDocManagerReactor::documentActivated);
}

void DocManager::close(Document& document) {
    if (!find(&document) || document.m->closing)
        return;
    if (document.m->commands > 0) {
        document.m->closeLater = true;
        ed::Prompter::instance().cancel();
        return;
    }
    const bool oneWasActive = m->current;
    Document* const next = m->tellClosing(document);
    makeCurrent(next);
    if (!next)
        ed::Selection::instance().clear();
    ed::forgetSelection(document.database());
    ed::forgetViews(document.database());
    ed::HostFunctions::instance().dropContext(&document);

    const auto place = std::find_if(m->documents.begin(), m->documents.end(),
                                    [&](const auto& known) { return known.get() == &document; });
    const auto index = std::size_t(place - m->documents.begin());
    const std::unique_ptr<Document> gone = std::move(*place);
    m->documents.erase(place);
    Q_EMIT documentClosing(&document);
    if (!oneWasActive || m->current)
        return; // another is active, also when a listener has just chosen it
    if (m->documents.empty())
        Q_EMIT documentActivated(nullptr);
    else
        activate(m->documents[std::min(index, m->documents.size() - 1)].get());
}

void DocManager::closeAll() {
    for (Document* document : all())
        if (document != m->current && find(document))
            close(*document);
    if (m->current)
        close(*m->current);
}

Result DocManager::save(Document& document) {
    if (document.path().isEmpty())
        return {false, QStringLiteral("%1: it has no file name yet").arg(document.title())};
    return saveTo(document, document.path());
}

Result DocManager::saveAs(Document& document, const QString& path, std::optional<io::DxfForm> form) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (const auto& other : m->documents)
        if (other.get() != &document && !other->path().isEmpty() && QFileInfo(other->path()) == QFileInfo(absolute))
            return {false, QStringLiteral("%1: it is open as another drawing").arg(path)};
    return saveTo(document, absolute, form);
}

void DocManager::tellBeginSave(Document& document, const QString& path) {
    const db::WorkingDatabaseScope scope(document.database());
    const db::UndoRecorder::Pause pause(document.database()->imp().undo); // what reactors write is no step to undo
    ++document.m->commands;                                               // nobody closes it meanwhile
    ed::Editor::instance().notifyBeginSave(document.database(), path.toStdWString());
    if (--document.m->commands == 0 && document.m->closeLater)
        QMetaObject::invokeMethod(
            this, [this] { m->idle(); }, Qt::QueuedConnection); // those who save are done with the document then
}

io::FileResult DocManager::write(Document& document, const QString& path, std::optional<io::DxfForm> form) {
    tellBeginSave(document, path);
    return io::writeDrawing(path.toStdString(), *document.database(), form);
}

Result DocManager::writeCopy(Document& document, const QString& path) {
    tellBeginSave(document, path);
    const io::FileResult result = io::writeSnapshot(path.toStdString(), *document.database());
    return result ? Result() : failure(result, path);
}

Result DocManager::saveTo(Document& document, const QString& path, std::optional<io::DxfForm> form) {
    const io::FileResult result = write(document, path, form);
    if (!result)
        return failure(result, path);
    printNotes(result);
    document.m->path = path;
    document.m->changed = document.m->wasChanged = false;
    document.m->changedBeforeCommand = true; // taking back what was saved now is a change
    Q_EMIT document.titleChanged();
    Q_EMIT document.saved();
    return {};
}

bool DocManager::undo(Document& document) {
    if (document.m->commands > 0)
        return false;
    document.m->releaseLocks(); // of nobody who still works
    document.m->undoing = true;
    const bool done = document.database()->imp().undo.undo();
    document.m->undoing = false;
    if (!done)
        return false;
    document.followLayouts();
    Q_EMIT document.graphicsChanged();
    return true;
}

bool DocManager::redo(Document& document) {
    if (document.m->commands > 0)
        return false;
    document.m->releaseLocks();
    document.m->undoing = true;
    const bool done = document.database()->imp().undo.redo();
    document.m->undoing = false;
    if (!done)
        return false;
    document.followLayouts();
    Q_EMIT document.graphicsChanged();
    return true;
}

Mx::ErrorStatus DocManager::lockDocument(MxApDocument* document, MxApLockMode mode, const wchar_t* globalName,
                                         const wchar_t* localName, bool prompt) {
    Document* locked = find(document);
    if (!locked)
        return Mx::eNoDocument;
    if (mode != MxApLockMode::kWrite || !globalName)
        return Mx::eInvalidInput;
    Document::Private& state = *locked->m;
    const QString name = QString::fromWCharArray(globalName);
    if (state.lockDepth > 0 && name.compare(state.lockName, Qt::CaseInsensitive) != 0) {
        if (prompt)
            ed::Console::instance().print(QStringLiteral("\n%1: the drawing is held by %2.").arg(name, state.lockName));
        return Mx::eLockConflict;
    }
    state.lockName = name;
    ++state.lockDepth;
    state.database->imp().undo.begin(localName && *localName ? localName : globalName);
    return Mx::eOk;
}

Mx::ErrorStatus DocManager::unlockDocument(MxApDocument* document) {
    Document* locked = find(document);
    if (!locked)
        return Mx::eNoDocument;
    Document::Private& state = *locked->m;
    if (state.lockDepth == 0)
        return Mx::eNotOpen;
    state.database->imp().undo.end();
    if (--state.lockDepth == 0)
        state.lockName.clear();
    return Mx::eOk;
}

QStringList DocManager::writeRecoveryFiles() {
    QStringList written;
    for (Document* document : all()) {
        if (!find(document) || !document->database()->imp().isChanged())
            continue; // nothing was even opened to be changed
        const QString path = recoveryPath(document->path(), document->title());
        if (!path.isEmpty() && write(*document, path))
            written << path;
    }
    return written;
}

} // namespace merix::ap
