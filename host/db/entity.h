// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"
#include "host/ge/extents.h"
#include "host/ge/matrix.h"

#include <vector>

class MxGiDrawableTraits;
class MxGiViewportDraw;
class MxGiWorldDraw;

/// What a snap looks for on an entity.
enum class MxDbOsnapMode : int { kEnd = 1, kMid = 2, kCenter = 3, kNode = 4, kInsertion = 5 };

/// A grip that carries more than its place.
struct MxDbGripData {
    MxGePoint3d point;
    void* appData = nullptr; ///< the entity's own, handed back when the grip is moved
};

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

    /// Moves, turns, scales or mirrors the entity (open for write). What the map does to it is the entity's own affair:
    /// one that cannot take it answers eCannotScaleNonUniformly and stays as it is. eInvalidInput for a map that is not
    /// finite or brings all of space into one plane.
    Mx::ErrorStatus transformBy(const MxGeMatrix3d& map);
    /// The points by which a hand takes the entity; `grips` is added to.
    Mx::ErrorStatus getGripPoints(std::vector<MxGePoint3d>& grips) const;
    /// Moves the grips of these indices (positions in what getGripPoints gives) of an entity open for write.
    Mx::ErrorStatus moveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset);
    /// Points to snap to near `pick`; `points` is added to.
    Mx::ErrorStatus getOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                   std::vector<MxGePoint3d>& points) const;
    /// Shows the whole entity as one that is meant, until unhighlight. Nothing of it is saved; works on an entity open
    /// for read.
    Mx::ErrorStatus highlight() const;
    Mx::ErrorStatus unhighlight() const;

    /// Draws the entity through the interface given; returns true when all was drawn.
    virtual bool subWorldDraw(MxGiWorldDraw* draw);
    /// For entities that look different in each viewport; called when subWorldDraw answered false.
    virtual void subViewportDraw(MxGiViewportDraw* draw);
    virtual std::uint32_t subViewportDrawLogicalFlags(MxGiViewportDraw* draw);
    virtual std::uint32_t subSetAttributes(MxGiDrawableTraits* traits);
    virtual Mx::ErrorStatus subGetGeomExtents(MxDbExtents& extents) const;
    virtual Mx::ErrorStatus subTransformBy(const MxGeMatrix3d& map);
    virtual Mx::ErrorStatus subGetGripPoints(std::vector<MxGePoint3d>& grips) const;
    /// The form with data; eNotApplicable when the entity has only points.
    virtual Mx::ErrorStatus subGetGripPoints(std::vector<MxDbGripData>& grips, double viewUnit, int gripSize,
                                             const MxGeVector3d& viewDirection, int flags) const;
    virtual Mx::ErrorStatus subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset);
    virtual Mx::ErrorStatus subMoveGripPointsAt(const std::vector<void*>& gripData, const MxGeVector3d& offset,
                                                int flags);
    virtual Mx::ErrorStatus subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                              std::vector<MxGePoint3d>& points) const;
    /// The same for an entity seen inside an insert that places it by `insertion`.
    virtual Mx::ErrorStatus subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                              std::vector<MxGePoint3d>& points, const MxGeMatrix3d& insertion) const;

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
