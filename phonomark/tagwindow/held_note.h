// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object_id.h"

class MxApDocument;
class MxDbPhonomark;

/// A note that is held by pointer from one event to the next. Its drawing may be closed meanwhile. Main thread only.
class HeldNote {
public:
    HeldNote() = default;
    /// Null: no note.
    explicit HeldNote(MxDbPhonomark* note);

    /// As it was given, to be compared only.
    MxDbPhonomark* pointer() const { return m_note; }
    MxDbObjectId id() const { return m_id; }
    /// The note, erased or not; null when its drawing has gone.
    MxDbPhonomark* present() const;
    /// The note while it can be worked on: not erased, its drawing open.
    MxDbPhonomark* live() const;
    bool isOf(const MxApDocument* document) const { return m_document && m_document == document; }

private:
    MxDbPhonomark* m_note = nullptr;
    MxDbObjectId m_id;
    MxApDocument* m_document = nullptr; ///< null for a note outside of any drawing
};
