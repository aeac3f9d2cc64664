// SPDX-License-Identifier: MIT
// Commands that draw: onto the current layer, with the current properties, into the current space.
#include "merix/ed/draw_commands.h"

#include "merix/db/tables.h"
#include "merix/ed/arc_geometry.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"

#include <cmath>

namespace merix::ed {

namespace {

constexpr int kMeasure = Prompter::kNotEmpty | Prompter::kNotZero | Prompter::kNotNegative;

bool askPoint(const char* prompt, MxGePoint3d& point, const MxGePoint3d* base = nullptr) {
    Prompter& prompter = Prompter::instance();
    prompter.init(Prompter::kNotEmpty, {});
    return prompter.getPoint(base, QLatin1String(prompt), point) == kInputNormal;
}

// ---------------------------------------------------------------- lines

MxDbObjectId addLine(const MxGePoint3d& start, const MxGePoint3d& end) {
    auto line = std::make_unique<db::Line>();
    line->start = start;
    line->end = end;
    return addEntity(std::move(line));
}

bool hasLength(const MxGePoint3d& start, const MxGePoint3d& end) {
    if (!(start == end))
        return true;
    tell(QStringLiteral("The line has no length."));
    return false;
}

void line() {
    Prompter& prompter = Prompter::instance();
    std::vector<MxGePoint3d> points(1);
    std::vector<MxDbObjectId> lines;
    if (!askPoint("First point: ", points[0]))
        return;
    for (;;) {
        const bool canClose = lines.size() >= 2;
        prompter.init(0, canClose ? QStringLiteral("Close Undo") : QStringLiteral("Undo"));
        MxGePoint3d next;
        const int result = prompter.getPoint(
            &points.back(),
            canClose ? QStringLiteral("Next point or [Close/Undo]: ") : QStringLiteral("Next point or [Undo]: "), next);
        if (result == kInputNormal) {
            if (!hasLength(points.back(), next))
                continue;
            lines.push_back(addLine(points.back(), next));
            points.push_back(next);
        } else if (result != kInputKeyword) {
            return;
        } else if (prompter.lastKeyword() == QLatin1String("Close")) {
            if (hasLength(points.back(), points.front()))
                addLine(points.back(), points.front());
            return;
        } else if (lines.empty()) {
            tell(QStringLiteral("There is no line to take back."));
        } else if (eraseEntities({lines.back()}) == 0 && db::DatabaseImp::peek(lines.back())) {
            mayDraw(); // the layer was locked meanwhile
        } else {
            lines.pop_back();
            points.pop_back();
        }
    }
}

void rectangle() {
    MxGePoint3d a, b;
    if (!askPoint("First corner: ", a))
        return;
    Prompter& prompter = Prompter::instance();
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getCorner(a, QStringLiteral("Opposite corner: "), b) != kInputNormal)
        return;
    if (a.x == b.x || a.y == b.y) {
        tell(QStringLiteral("The rectangle has no area."));
        return;
    }
    auto polyline = std::make_unique<db::LwPolyline>();
    for (const MxGePoint2d& corner : {MxGePoint2d{a.x, a.y}, {b.x, a.y}, {b.x, b.y}, {a.x, b.y}})
        polyline->vertices.push_back({corner});
    polyline->closed = true;
    polyline->elevation = a.z;
    addEntity(std::move(polyline));
}

// ---------------------------------------------------------------- circles and arcs

void addCircle(const MxGePoint3d& center, double radius) {
    auto circle = std::make_unique<db::Circle>();
    circle->center = center;
    circle->radius = radius;
    addEntity(std::move(circle));
}

void circleByTwoPoints() {
    MxGePoint3d a, b;
    if (!askPoint("First end of the diameter: ", a) || !askPoint("Second end of the diameter: ", b, &a))
        return;
    if (a == b)
        tell(QStringLiteral("The circle has no size."));
    else
        addCircle({(a.x + b.x) / 2, (a.y + b.y) / 2, a.z}, (b - a).length() / 2);
}

void circleByThreePoints() {
    MxGePoint3d a, b, c;
    if (!askPoint("First point on the circle: ", a) || !askPoint("Second point on the circle: ", b) ||
        !askPoint("Third point on the circle: ", c))
        return;
    if (const auto place = circleThrough(a, b, c))
        addCircle(place->center, place->radius);
    else
        tell(QStringLiteral("There is no circle through points on a line."));
}

void circle() {
    Prompter& prompter = Prompter::instance();
    MxGePoint3d center;
    prompter.init(Prompter::kNotEmpty, QStringLiteral("2P 3P"));
    int result = prompter.getPoint(nullptr, QStringLiteral("Center of the circle or [2P/3P]: "), center);
    if (result == kInputKeyword) {
        prompter.lastKeyword() == QLatin1String("2P") ? circleByTwoPoints() : circleByThreePoints();
        return;
    }
    if (result != kInputNormal)
        return;
    double size = 0.0, part = 1.0;
    prompter.init(kMeasure, QStringLiteral("Diameter"));
    result = prompter.getDistance(&center, QStringLiteral("Radius or [Diameter]: "), size);
    if (result == kInputKeyword) {
        part = 0.5;
        prompter.init(kMeasure, {});
        result = prompter.getDistance(&center, QStringLiteral("Diameter: "), size);
    }
    if (result == kInputNormal)
        addCircle(center, size * part);
}

void addArc(const CirclePlace& place, double startAngle, double endAngle) {
    auto arc = std::make_unique<db::Arc>();
    arc->center = place.center;
    arc->radius = place.radius;
    arc->startAngle = positiveAngle(startAngle);
    arc->endAngle = positiveAngle(endAngle);
    addEntity(std::move(arc));
}

/// Counter-clockwise from the start, at the start's distance from the centre.
void arcAbout(const MxGePoint3d& center, const MxGePoint3d& start) {
    const CirclePlace place{center, (start - center).length()};
    MxGePoint3d end;
    if (!(place.radius > 0.0)) {
        tell(QStringLiteral("The arc has no size."));
        return;
    }
    if (!askPoint("End of the arc: ", end, &center))
        return;
    const double from = directionTo(center, start), to = directionTo(center, end);
    if (end == center || positiveAngle(to - from) == 0.0)
        tell(QStringLiteral("The arc has no length."));
    else
        addArc(place, from, to);
}

void arcThrough(const MxGePoint3d& start, const MxGePoint3d& second) {
    MxGePoint3d end;
    if (!askPoint("End of the arc: ", end, &second))
        return;
    const auto place = circleThrough(start, second, end);
    if (!place) {
        tell(QStringLiteral("There is no arc through points on a line."));
        return;
    }
    const double from = directionTo(place->center, start), to = directionTo(place->center, end);
    const bool counterClockwise = bulgeThrough(start, second, end) > 0.0;
    addArc(*place, counterClockwise ? from : to, counterClockwise ? to : from);
}

void arc() {
    Prompter& prompter = Prompter::instance();
    MxGePoint3d start, center, second;
    prompter.init(Prompter::kNotEmpty, QStringLiteral("Center"));
    int result = prompter.getPoint(nullptr, QStringLiteral("Start of the arc or [Center]: "), start);
    if (result == kInputKeyword) {
        if (askPoint("Center of the arc: ", center) && askPoint("Start of the arc: ", start, &center))
            arcAbout(center, start);
        return;
    }
    if (result != kInputNormal)
        return;
    prompter.init(Prompter::kNotEmpty, QStringLiteral("Center"));
    result = prompter.getPoint(&start, QStringLiteral("Second point of the arc or [Center]: "), second);
    if (result == kInputNormal)
        arcThrough(start, second);
    else if (result == kInputKeyword && askPoint("Center of the arc: ", center, &start))
        arcAbout(center, start);
}

// ---------------------------------------------------------------- text

const db::TextStyleRecord* styleRecord(MxDbObjectId id) {
    return dynamic_cast<const db::TextStyleRecord*>(db::DatabaseImp::peek(id));
}

void takeStyle(db::Text& text, MxDbObjectId style) {
    text.style = style;
    if (const auto* record = styleRecord(style)) {
        text.widthFactor = record->widthFactor;
        text.oblique = record->oblique;
    }
}

void askStyle(db::Text& text) {
    QString name;
    if (Prompter::instance().getString(true, QStringLiteral("Style: "), name) != kInputNormal)
        return;
    const MxDbObjectId style = drawing().textStyleNamed(name.toStdWString());
    if (style.isNull())
        tell(QStringLiteral("There is no text style %1.").arg(name));
    else
        takeStyle(text, style);
}

void askWidthFactor(db::Text& text) {
    Prompter& prompter = Prompter::instance();
    prompter.init(Prompter::kNotZero | Prompter::kNotNegative, {});
    prompter.getReal(QStringLiteral("Width factor <%1>: ").arg(text.widthFactor), text.widthFactor);
}

void askOblique(db::Text& text) {
    constexpr double kMost = 85.0 * 3.14159265358979323846 / 180.0;
    double angle = text.oblique;
    if (Prompter::instance().getAngle(nullptr, QStringLiteral("Oblique angle from the upright: "), angle) !=
        kInputNormal)
        return;
    if (std::fabs(angle) > kMost)
        tell(QStringLiteral("An oblique angle lies between -85 and 85 degrees."));
    else
        text.oblique = angle;
}

bool askTextStart(db::Text& text) {
    Prompter& prompter = Prompter::instance();
    for (;;) {
        prompter.init(Prompter::kNotEmpty, QStringLiteral("Style Width Oblique"));
        const int result =
            prompter.getPoint(nullptr, QStringLiteral("Start of the text or [Style/Width/Oblique]: "), text.position);
        if (result != kInputKeyword)
            return result == kInputNormal;
        if (prompter.lastKeyword() == QLatin1String("Style"))
            askStyle(text);
        else if (prompter.lastKeyword() == QLatin1String("Width"))
            askWidthFactor(text);
        else
            askOblique(text);
        if (prompter.wasCancelled())
            return false;
    }
}

/// A style may fix the height; else the last one is offered again.
bool askTextHeight(db::Text& text) {
    if (const auto* style = styleRecord(text.style); style && style->height > 0.0) {
        text.height = style->height;
        return true;
    }
    Prompter& prompter = Prompter::instance();
    text.height = drawing().header.textSize;
    prompter.init(Prompter::kNotZero | Prompter::kNotNegative, {});
    const int result =
        prompter.getDistance(&text.position, QStringLiteral("Height <%1>: ").arg(text.height), text.height);
    return result == kInputNormal || result == kInputNone;
}

void text() {
    Prompter& prompter = Prompter::instance();
    auto text = std::make_unique<db::Text>();
    takeStyle(*text, drawing().textStyleNamed(L"Standard"));
    if (!askTextStart(*text) || !askTextHeight(*text))
        return;
    const int turned = prompter.getAngle(&text->position, QStringLiteral("Rotation angle <0>: "), text->rotation);
    QString content;
    if ((turned != kInputNormal && turned != kInputNone) ||
        prompter.getString(true, QStringLiteral("Text: "), content) != kInputNormal)
        return;
    text->text = content.toStdWString();
    auto header = drawing().header;
    if (const auto* style = styleRecord(text->style); !style || style->height <= 0.0)
        header.textSize = text->height;
    if (!addEntity(std::move(text)).isNull())
        drawing().changeHeader(header);
}

} // namespace

void registerDrawCommands(CommandStack& stack) {
    const auto add = [&](const wchar_t* name, const char* alias, MxEdCommandFunction function) {
        stack.addCommand(kHostGroup, name, name, 0, function);
        stack.addAlias(QLatin1String(alias), QString::fromWCharArray(name));
    };
    add(L"LINE", "L", drawIfAllowed<line>);
    add(L"CIRCLE", "C", drawIfAllowed<circle>);
    add(L"ARC", "A", drawIfAllowed<arc>);
    add(L"RECTANG", "REC", drawIfAllowed<rectangle>);
    add(L"TEXT", "T", drawIfAllowed<text>);
    stack.addAlias(QStringLiteral("DT"), QStringLiteral("TEXT"));
}

} // namespace merix::ed
