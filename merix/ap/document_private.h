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
    void objectErased(MxDbObject& object, bool erasing) override;
    void tell();

    Document& owner;
    std::unique_ptr<MxDbDatabase> database;
    QString path, title;
    ed::InputPoints points;
    QString layout = QStringLiteral("Model");
    ge::ViewTransform view;
    bool changed = false;      ///< something was changed that a save would keep
    std::size_t undoUnits = 0; ///< when `changed` was last settled
    bool wasChanged = false;   ///< what titleChanged told last

    QString lockName;  ///< global name of the command whose locks are held
    int lockDepth = 0; ///< 0: not locked
    int commands = 0;  ///< commands of the command stack under way in the document
    bool closeLater = false;
};

} // namespace merix::ap
