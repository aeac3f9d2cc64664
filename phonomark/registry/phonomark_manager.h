// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/database.h"
#include "phonomark/registry/doc_data.h"

#include <map>
#include <memory>

class MxDbPhonomark;
struct resbuf;

/// The registry: which voice notes every open document holds, and what is done to all of them. Main thread only.
class PhonomarkManager {
public:
    /// Reads the lists of all open documents.
    PhonomarkManager();
    /// Writes the lists of all open documents and forgets everything; a tag window that plays is closed.
    ~PhonomarkManager();
    PhonomarkManager(const PhonomarkManager&) = delete;
    PhonomarkManager& operator=(const PhonomarkManager&) = delete;

    /// Lists the note at the end; an id that is listed already stands there twice then. Always true.
    bool AppendPhonomark(MxDbObjectId id, MxApDocument* document);
    /// Searches the blocks of all layouts for notes and lists each at the end, whatever is listed already.
    void AppendPhonomark(MxApDocument* document);
    /// The document is hover-monitored no more when this was its last note.
    void RemovePhonomark(MxDbObjectId id, MxApDocument* document);
    void RemovePhonomark(MxApDocument* document);
    /// Appends the document's ids to `out` in list order.
    void GetAllObjects(std::vector<MxDbObjectId>& out, MxApDocument* document);

    /// Draws or undraws every listed note on the screen.
    void ShowAllObjects(bool show, MxApDocument* document);
    /// Makes the graphics of every listed note in the current space anew, also of those on locked layers.
    void UpdateAll(MxApDocument* document);
    /// Erases a note as one undoable unit; null is the current document. A note on a locked layer stays, and the user
    /// is told. Always true.
    bool ErasePhonomark(MxDbObjectId id, MxApDocument* document);

    /// Attaches the note, which is in the drawing and closed, to the object, whatever the layers of both. False when
    /// one of them cannot be opened; what was done before that stays.
    bool addNotifier(const MxDbPhonomark* note, MxDbObjectId ownerId);
    /// Detaches the note, which is open for write, from the object. False when it is not attached or the object cannot
    /// be opened for write; what was done before that stays.
    bool delNotifier(MxDbPhonomark* note, MxDbObjectId ownerId);

    // The list in the drawing: named object dictionary, "PHONO_MARK", "VOICE_LIST"; one handle a note, as text of group
    // code 102.
    /// Builds the chain for the document of `database`; `chain` and `count` stay as they are when nothing is listed.
    void CrtRbChain(resbuf*& chain, const MxDbDatabase* database, long& count);
    /// Writes the list; false when nothing is listed (an older list then stays) or the drawing cannot be written.
    bool SaveVoiceHandle(MxDbDatabase* database);
    /// Appends the ids of the drawing's list to the registry; false when the drawing has no notes' dictionary.
    bool ReadVoiceHandle(MxApDocument* document);

private:
    // What is watched when the registry ends is left with the drawing, so that the next registry lists the notes that
    // are back by then and watches those that may still come back.
    static void keepWatched(const MxApDocument& document);
    void resumeWatching(MxApDocument* document);

    using Entries = std::map<MxApDocument*, std::unique_ptr<CDocData>>;
    /// The document's list; null when it has none. Asking leaves an entry behind.
    CDocData* dataOf(MxApDocument* document) { return m_documents[document].get(); }

    Entries m_documents;
};

/// Makes the registry, unless there is one.
void createMxPhManager();
/// Deletes the registry, if there is one. mxPhManagerPtr() gives the same value as before; it must not be followed.
void deleteMxPhManager();
/// The registry made last; null before the first.
PhonomarkManager* mxPhManagerPtr();
/// The registry, or null while there is none: what events that may come at any time ask for.
PhonomarkManager* livePhManager();
