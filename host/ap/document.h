// SPDX-License-Identifier: MIT
// Open documents, their locks and their events. Main thread only.
#pragma once

#include "host/rx/rx_class.h"
#include "host/rx/status.h"

#include <vector>

class MxDbDatabase;
class MxEdInputPointManager;

/// An open drawing with its window.
class MxApDocument : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    virtual MxDbDatabase* database() const = 0;
    virtual MxEdInputPointManager* inputPointManager() const = 0;
};

enum class MxApLockMode : int {
    kNone = 0,
    kWrite = 4, ///< exclusive: the holder may change the drawing
};

class MxApDocManagerReactor : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    /// A document was created and its file has been read.
    virtual void documentCreated(MxApDocument* document);
    virtual void documentToBeActivated(MxApDocument* document);
    virtual void documentActivated(MxApDocument* document);
    virtual void documentToBeDeactivated(MxApDocument* document);
    virtual void documentToBeDestroyed(MxApDocument* document);
};

class MxApDocManager {
public:
    virtual ~MxApDocManager() = default;
    /// The document whose window is active; null when none is open.
    virtual MxApDocument* curDocument() const = 0;
    /// The document of `database`, or null.
    virtual MxApDocument* document(const MxDbDatabase* database) const = 0;
    /// All open documents in the order of opening.
    virtual std::vector<MxApDocument*> documents() const = 0;

    /// Begins one undoable unit named for the user by `localName`. Locks of the command under way nest;
    /// eLockConflict when another command holds the document (and, with `prompt`, the user is told).
    virtual Mx::ErrorStatus lockDocument(MxApDocument* document, MxApLockMode mode, const wchar_t* globalName,
                                         const wchar_t* localName, bool prompt = true) = 0;
    /// Ends the unit; one without changes vanishes.
    virtual Mx::ErrorStatus unlockDocument(MxApDocument* document) = 0;

    /// The manager does not own its reactors. Adding one twice has no effect.
    virtual void addReactor(MxApDocManagerReactor* reactor) = 0;
    virtual void removeReactor(MxApDocManagerReactor* reactor) = 0;

    /// Until popped, dialogs take their templates from this resource module.
    virtual void pushResourceHandle(void* resource) = 0;
    virtual void popResourceHandle() = 0;
};

/// Null before the host has made its document manager.
MxApDocManager* mxDocManagerPtr();
