// SPDX-License-Identifier: MIT
#include "merix/gi/graphics_builder.h"

#include "merix/db/access.h"
#include "merix/ge/ocs.h"
#include "merix/gi/band.h"
#include "merix/gi/colors.h"

#include <cwchar>
#include <numbers>

namespace merix::gi {

namespace {

/// What one block reference shows is bounded, however often the drawing repeats and nests blocks.
constexpr std::size_t kMostPoints = 4'000'000;
/// Bands are flattened once: 0.0001 of the radius is below a pixel for arcs up to some ten screens across.
constexpr double kBandTolerance = 1e-4;
constexpr std::int16_t kDefaultWeight = 25;
/// No place in a drawing lies that far out: such are the corners of empty boxes.
constexpr double kFarthest = 1e19;
/// A line of text that anybody reads is shorter.
constexpr std::size_t kMostLetters = 4096;

bool isPlace(double x, double y) {
    return std::abs(x) < kFarthest && std::abs(y) < kFarthest;
}

template <class T> const T* record(MxDbObjectId id) {
    const MxDbObject* object = db::DatabaseImp::peek(id);
    return object && object->isKindOf(T::desc()) ? static_cast<const T*>(object) : nullptr;
}

double measure(const wchar_t* text) {
    return advanceOf(QString::fromWCharArray(text, static_cast<int>(wcsnlen(text, kMostLetters))));
}

} // namespace

GraphicsBuilder::GraphicsBuilder(db::DatabaseImp& database, bool plot)
    : m_database(database)
    , m_plot(plot) {
    db::setTextMeasure(measure);
}

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
    m_budget = kMostPoints;
    const db::EntityTraits& traits = db::traits(entity);
    setEntityTraits(traits);
    // A reference on a layer that is off still shows what lies on other layers; on a frozen one it shows nothing.
    const bool isOff = m_layer && m_layer->off && !entity.isKindOf(db::Insert::desc());
    if (!traits.invisible && !isOff && !(m_layer && m_layer->isFrozen())) {
        m_fill = false;
        const db::ReadAccess readable(entity);
        // What drawing code does to the drawing (a line type that it loads) is no step of the user's, and it is done to
        // the drawing that is painted.
        const db::UndoRecorder::Pause pause(m_database.undo);
        const db::WorkingDatabaseScope working(&m_database.self());
        entity.subWorldDraw(this);
    }
    m_list.primitives.shrink_to_fit();
    m_list.points.shrink_to_fit();
    return std::move(m_list);
}

// ---------------------------------------------------------------- attributes

void GraphicsBuilder::setEntityTraits(const db::EntityTraits& traits) {
    m_layer = record<db::LayerRecord>(traits.layer);
    m_unseen = m_plot && m_layer && !m_layer->plottable;
    m_style = {};
    if (traits.hasTrueColor)
        setRgb(traits.trueColor);
    else
        setColor(static_cast<std::uint16_t>(std::abs(traits.color)));
    setLineWeight(traits.lineWeight);
    m_linetypeScale = traits.linetypeScale;
    setLinetype(traits.linetype);
}

void GraphicsBuilder::setColor(std::uint16_t color) {
    if (color == 0) { // by block, and there is none
        setIndexColor(7);
    } else if (color < 256) {
        setIndexColor(color);
    } else if (m_layer && m_layer->hasTrueColor) {
        setRgb(m_layer->trueColor);
    } else {
        setIndexColor(m_layer ? std::abs(m_layer->color) : 7);
    }
}

void GraphicsBuilder::setTrueColor(const MxCmEntityColor& color) {
    switch (color.method) {
    case MxCmEntityColor::Method::kByLayer:
        return setColor(256);
    case MxCmEntityColor::Method::kByBlock:
        return setColor(0);
    case MxCmEntityColor::Method::kByColor:
        return setRgb(qRgb(color.red, color.green, color.blue));
    }
}

void GraphicsBuilder::setLineType(MxDbObjectId linetype) {
    setLinetype(linetype);
}

void GraphicsBuilder::setIndexColor(int index) {
    m_style.rgb = colorOfIndex(index);
    m_style.contrast = index == 7;
}

