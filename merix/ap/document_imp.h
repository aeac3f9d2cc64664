// SPDX-License-Identifier: MIT
// Documents as Merix makes them: a drawing, its file, its lock and its events. Main thread only unless stated.
#pragma once

#include "host/ap/document.h"
#include "host/db/database.h"
#include "merix/ed/input_points.h"
#include "merix/ge/view_transform.h"
#include "merix/io/dxf_form.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace merix::io {
struct FileResult;
}

namespace merix::ap {

class Document : public QObject, public MxApDocument {
    Q_OBJECT
public:
    ~Document() override;
    MxDbDatabase* database() const override;
    ed::InputPoints* inputPointManager() const override;

    /// The file's path; empty for a drawing never saved. The title is its name or "Drawing1".
    const QString& path() const;
    QString title() const;
    /// Something would be lost without a save.
    bool isChanged() const;
    /// Counts changes: two answers that are the same say that nothing was changed between them.
    quint64 changes() const;
    /// A command or a save is under way in the document.
    bool isBusy() const;

    /// What U and REDO would take back and do again, the next first: the local names of commands and locks.
    QStringList undoNames() const;
    QStringList redoNames() const;

    /// What the document's view shows; kept here so that it outlives a tab switch. Its width is 0 until a view has
    /// shown the document.
    ge::ViewTransform& view();

    /// "Model" and the names of the layouts, in tab order.
    QStringList layouts() const;
    QString currentLayout() const;
    /// False when there is no such layout.
    bool setCurrentLayout(const QString& name);

Q_SIGNALS:
    /// The title, the path or the changed mark is another.
    void titleChanged();
    /// The drawing was written to its file.
    void saved();
    /// Another layout is the current one, or the current one was renamed.
    void layoutChanged();
    /// What layouts() answers is another list: one was made, renamed or deleted; undo and redo too.
    void layoutsChanged();
    /// Graphics are stale.
    void graphicsChanged();

private:
    friend class DocManager;
    explicit Document(std::unique_ptr<MxDbDatabase> database, const QString& path, const QString& title);
    void noteChange();
    /// Tells of layouts that were made, renamed or deleted. When the layout worked on is gone, model space is worked
    /// on.
    void followLayouts();
    struct Private;
    std::unique_ptr<Private> m;
};

struct Result {
    bool ok = true;
    QString message; ///< one line that says what and where; empty when all went well
};

/// The open documents. Making it makes the host whole: the command stack and the editor are in the system registry,
/// the loader tells modules of drawings and a shutdown writes recovery files.
class DocManager : public QObject, public MxApDocManager {
    Q_OBJECT
public:
    static DocManager& instance();

    /// A new empty drawing, activated; null when one of those who were told of it has closed it.
    Document* create();
    /// Reads a file; the document is created, told of and activated only when it was read. A file that is open is
    /// activated. Messages of the reader (records kept aside) are printed on the console.
    Result open(const QString& path, Document** opened = nullptr);
    /// By suffix: .dxf or .merix. beginSave goes out first.
    Result save(Document& document);
    /// `form` is that of a .dxf file; without it the one it has, text for a new one.
    Result saveAs(Document& document, const QString& path, std::optional<io::DxfForm> form = {});
    /// Destroys without asking; asking is the window's. While a command is under way in the document, cancels the
    /// command's prompt and destroys when it is over. Afterwards another document, if there is one, is active.
    void close(Document& document);
    /// Closes every drawing, the current one last, so that none is activated on the way.
    void closeAll();
    /// Writes what the drawing is now to `path` as a native drawing; its own file and its unsaved changes stay what
    /// they are. beginSave goes out first.
    Result writeCopy(Document& document, const QString& path);
    /// Reads `copy`, made by writeCopy, as a drawing of the path `drawing` (empty: one never saved, `title` its name)
    /// with changes to save.
    Result openCopy(const QString& copy, const QString& drawing, const QString& title, Document** opened = nullptr);
    /// Cancels the prompt under way in the document that was active; null leaves none active.
    void activate(Document* document);
    /// False when there is nothing to undo or a command is under way in the document. A lock that is held without one
    /// was forgotten and is released.
    bool undo(Document& document);
    bool redo(Document& document);

    /// Concrete forms of the contract's operations.
    Document* current() const;
    std::vector<Document*> all() const;
    /// Ends the program once the commands under way are over: quitRequested.
    void requestQuit() { Q_EMIT quitRequested(); }

    // the contract
    MxApDocument* curDocument() const override;
    MxApDocument* document(const MxDbDatabase* database) const override;
    std::vector<MxApDocument*> documents() const override;
    Mx::ErrorStatus lockDocument(MxApDocument* document, MxApLockMode mode, const wchar_t* globalName,
                                 const wchar_t* localName, bool prompt = true) override;
    Mx::ErrorStatus unlockDocument(MxApDocument* document) override;
    void addReactor(MxApDocManagerReactor* reactor) override;
    void removeReactor(MxApDocManagerReactor* reactor) override;
    void pushResourceHandle(void* resource) override;
    void popResourceHandle() override;

    /// Writes a recovery file for every changed drawing, beside it or, for one never saved, in the user's data folder;
    /// no file that exists is touched. Returns the paths written. The main thread calls it, or stands still.
    QStringList writeRecoveryFiles();

Q_SIGNALS:
    /// Before it is activated for the first time.
    void documentOpened(merix::ap::Document* document);
    /// It is destroyed right after.
    void documentClosing(merix::ap::Document* document);
    /// Null when none is active.
    void documentActivated(merix::ap::Document* document);
    /// The user asked to end the program; changed drawings have been dealt with.
    void quitRequested();

private:
    DocManager();
    ~DocManager() override;
    Document* add(std::unique_ptr<Document> document);
    Result saveTo(Document& document, const QString& path, std::optional<io::DxfForm> form = {});
    /// Tells of the save, then writes.
    io::FileResult write(Document& document, const QString& path, std::optional<io::DxfForm> form = {});
    void tellBeginSave(Document& document, const QString& path);
    Result readInto(std::unique_ptr<MxDbDatabase>& database, const QString& path);
    Document* find(const MxApDocument* document) const;
    void makeCurrent(Document* document);
    void forEachDrawing(const std::function<void()>& call);
    struct Private;
    std::unique_ptr<Private> m;
};

} // namespace merix::ap
