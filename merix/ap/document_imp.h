// SPDX-License-Identifier: MIT
// Documents as Merix makes them: a drawing, its file, its lock and its events.
#pragma once

#include "host/ap/document.h"
#include "host/db/database.h"
#include "merix/ge/view_transform.h"

#include <QObject>
#include <QString>

#include <memory>

namespace merix::ap {

class Document : public QObject, public MxApDocument {
    Q_OBJECT
public:
    MxRxClass* isA() const override;
    MxDbDatabase* database() const override;
    MxEdInputPointManager* inputPointManager() const override;

    /// The file's path; empty for a drawing never saved. The title is its name or "Drawing1".
    const QString& path() const;
    QString title() const;
    bool isChanged() const;

    /// What the document's view shows; kept here so that it outlives a tab switch.
    ge::ViewTransform& view();

    /// "Model" and the names of the layouts, in tab order.
    QStringList layouts() const;
    QString currentLayout() const;
    /// False when there is no such layout.
    bool setCurrentLayout(const QString& name);

Q_SIGNALS:
    void titleChanged();
    void layoutChanged();
    /// Graphics are stale.
    void graphicsChanged();

private:
    friend class DocManager;
    Document();
    struct Private;
    std::unique_ptr<Private> m;
};

struct Result {
    bool ok = true;
    QString message; ///< one line that says what and where; empty when all went well
};

class DocManager : public QObject, public MxApDocManager {
    Q_OBJECT
public:
    static DocManager& instance();

    /// A new empty drawing, activated.
    Document* create();
    /// Reads a file; the document is created, told of and activated only when it was read. Messages of the reader
    /// (records kept aside) are printed on the console.
    Result open(const QString& path, Document** opened = nullptr);
    /// By suffix: .dxf or .merix. beginSave goes out first.
    Result save(Document& document);
    Result saveAs(Document& document, const QString& path);
    /// Destroys without asking; asking is the window's.
    void close(Document& document);
    void activate(Document* document);
    bool undo(Document& document);
    bool redo(Document& document);

    // the contract
    MxApDocument* curDocument() const override;
    MxApDocument* document(const MxDbDatabase* database) const override;
    std::vector<MxApDocument*> documents() const override;
    Mx::ErrorStatus lockDocument(MxApDocument*, MxApLockMode, const wchar_t* globalName, const wchar_t* localName,
                                 bool prompt) override;
    Mx::ErrorStatus unlockDocument(MxApDocument*) override;
    void addReactor(MxApDocManagerReactor*) override;
    void removeReactor(MxApDocManagerReactor*) override;
    void pushResourceHandle(void*) override;
    void popResourceHandle() override;

    /// Writes the recovery file of every changed drawing; any thread may ask for it, the main thread stands still or
    /// is the caller.
    void writeRecoveryFiles();

Q_SIGNALS:
    void documentOpened(merix::ap::Document* document);
    void documentClosing(merix::ap::Document* document);
    void documentActivated(merix::ap::Document* document);

private:
    DocManager();
    ~DocManager() override;
    struct Private;
    std::unique_ptr<Private> m;
};

} // namespace merix::ap
