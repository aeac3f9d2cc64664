// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/db/database_imp.h"

namespace merix::ap {

struct Document::Private : db::DatabaseListener {
    explicit Private(Document& document)
        : owner(document) {}

    void objectAppended(MxDbObject& object) override;
    void objectModified(MxDbObject& object) override;
    void objectGraphicsModified(MxDbObject& object) override;
    void objectErased(MxDbObject& object, bool erasing) override;
    void headerChanged() override;
    void tellChanged();
    /// Ends the locks and their undo units, whoever took them.
    void releaseLocks();

    Document& owner;
    std::unique_ptr<MxDbDatabase> database;
    QString path, title;
    ed::InputPoints points;
    QString layout = QStringLiteral("Model");
    QStringList layouts; ///< what layoutsChanged told last
    ge::ViewTransform view;
    bool changed = false; ///< something was changed that a save would keep
    quint64 changes = 0;
    bool changedBeforeCommand = false; ///< `changed` when the command under way began
    bool wasChanged = false;           ///< what titleChanged told last

    QString lockName;     ///< global name of the command whose locks are held
    bool undoing = false; ///< undo or redo is under way
    int lockDepth = 0;    ///< 0: not locked
    int commands = 0;     ///< commands of the command stack and saves under way in the document
    bool closeLater = false;
    bool closing = false; ///< those who watch are being told that it goes
};

} // namespace merix::ap
