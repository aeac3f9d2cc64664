// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object_id.h"

#include <memory>

class MxApDocument;
class MxDbPhonomark;

/// A note that is held by pointer from one event to the next. Its drawing may be closed meanwhile: the module is told
/// of that and has every such note forgotten. Copies are of the same note. Main thread only, but for the destructor.
class HeldNote {
public:
    HeldNote() = default;
    /// Null: no note.
    explicit HeldNote(MxDbPhonomark* note);

    /// The drawing is about to go: none of its notes is held any more.
    static void forgetDocument(const MxApDocument* document);

    MxDbObjectId id() const { return m_held ? m_held->id : MxDbObjectId(); }
    /// The note, erased or not; null when its drawing has gone.
    MxDbPhonomark* present() const { return m_held ? m_held->note : nullptr; }
    /// The note while it can be worked on: not erased, its drawing open.
    MxDbPhonomark* live() const;

private:
    struct Held {
        MxDbPhonomark* note = nullptr;
        MxDbObjectId id = {};
        const MxApDocument* document = nullptr; ///< null for a note outside of any drawing
    };
    std::shared_ptr<Held> m_held;
};
