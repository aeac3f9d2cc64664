// SPDX-License-Identifier: MIT
// Entities without bounds.
#pragma once

#include "host/db/entity.h"

/// A half-line from its base point.
class MxDbRay : public MxDbEntity {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    MxGePoint3d basePoint() const { return m_basePoint; }
    using MxDbEntity::subGetGripPoints;
    using MxDbEntity::subGetOsnapPoints;
    using MxDbEntity::subMoveGripPointsAt;
    Mx::ErrorStatus subTransformBy(const MxGeMatrix3d& map) override;
    /// The base point, which moves it, and a point ahead, which turns it.
    Mx::ErrorStatus subGetGripPoints(std::vector<MxGePoint3d>& grips) const override;
    Mx::ErrorStatus subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) override;
    Mx::ErrorStatus subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                      std::vector<MxGePoint3d>& points) const override;
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

protected:
    MxGePoint3d m_basePoint;
    MxGeVector3d m_direction{1.0, 0.0, 0.0};
};

/// A line without ends through its base point.
class MxDbXline : public MxDbEntity {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    MxGePoint3d basePoint() const { return m_basePoint; }
    using MxDbEntity::subGetGripPoints;
    using MxDbEntity::subGetOsnapPoints;
    using MxDbEntity::subMoveGripPointsAt;
    Mx::ErrorStatus subTransformBy(const MxGeMatrix3d& map) override;
    /// The base point, which moves it, and a point ahead, which turns it.
    Mx::ErrorStatus subGetGripPoints(std::vector<MxGePoint3d>& grips) const override;
    Mx::ErrorStatus subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) override;
    Mx::ErrorStatus subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                      std::vector<MxGePoint3d>& points) const override;
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

protected:
    MxGePoint3d m_basePoint;
    MxGeVector3d m_direction{1.0, 0.0, 0.0};
};
