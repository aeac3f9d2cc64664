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
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

protected:
    MxGePoint3d m_basePoint;
    MxGeVector3d m_direction{1.0, 0.0, 0.0};
};