void GraphicsBuilder::setRgb(std::uint32_t rgb) {
    m_style.rgb = 0xff000000U | rgb;
    m_style.contrast = false;
}

void GraphicsBuilder::setLineWeight(int weight) {
    m_weight = weight;
    if (weight == -1)
        weight = m_layer ? m_layer->lineWeight : -3;
    m_style.weight = weight < 0 ? kDefaultWeight : static_cast<std::int16_t>(std::min(weight, 211));
}

void GraphicsBuilder::setLinetype(MxDbObjectId id) {
    m_linetype = id;
    const auto* type = record<db::LinetypeRecord>(id);
    const auto isNamed = [](const db::LinetypeRecord& linetype, QLatin1String name) {
        return QString::fromStdWString(linetype.name).compare(name, Qt::CaseInsensitive) == 0;
    };
    if (!type || isNamed(*type, QLatin1String("ByLayer")))
        type = m_layer ? record<db::LinetypeRecord>(m_layer->linetype) : nullptr;
    m_style.dashes = nullptr;
    const double total = m_database.header.linetypeScale * m_linetypeScale;
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
    if (m_unseen || amount > m_budget)
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

/// Puts the points into the list; false when they are too many or beyond all measure.
bool GraphicsBuilder::keep(const std::vector<MxGePoint2d>& points, std::uint32_t& first, std::uint32_t& count) {
    if (points.empty() || !spend(points.size()))
        return false;
    for (const MxGePoint2d& p : points)
        if (!isPlace(p.x, p.y))
            return false;
    first = static_cast<std::uint32_t>(m_list.points.size());
    count = static_cast<std::uint32_t>(points.size());
    for (const MxGePoint2d& p : points) {
        m_list.points.push_back(p);
        m_list.box.addPoint({p.x, p.y, 0});
    }
    return true;
}

void GraphicsBuilder::addPoints(Primitive::Kind kind, const std::vector<MxGePoint2d>& points) {
    std::uint32_t first = 0, count = 0;
    if (keep(points, first, count))
        m_list.primitives.push_back({kind, styleIndex(), first, count});
}

void GraphicsBuilder::addCurve(const ge::Curve& curve) {
    if (!(curve.reach() < kFarthest) || !isPlace(curve.center.x, curve.center.y) ||
        !std::isfinite(curve.start + curve.sweep))
        return;
    if (!spend(1))
        return;
    m_list.primitives.push_back(
        {Primitive::Kind::kCurve, styleIndex(), static_cast<std::uint32_t>(m_list.curves.size())});
    m_list.curves.push_back(curve);
    m_list.box.addExt(ge::extents(curve));
}

void GraphicsBuilder::circle(const MxGePoint3d& center, double radius, const MxGeVector3d& normal) {
    const ge::Affine axes = ge::ocsToWorld(normal);
    circularArc(center, radius, normal, axes.x, 2 * std::numbers::pi);
}

void GraphicsBuilder::circularArc(const MxGePoint3d& center, double radius, const MxGeVector3d& normal,
                                  const MxGeVector3d& startVector, double sweep) {
    const MxGeVector3d n = ge::ocsToWorld(normal).z;
    const double length = startVector.length();
    if (!(length > 0.0))
        return;
    const double r = radius / length;
    const MxGeVector3d side = n.cross(startVector);
    const ge::Curve curve{
        {center.x, center.y}, {startVector.x * r, startVector.y * r}, {side.x * r, side.y * r}, 0.0, sweep};
    if (!m_fill)
        return addCurve(curve);
    std::vector<MxGePoint2d> ring;
    ge::flatten(curve, curve.reach() * kBandTolerance, nullptr, ring);
    addPoints(Primitive::Kind::kFill, ring);
}

void GraphicsBuilder::addFigure(Primitive::Kind kind, const MxGePoint3d* points, std::size_t count, bool closed) {
    if (count == 0 || count > m_budget)
        return;
    std::vector<MxGePoint2d> figure(count);
    for (std::size_t i = 0; i < count; ++i)
        figure[i] = {points[i].x, points[i].y};
    if (closed)
        figure.push_back(figure.front());
    addPoints(kind, figure);
}

/// Lines for themselves: a line type begins anew with each.
void GraphicsBuilder::worldLine(const MxGePoint3d* points, std::size_t count) {
    if (!m_style.dashes || count < 3)
        return polyline(points, count);
    for (std::size_t i = 0; i + 1 < count; ++i)
        addFigure(Primitive::Kind::kStroke, points + i, 2, false);
}

void GraphicsBuilder::polyline(const MxGePoint3d* points, std::size_t count) {
    addFigure(Primitive::Kind::kStroke, points, count, false);
}

void GraphicsBuilder::polygon(const MxGePoint3d* points, std::size_t count) {
    if (m_fill)
        addFigure(Primitive::Kind::kFill, points, count, false);
    else
        addFigure(Primitive::Kind::kStroke, points, count, true);
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

    std::vector<MxGePoint2d> chain{vertices[0].point};
    const std::size_t segments = closed ? count : count - 1;
    for (std::size_t i = 0; i < segments; ++i) {
        const MxGiPolylineVertex &from = vertices[i], &to = vertices[(i + 1) % count];
        if (from.bulge == 0.0 || from.point == to.point) {
            chain.push_back(to.point);
            continue;
        }
        const ge::Curve arc = ge::curveOfBulge(from.point, to.point, from.bulge);
        if (area) {
            std::vector<MxGePoint2d> chords;
            ge::flatten(arc, arc.reach() * kBandTolerance, nullptr, chords);
            chain.insert(chain.end(), chords.begin(), chords.end());
            continue;
        }
        if (chain.size() > 1)
            addPoints(Primitive::Kind::kStroke, chain);
        addCurve(arc);
        chain.assign(1, to.point);
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
    Band band{0, 0, 0, 0, 0.0};
    std::vector<MxGePoint2d> middle;
    for (const BandPoint& p : chain) {
        middle.push_back(p.point);
        band.width = std::max(band.width, p.width);
    }
    const std::vector<MxGePoint2d> outline = bandOutline(std::move(chain), closed);
    if (!keep(outline, band.outline, band.outlineCount) || !keep(middle, band.middle, band.middleCount))
        return;
    m_list.primitives.push_back(
        {Primitive::Kind::kBand, styleIndex(), static_cast<std::uint32_t>(m_list.bands.size())});
    m_list.bands.push_back(band);
}

void GraphicsBuilder::text(const MxGePoint3d& position, const MxGeVector3d& normal, const MxGeVector3d& direction,
                           double height, double widthFactor, double oblique, const wchar_t* text) {
    const double length = direction.length();
    if (!text || !*text || !(length > 0.0) || !(std::abs(height) > 0.0) || !std::isfinite(height))
        return;
    const auto shown = static_cast<int>(wcsnlen(text, kMostLetters));
    PlacedText placedText{outlineOf(QString::fromWCharArray(text, shown)), {}};
    if (!spend(static_cast<std::size_t>(placedText.outline.path.elementCount())))
        return;
    const MxGeVector3d along{direction.x / length, direction.y / length, direction.z / length};
    const MxGeVector3d up = ge::ocsToWorld(normal).z.cross(along);
    const double wide = height * widthFactor;
    const double lean = std::tan(oblique);
    placedText.toWorld = QTransform(along.x * wide, along.y * wide, (up.x + along.x * lean) * height,
                                    (up.y + along.y * lean) * height, position.x, position.y);
    const QRectF box = placedText.toWorld.mapRect(QRectF(0, -placedText.outline.descent, placedText.outline.advance,
                                                         placedText.outline.ascent + placedText.outline.descent));
    if (!isPlace(box.left(), box.top()) || !isPlace(box.right(), box.bottom()))
        return;
    m_list.box.addPoint({box.left(), box.top(), 0});
    m_list.box.addPoint({box.right(), box.bottom(), 0});
    m_list.primitives.push_back(
        {Primitive::Kind::kText, styleIndex(), static_cast<std::uint32_t>(m_list.texts.size())});
    m_list.texts.push_back(std::move(placedText));
}

} // namespace merix::gi
