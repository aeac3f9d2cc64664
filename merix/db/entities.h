// SPDX-License-Identifier: MIT
// The entity kinds that Merix draws itself. Points lie in the object coordinate system of `normal` where DXF says so
// (arc, circle, lightweight polyline, text, insert).
#pragma once

#include "host/db/entity.h"
#include "host/gi/world_draw.h"
#include "merix/db/object_data.h"

#include <string>
#include <vector>

namespace merix::db {

/// Attributes that every entity has; the store keeps them beside the entity.
struct EntityTraits {
    MxDbObjectId layer;
    MxDbObjectId linetype; ///< null: by layer
    std::int16_t color = 256;
    std::uint32_t trueColor = 0;
    bool hasTrueColor = false;
    bool invisible = false;
    bool paperSpace = false;
    std::int16_t lineWeight = -1;
    double linetypeScale = 1.0;
};
/// The store's record of an entity.
struct EntityData : ObjectData {
    EntityData()
        : ObjectData(true) {}
    EntityTraits traits;
};

/// The attributes of an entity.
inline EntityTraits& traits(MxDbEntity& entity) {
    return static_cast<EntityData&>(entity.data()).traits;
}
inline const EntityTraits& traits(const MxDbEntity& entity) {
    return static_cast<const EntityData&>(entity.data()).traits;
}

/// Base of the kinds that Merix draws itself: their box is the box of what they draw.
class DrawnEntity : public MxDbEntity {
public:
    Mx::ErrorStatus subGetGeomExtents(MxDbExtents& extents) const override;
};

// clang-format off
#define MERIX_ENTITY_OPERATIONS \
    static MxRxClass* desc(); \
    MxRxClass* isA() const override; \
    bool subWorldDraw(MxGiWorldDraw* draw) override; \
    using MxDbEntity::subGetGripPoints; \
    using MxDbEntity::subMoveGripPointsAt; \
    using MxDbEntity::subGetOsnapPoints; \
    Mx::ErrorStatus subTransformBy(const MxGeMatrix3d& map) override; \
    Mx::ErrorStatus subGetGripPoints(std::vector<MxGePoint3d>& grips) const override; \
    Mx::ErrorStatus subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) override; \
    Mx::ErrorStatus subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last, \
                                      std::vector<MxGePoint3d>& points) const override; \
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override; \
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override; \
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override; \
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
// clang-format on

class Line : public DrawnEntity {
public:
    MERIX_ENTITY_OPERATIONS
    MxGePoint3d start, end;
    double thickness = 0.0;
    MxGeVector3d normal{0, 0, 1};
};

class Circle : public DrawnEntity {
public:
    MERIX_ENTITY_OPERATIONS
    MxGePoint3d center;
    double radius = 0.0, thickness = 0.0;
    MxGeVector3d normal{0, 0, 1};
};

class Arc : public DrawnEntity {
public:
    MERIX_ENTITY_OPERATIONS
    MxGePoint3d center;
    double radius = 0.0, thickness = 0.0;
    double startAngle = 0.0, endAngle = 0.0; ///< radians, counter-clockwise from start to end
    MxGeVector3d normal{0, 0, 1};
    /// Greater than 0; ends that fall together are a full turn.
    double sweep() const;
};

class LwPolyline : public DrawnEntity {
public:
    MERIX_ENTITY_OPERATIONS
    std::vector<MxGiPolylineVertex> vertices; ///< widths -1: the constant width
    bool closed = false;
    std::int16_t flags = 0; ///< of DXF group 70, without the closed bit
    double constantWidth = 0.0, elevation = 0.0, thickness = 0.0;
    MxGeVector3d normal{0, 0, 1};
};

class Text : public DrawnEntity {
public:
    MERIX_ENTITY_OPERATIONS
    MxGePoint3d position, alignment;
    std::wstring text;
    double height = 2.5, rotation = 0.0, widthFactor = 1.0, oblique = 0.0, thickness = 0.0;
    std::int16_t generation = 0, horizontal = 0, vertical = 0;
    MxDbObjectId style;
    MxGeVector3d normal{0, 0, 1};
};

class Insert : public DrawnEntity {
public:
    MERIX_ENTITY_OPERATIONS
    MxDbObjectId block;
    MxGePoint3d position;
    double scaleX = 1.0, scaleY = 1.0, scaleZ = 1.0, rotation = 0.0;
    std::int16_t columns = 1, rows = 1;
    double columnSpacing = 0.0, rowSpacing = 0.0;
    MxGeVector3d normal{0, 0, 1};
};

/// A record of a class or kind that this run does not know: kept as it came. `className` names the class that would
/// read it; `image` its binary filing when it was taken from a live object or a native drawing.
class KeptEntity : public MxDbEntity {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::string dxfName;
    std::wstring className;
    std::string image;
    std::string dxfTags; ///< text form when the record has no source text
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

/// The same for a record that is no entity.
class KeptObject : public MxDbObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    std::string dxfName;
    std::wstring className;
    std::string image;
    std::string dxfTags;
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
};

} // namespace merix::db
