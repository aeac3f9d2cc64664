// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"

/// The persistent reactor that ties a note to the object it belongs to: it lies in the note's extension dictionary
/// and is listed by the object. Main thread only.
class PhonomarkPsReactor : public MxDbObject {
public:
    static MxRxClass* gpDesc;
    static MxRxClass* rxInit();
    static MxRxClass* rxInit(MxRxAppNameChange appNameChange);
    static MxRxClass* desc() { return gpDesc; }
    MxRxClass* isA() const override { return desc(); }

    /// The note that owns this reactor; null at first.
    MxDbObjectId noteId() const { return m_noteId; }
    void setNoteId(MxDbObjectId id) { m_noteId = id; }

    /// The note takes the extents of the changed object over when it is attached to it; no effect when the note cannot
    /// be opened for write.
    void modified(const MxDbObject* object) override;

    /// Filed as one reference to the note. Without its subclass marker a DXF record is refused with eSubclassMissing.
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

private:
    MxDbObjectId m_noteId;
};
