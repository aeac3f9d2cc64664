// SPDX-License-Identifier: MIT
// Makes an entity's display list by having the entity draw itself. Block references are followed here, because what
// stands in a block takes layer, colour and line type from the reference.
#pragma once

#include "host/gi/world_draw.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"
#include "merix/gi/display_list.h"

#include <map>

namespace merix::gi {

class GraphicsBuilder final : public MxGiWorldDraw,
                              private MxGiContext,
                              private MxGiSubEntityTraits,
                              private MxGiWorldGeometry {
public:
    explicit GraphicsBuilder(db::DatabaseImp& database, bool plot = false);

    /// What `entity`, which lies in a space, looks like now.
    DisplayList build(MxDbEntity& entity);

    MxGiContext* context() const override;
    MxGiSubEntityTraits& subEntityTraits() const override;
    MxGiWorldGeometry& geometry() const override;

private:
    /// What ByBlock and layer 0 stand for in the entity being drawn.
    struct Surroundings {
        const db::LayerRecord* layer = nullptr; ///< of the reference; null in a space
        Style style;
    };
    /// How a text that is not left-aligned lies by its alignment point.
    struct Justification {
        int horizontal = 0, vertical = 0;
        MxGePoint3d point;
        double width = 0.0; ///< of a fitted text, 0 when its own width counts
    };

    void drawEntity(MxDbEntity& entity, const Surroundings& around);
    void drawInsert(const db::Insert& insert, const Surroundings& around);
    void drawBlock(const MxDbBlockTableRecord& block, const Surroundings& around);
    void setStyleOf(const db::EntityTraits& traits);
    void setLinetype(MxDbObjectId id, const db::LayerRecord* layer, double scale);
    void setWeight(int weight);
    void setIndexColor(int index);
    void setRgb(std::uint32_t rgb);
    bool spend(std::size_t amount);
    std::uint16_t styleIndex();
    MxGePoint2d placed(double x, double y) const;
    void addPoints(Primitive::Kind kind, const std::vector<MxGePoint2d>& points);
    void addCurve(const ge::Curve& worldCurve, bool filled);
    void addBand(const MxGiPolylineVertex* vertices, std::size_t count, bool closed);
    static Justification justificationOf(const db::Text& text);

    // MxGiContext
    bool isPlotGeneration() const override { return m_plot; }
    // MxGiSubEntityTraits
    bool implementsTraits() const override { return true; }
    void setColor(std::uint16_t color) override;
    void setFill(bool fill) override { m_fill = fill; }
    void setLineWeight(int weight) override { setWeight(weight); }
    int lineWeight() const override { return m_weight; }
    // MxGiWorldGeometry
    void circle(const MxGePoint3d& center, double radius, const MxGeVector3d& normal) override;
    void circularArc(const MxGePoint3d& center, double radius, const MxGeVector3d& normal,
                     const MxGeVector3d& startVector, double sweep) override;
    void worldLine(const MxGePoint3d* points, std::size_t count) override;
    void pline(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) override;
    void text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction, double height,
              double widthFactor, double oblique, const wchar_t* text) override;

    db::DatabaseImp& m_database;
    bool m_plot;
    DisplayList m_list;
    QTransform m_placement; ///< of the block being drawn
    int m_depth = 0;
    std::size_t m_budget = 0;

    // Attributes in force.
    const db::LayerRecord* m_layer = nullptr;
    Surroundings m_around;
    Style m_style;
    int m_weight = -1;
    bool m_fill = false;
    Justification m_justification;
    std::map<db::ObjectStub*, std::shared_ptr<const DashPattern>> m_dashes;
};

} // namespace merix::gi
