// SPDX-License-Identifier: MIT
#include "merix/gi/graphics_builder.h"

#include "merix/gi/band.h"
#include "merix/gi/colors.h"

#include <numbers>

namespace merix::gi {

namespace {

/// A drawing may nest blocks and repeat them in arrays without bound; what one reference shows is bounded.
constexpr int kDeepestNesting = 32;
constexpr std::size_t kMostPoints = 4'000'000;
/// Bands are flattened once: 0.0001 of the radius is below a pixel for arcs up to some ten screens across.
constexpr double kBandTolerance = 1e-4;
constexpr std::int16_t kDefaultWeight = 25;

template <class T> const T* record(MxDbObjectId id) {
    const MxDbObject* object = db::DatabaseImp::peek(id);
    return object && object->isKindOf(T::desc()) ? static_cast<const T*>(object) : nullptr;
}

/// Lets the module's drawing code see its entity open for read, whoever has it open besides.
class ReadScope {
public:
    explicit ReadScope(MxDbObject& object)
        : m_data(object.data()) {
        ++m_data.readers;
    }
    ~ReadScope() { --m_data.readers; }
    ReadScope(const ReadScope&) = delete;
    ReadScope& operator=(const ReadScope&) = delete;

private:
    db::ObjectData& m_data;
};

struct Axes {
    MxGeVector3d x, y, z;
};

/// The axes of an object coordinate system, chosen by its normal alone.
Axes axesOf(const MxGeVector3d& normal) {
    const double length = normal.length();
    if (!(length > 0.0))
        return {MxGeVector3d::kXAxis, MxGeVector3d::kYAxis, MxGeVector3d::kZAxis};
    const MxGeVector3d n{normal.x / length, normal.y / length, normal.z / length};
    // The bound is part of the drawing format: below it the normal counts as near the z axis.
    constexpr double kNear = 1.0 / 64.0;
    const bool nearZ = std::abs(n.x) < kNear && std::abs(n.y) < kNear;
    MxGeVector3d x = (nearZ ? MxGeVector3d::kYAxis : MxGeVector3d::kZAxis).cross(n);
    x *= 1.0 / x.length();
    return {x, n.cross(x), n};
}

} // namespace

GraphicsBuilder::GraphicsBuilder(db::DatabaseImp& database, bool plot)
    : m_database(database)
    , m_plot(plot) {}

// The interface hands out parts of the builder through const operations.
MxGiContext* GraphicsBuilder::context() const {
    return const_cast<GraphicsBuilder*>(this);
}

MxGiSubEntityTraits& GraphicsBuilder::subEntityTraits() const {
    return const_cast<GraphicsBuilder&>(*this);
}

MxGiWorldGeometry& GraphicsBuilder::geometry() const {
    return const_cast<GraphicsBuilder&>(*this);
}

DisplayList GraphicsBuilder::build(MxDbEntity& entity) {
    m_list = {};
    m_placement = {};
    m_depth = 0;
    m_budget = kMostPoints;
    Surroundings space;
    space.style.contrast = true;
    space.style.weight = kDefaultWeight;
    drawEntity(entity, space);
    m_list.primitives.shrink_to_fit();
    m_list.points.shrink_to_fit();
    return std::move(m_list);
}

void GraphicsBuilder::drawEntity(MxDbEntity& entity, const Surroundings& around) {
    const db::EntityTraits& traits = db::traits(entity);
    const auto* layer = record<db::LayerRecord>(traits.layer);
    if (around.layer && layer && layer->name == L"0")
        layer = around.layer;
    const bool isInsert = entity.isKindOf(db::Insert::desc());
    // A reference on a layer that is off still shows what lies on other layers; on a frozen one it shows nothing.
    if (traits.invisible || (layer && (layer->isFrozen() || (layer->off && !isInsert))))
        return;
    m_layer = layer;
    m_around = around;
    setStyleOf(traits);
    m_fill = false;
    if (isInsert) {
        drawInsert(static_cast<const db::Insert&>(entity), {layer, m_style});
        return;
    }
    m_justification =
        entity.isKindOf(db::Text::desc()) ? justificationOf(static_cast<const db::Text&>(entity)) : Justification{};
    const ReadScope open(entity);
    entity.subWorldDraw(this);
}

void GraphicsBuilder::drawInsert(const db::Insert& insert, const Surroundings& around) {
    const MxDbBlockTableRecord* block = m_database.block(insert.block);
    if (!block || m_depth >= kDeepestNesting)
        return;
    const Axes axes = axesOf(insert.normal);
    const double z = insert.position.z;
    const QTransform plane(axes.x.x, axes.x.y, axes.y.x, axes.y.y, axes.z.x * z, axes.z.y * z);
    const QTransform before = m_placement;
    const double c = std::cos(insert.rotation), s = std::sin(insert.rotation);
    ++m_depth;
    for (int row = 0; row < std::max<int>(1, insert.rows); ++row)
        for (int column = 0; column < std::max<int>(1, insert.columns); ++column) {
            if (!spend(1))
                break;
            const double dx = column * insert.columnSpacing, dy = row * insert.rowSpacing;
            const QTransform turned(c, s, -s, c, insert.position.x + dx * c - dy * s,
                                    insert.position.y + dx * s + dy * c);
            m_placement = QTransform::fromTranslate(-block->origin().x, -block->origin().y) *
                          QTransform::fromScale(insert.scaleX, insert.scaleY) * turned * plane * before;
            drawBlock(*block, around);
        }
    --m_depth;
    m_placement = before;
}

void GraphicsBuilder::drawBlock(const MxDbBlockTableRecord& block, const Surroundings& around) {
    const Surroundings here = around; // drawing the parts overwrites what is in force
    for (const MxDbObjectId id : block.entityIds()) {
        MxDbObject* part = db::DatabaseImp::peek(id);
        if (!part || !part->isKindOf(MxDbEntity::desc()))
            continue;
        if (!spend(1))
            return;
        drawEntity(*static_cast<MxDbEntity*>(part), here);
    }
}

// ---------------------------------------------------------------- attributes

void GraphicsBuilder::setStyleOf(const db::EntityTraits& traits) {
    m_style = {};
    if (traits.hasTrueColor)
        setRgb(traits.trueColor);
    else
        setColor(static_cast<std::uint16_t>(std::abs(traits.color)));
    setWeight(traits.lineWeight);
    setLinetype(traits.linetype, m_layer, traits.linetypeScale);
}

void GraphicsBuilder::setColor(std::uint16_t color) {
    if (color == 0) {
        m_style.rgb = m_around.style.rgb;
        m_style.contrast = m_around.style.contrast;
    } else if (color < 256) {
        setIndexColor(color);
    } else if (m_layer && m_layer->hasTrueColor) {
        setRgb(m_layer->trueColor);
    } else {
        setIndexColor(m_layer ? std::abs(m_layer->color) : 7);
    }
}

void GraphicsBuilder::setIndexColor(int index) {
    m_style.rgb = colorOfIndex(index);
    m_style.contrast = index == 7;
}

void GraphicsBuilder::setRgb(std::uint32_t rgb) {
    m_style.rgb = 0xff000000U | rgb;
    m_style.contrast = false;
}

void GraphicsBuilder::setWeight(int weight) {
    m_weight = weight;
    if (weight == -1)
        weight = m_layer ? m_layer->lineWeight : -3;
    if (weight == -2)
        weight = m_around.style.weight;
    m_style.weight = weight < 0 ? kDefaultWeight : static_cast<std::int16_t>(std::min(weight, 211));
}

void GraphicsBuilder::setLinetype(MxDbObjectId id, const db::LayerRecord* layer, double scale) {
    const auto named = [](const db::LinetypeRecord& type, QLatin1String name) {
        return QString::fromStdWString(type.name).compare(name, Qt::CaseInsensitive) == 0;
    };
    const auto* type = record<db::LinetypeRecord>(id);
    if (type && named(*type, QLatin1String("ByBlock"))) {
        m_style.dashes = m_around.style.dashes;
        m_style.dashScale = m_around.style.dashScale;
        return;
    }
    if (!type || named(*type, QLatin1String("ByLayer")))
        type = layer ? record<db::LinetypeRecord>(layer->linetype) : nullptr;
    m_style.dashes = nullptr;
    const double total = m_database.header.linetypeScale * scale;
    m_style.dashScale = total > 0.0 && std::isfinite(total) ? total : 1.0;
    if (!type || type->dashes.size() < 2)
        return;
    auto& pattern = m_dashes[type->data().stub];
    if (!pattern || *pattern != type->dashes)
        pattern = std::make_shared<DashPattern>(type->dashes);
    m_style.dashes = pattern;
}

// ---------------------------------------------------------------- geometry

bool GraphicsBuilder::spend(std::size_t amount) {
    if (amount > m_budget)
        return false;
    m_budget -= amount;
    return true;
}

std::uint16_t GraphicsBuilder::styleIndex() {
    auto& styles = m_list.styles;
    for (std::size_t i = styles.size(); i-- > 0;)
        if (styles[i] == m_style)
            return static_cast<std::uint16_t>(i);
    if (styles.size() == 0xffff)
        return 0xfffe;
    styles.push_back(m_style);
    return static_cast<std::uint16_t>(styles.size() - 1);
}

MxGePoint2d GraphicsBuilder::placed(double x, double y) const {
    double px = 0.0, py = 0.0;
    m_placement.map(x, y, &px, &py);
    return {px, py};
}

void GraphicsBuilder::addPoints(Primitive::Kind kind, const std::vector<MxGePoint2d>& points) {
    if (points.empty() || !spend(points.size()))
        return;
    for (const MxGePoint2d& p : points)
        if (!std::isfinite(p.x) || !std::isfinite(p.y))
            return;
    m_list.primitives.push_back({kind, styleIndex(), static_cast<std::uint32_t>(m_list.points.size()),
                                 static_cast<std::uint32_t>(points.size())});
    for (const MxGePoint2d& p : points) {
        m_list.points.push_back(p);
        m_list.box.addPoint({p.x, p.y, 0});
    }
}

void GraphicsBuilder::addCurve(const ge::Curve& worldCurve, bool filled) {
    const MxGePoint2d center = placed(worldCurve.center.x, worldCurve.center.y);
    const MxGePoint2d u = placed(worldCurve.center.x + worldCurve.u.x, worldCurve.center.y + worldCurve.u.y);
    const MxGePoint2d v = placed(worldCurve.center.x + worldCurve.v.x, worldCurve.center.y + worldCurve.v.y);
    const ge::Curve curve{
        center, {u.x - center.x, u.y - center.y}, {v.x - center.x, v.y - center.y}, worldCurve.start, worldCurve.sweep};
    if (!std::isfinite(curve.reach()) || !std::isfinite(center.x + center.y + curve.start + curve.sweep))
        return;
    if (filled) {
        std::vector<MxGePoint2d> ring;
        ge::flatten(curve, curve.reach() * kBandTolerance, nullptr, ring);
        addPoints(Primitive::Kind::kFill, ring);
        return;
    }
    if (!spend(1))
        return;
    m_list.primitives.push_back(
        {Primitive::Kind::kCurve, styleIndex(), static_cast<std::uint32_t>(m_list.curves.size())});
    m_list.curves.push_back(curve);
    m_list.box.addExt(ge::extents(curve));
}

void GraphicsBuilder::circle(const MxGePoint3d& center, double radius, const MxGeVector3d& normal) {
    const Axes axes = axesOf(normal);
    circularArc(center, radius, normal, axes.x, 2 * std::numbers::pi);
}

void GraphicsBuilder::circularArc(const MxGePoint3d& center, double radius, const MxGeVector3d& normal,
                                  const MxGeVector3d& startVector, double sweep) {
    const MxGeVector3d n = axesOf(normal).z;
    const double length = startVector.length();
    if (!(length > 0.0))
        return;
    const double r = radius / length;
    const MxGeVector3d side = n.cross(startVector);
    addCurve({{center.x, center.y}, {startVector.x * r, startVector.y * r}, {side.x * r, side.y * r}, 0.0, sweep},
             m_fill);
}

void GraphicsBuilder::worldLine(const MxGePoint3d* points, std::size_t count) {
    if (count == 0 || count > m_budget)
        return;
    std::vector<MxGePoint2d> line(count);
    for (std::size_t i = 0; i < count; ++i)
        line[i] = placed(points[i].x, points[i].y);
    addPoints(Primitive::Kind::kStroke, line);
}

void GraphicsBuilder::pline(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) {
    if (count == 0 || count > m_budget)
        return;
    bool wide = false;
    for (std::size_t i = 0; i < count; ++i)
        wide = wide || vertices[i].startWidth > 0.0 || vertices[i].endWidth > 0.0;
    const bool area = m_fill && closed && !wide;
    if (wide)
        return addBand(vertices, count, closed);

    std::vector<MxGePoint2d> chain{placed(vertices[0].point.x, vertices[0].point.y)};
    const std::size_t segments = closed ? count : count - 1;
    for (std::size_t i = 0; i < segments; ++i) {
        const MxGiPolylineVertex &from = vertices[i], &to = vertices[(i + 1) % count];
        if (from.bulge == 0.0 || from.point == to.point) {
            chain.push_back(placed(to.point.x, to.point.y));
            continue;
        }
        const ge::Curve arc = ge::curveOfBulge(from.point, to.point, from.bulge);
        if (area) {
            std::vector<MxGePoint2d> chords;
            ge::flatten(arc, arc.reach() * kBandTolerance, nullptr, chords);
            for (const MxGePoint2d& p : chords)
                chain.push_back(placed(p.x, p.y));
            continue;
        }
        if (chain.size() > 1)
            addPoints(Primitive::Kind::kStroke, chain);
        addCurve(arc, false);
        chain.assign(1, placed(to.point.x, to.point.y));
    }
    if (area)
        addPoints(Primitive::Kind::kFill, chain);
    else if (chain.size() > 1 || count == 1)
        addPoints(Primitive::Kind::kStroke, chain);
}

void GraphicsBuilder::addBand(const MxGiPolylineVertex* vertices, std::size_t count, bool closed) {
    std::vector<BandPoint> chain;
    const std::size_t segments = closed ? count : count - 1;
    for (std::size_t i = 0; i < segments; ++i) {
        const MxGiPolylineVertex &from = vertices[i], &to = vertices[(i + 1) % count];
        const double w0 = std::max(0.0, from.startWidth), w1 = std::max(0.0, from.endWidth);
        std::vector<MxGePoint2d> points{from.point, to.point};
        if (from.bulge != 0.0 && !(from.point == to.point)) {
            points.clear();
            const ge::Curve arc = ge::curveOfBulge(from.point, to.point, from.bulge);
            ge::flatten(arc, arc.reach() * kBandTolerance, nullptr, points);
        }
        for (std::size_t k = 0; k < points.size(); ++k)
            chain.push_back(
                {points[k], w0 + (w1 - w0) * static_cast<double>(k) / static_cast<double>(points.size() - 1)});
    }
    std::vector<MxGePoint2d> ring = bandOutline(std::move(chain), closed);
    for (MxGePoint2d& p : ring)
        p = placed(p.x, p.y);
    addPoints(Primitive::Kind::kFill, ring);
}

// ---------------------------------------------------------------- texts

GraphicsBuilder::Justification GraphicsBuilder::justificationOf(const db::Text& text) {
    if (text.horizontal == 0 && text.vertical == 0)
        return {};
    Justification result{text.horizontal, text.vertical, text.alignment, 0.0};
    const bool fitted = text.vertical == 0 && (text.horizontal == 3 || text.horizontal == 5);
    if (fitted) {
        result.width = std::hypot(text.alignment.x - text.position.x, text.alignment.y - text.position.y);
        result.horizontal = 0;
    }
    const Axes axes = axesOf(text.normal);
    const MxGePoint3d& p = fitted ? text.position : text.alignment;
    result.point = {axes.x.x * p.x + axes.y.x * p.y + axes.z.x * p.z, axes.x.y * p.x + axes.y.y * p.y + axes.z.y * p.z,
                    0};
    return result;
}

void GraphicsBuilder::text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction,
                           double height, double widthFactor, double oblique, const wchar_t* text) {
    const double length = direction.length();
    if (!text || !*text || !(length > 0.0) || !(std::abs(height) > 0.0) || !std::isfinite(height))
        return;
    PlacedText placedText{outlineOf(QString::fromWCharArray(text)), {}};
    const double points = static_cast<double>(placedText.outline.path.elementCount());
    if (!spend(static_cast<std::size_t>(points)))
        return;
    const MxGeVector3d along{direction.x / length, direction.y / length, direction.z / length};
    const MxGeVector3d up = axesOf(normal).z.cross(along);
    double wide = height * widthFactor;
    MxGePoint3d origin = position;
    if (m_justification.horizontal || m_justification.vertical || m_justification.width > 0.0) {
        const double advance = placedText.outline.advance;
        if (m_justification.width > 0.0 && advance > 0.0)
            wide = m_justification.width / advance;
        // 0 left, 1 centre, 2 right, 4 the middle both ways; and 0 base line, 1 bottom, 2 middle, 3 top.
        const int h = m_justification.horizontal, v = h == 4 ? 2 : m_justification.vertical;
        const double back = advance * wide * (h == 2 ? 1.0 : h == 1 || h == 4 ? 0.5 : 0.0);
        const double down = height * (v == 3 ? 1.0 : v == 2 ? 0.5 : v == 1 ? -placedText.outline.descent : 0.0);
        origin = m_justification.point - MxGeVector3d{along.x * back + up.x * down, along.y * back + up.y * down, 0};
    }
    const double lean = std::tan(oblique);
    const QTransform letters(along.x * wide, along.y * wide, (up.x + along.x * lean) * height,
                             (up.y + along.y * lean) * height, origin.x, origin.y);
    placedText.toWorld = letters * m_placement;
    const QRectF box = placedText.toWorld.mapRect(QRectF(0, -placedText.outline.descent, placedText.outline.advance,
                                                         placedText.outline.ascent + placedText.outline.descent));
    if (!std::isfinite(box.left() + box.right() + box.top() + box.bottom()))
        return;
    m_list.box.addPoint({box.left(), box.top(), 0});
    m_list.box.addPoint({box.right(), box.bottom(), 0});
    m_list.primitives.push_back(
        {Primitive::Kind::kText, styleIndex(), static_cast<std::uint32_t>(m_list.texts.size())});
    m_list.texts.push_back(std::move(placedText));
}

} // namespace merix::gi
