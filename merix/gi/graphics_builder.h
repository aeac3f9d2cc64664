// SPDX-License-Identifier: MIT
// Makes an entity's display list by having the entity draw itself.
#pragma once

#include "merix/db/database_imp.h"
#include "merix/db/draw.h"
#include "merix/db/tables.h"
#include "merix/gi/display_list.h"

#include <map>

namespace merix::gi {

class GraphicsBuilder final : public MxGiWorldDraw,
                              private MxGiContext,
                              private db::EntityTraitsSink,
                              private MxGiWorldGeometry {
public:
    explicit GraphicsBuilder(db::DatabaseImp& database, bool plot = false);

    /// What `entity`, which lies in a space, looks like now.
    DisplayList build(MxDbEntity& entity);

    MxGiContext* context() const override;
    MxGiSubEntityTraits& subEntityTraits() const override;
    MxGiWorldGeometry& geometry() const override;

private:
    void setEntityTraits(const db::EntityTraits& traits) override;
    void setLinetype(MxDbObjectId id);
    void setIndexColor(int index);
    void setRgb(std::uint32_t rgb);
    bool spend(std::size_t amount);
    std::uint16_t styleIndex();
    void addFigure(Primitive::Kind kind, const MxGePoint3d* points, std::size_t count, bool closed);
    bool keep(const std::vector<MxGePoint2d>& points, std::uint32_t& first, std::uint32_t& count);
    void addPoints(Primitive::Kind kind, const std::vector<MxGePoint2d>& points);
    void addCurve(const ge::Curve& curve);
    void addBand(const MxGiPolylineVertex* vertices, std::size_t count, bool closed);

    // MxGiContext
    bool isPlotGeneration() const override { return m_plot; }
    // db::EntityTraitsSink
    bool implementsTraits() const override { return true; }
    void setColor(std::uint16_t color) override;
    void setTrueColor(const MxCmEntityColor& color) override;
    void setLineType(MxDbObjectId linetype) override;
    MxDbObjectId lineType() const override { return m_linetype; }
    void setFill(bool fill) override { m_fill = fill; }
    void setLineWeight(int weight) override;
    int lineWeight() const override { return m_weight; }
    // MxGiWorldGeometry
    void circle(const MxGePoint3d& center, double radius, const MxGeVector3d& normal) override;
    void circularArc(const MxGePoint3d& center, double radius, const MxGeVector3d& normal,
                     const MxGeVector3d& startVector, double sweep) override;
    void worldLine(const MxGePoint3d* points, std::size_t count) override;
    void polyline(const MxGePoint3d* points, std::size_t count) override;
    void polygon(const MxGePoint3d* points, std::size_t count) override;
    void pline(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) override;
    void text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction, double height,
              double widthFactor, double oblique, const wchar_t* text) override;

    db::DatabaseImp& m_database;
    bool m_plot;
    DisplayList m_list;
    std::size_t m_budget = 0;

    // Attributes in force.
    const db::LayerRecord* m_layer = nullptr;
    Style m_style;
    int m_weight = -1;
    MxDbObjectId m_linetype;
    double m_linetypeScale = 1.0; ///< the entity's own
    bool m_fill = false;
    bool m_unseen = false; ///< on a layer that is not plotted, and this is a plot
    std::map<db::ObjectStub*, std::shared_ptr<const DashPattern>> m_dashes;
};

} // namespace merix::gi
