// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"
#include "host/ge/extents.h"

class MxGiWorldDraw;

/// Base of everything that is drawn. Lives in a block table record (model space, a paper space or a block).
class MxDbEntity : public MxDbObject {
public:
    MxDbEntity();
    static MxRxClass* desc();
    MxRxClass* isA() const override;

    MxDbObjectId layerId() const;

    /// Marks the graphics stale: they are made anew when the entity is next painted in view. Takes no before-image.
    void recordGraphicsModified(bool modified = true);

    /// The box of the entity in its owner's coordinates. eInvalidExtents when it has none; `extents` is then left
    /// alone.
    Mx::ErrorStatus getGeomExtents(MxDbExtents& extents) const;

    /// Draws the entity through the interface given; returns true when all was drawn.
    virtual bool subWorldDraw(MxGiWorldDraw* draw);
    virtual Mx::ErrorStatus subGetGeomExtents(MxDbExtents& extents) const;

    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

/// A transient reactor on entities.
class MxDbEntityReactor : public MxDbObjectReactor {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
};
