// SPDX-License-Identifier: MIT
// Open documents and their locks. Main thread only.
#pragma once

#include "host/ap/document.h"

#include <string>

/// True when `document` is one of the open ones.
bool IsValidDocument(const MxApDocument* document);

/// The document whose window is active; null when there is none, or no document manager any more.
MxApDocument* currentDocument();

/// Whether a command moves notes about. Every command counts as one that does.
bool IsSeriesOfDragcmds(const wchar_t* command);

/// Holds a document locked for write, so that what is changed meanwhile is one undoable unit.
class DocumentLock {
public:
    /// The unit's local name is resource text `localNameId`, `globalName` when there is no such text. With `prompt` the
    /// user is told when another command holds the document.
    DocumentLock(MxApDocument* document, const wchar_t* globalName, unsigned localNameId, bool prompt = true);
    ~DocumentLock();
    DocumentLock(const DocumentLock&) = delete;
    DocumentLock& operator=(const DocumentLock&) = delete;

    bool isHeld() const { return m_document != nullptr; }
    /// Leaves the document locked when this object goes.
    void leaveLocked() { m_document = nullptr; }

private:
    MxApDocument* m_document = nullptr;
};
