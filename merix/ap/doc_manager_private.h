// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ap/document_private.h"
#include "merix/ed/command_stack.h"

#include <QPointer>

namespace merix::ap {

/// The manager's data, and what surrounds commands: each is one undo unit of the drawing that was current when it
/// began.
struct DocManager::Private : ed::CommandScope {
    explicit Private(DocManager& manager)
        : owner(manager) {}

    bool begin(const QString& localName) override;
    void end(bool failed) override;
    void idle() override;

    /// Tells the reactors one after the other for as long as the document is there; answers whether it still is.
    bool tell(const QPointer<Document>& document, void (MxApDocManagerReactor::*event)(MxApDocument*));
    /// Tells that the document goes, as if it were the current one: messages and functions belong to that. Returns the
    /// one that is active without it, or null.
    Document* tellClosing(Document& document);

    DocManager& owner;
    std::vector<std::unique_ptr<Document>> documents;
    Document* current = nullptr;
    ed::ReactorList<MxApDocManagerReactor> reactors;
    int newDrawings = 0;               ///< numbers the titles of drawings never saved
    Document* commandTarget = nullptr; ///< of the command under way; stays open until it is over
};

} // namespace merix::ap
