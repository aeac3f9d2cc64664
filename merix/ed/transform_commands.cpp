// SPDX-License-Identifier: MIT
// Commands that bring selected entities, or copies of them, to another place, size or direction.
#include "merix/ed/transform_commands.h"

#include "merix/ed/copy_entities.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/select_entities.h"
#include "merix/ed/typed_point.h"
#include "merix/ed/view_commands.h"

#include <cmath>

namespace merix::ed {

namespace {

using Ids = std::vector<MxDbObjectId>;

bool askPoint(const char* prompt, MxGePoint3d& point, const MxGePoint3d* base = nullptr) {
    Prompter& prompter = Prompter::instance();
    prompter.init(Prompter::kNotEmpty, {});
    return prompter.getPoint(base, QLatin1String(prompt), point) == kInputNormal;
}

/// Enter at the second point takes the base point itself for the displacement.
int askDisplacement(const MxGePoint3d& base, const char* prompt, MxGeVector3d& by) {
    MxGePoint3d to;
    const int result = Prompter::instance().getPoint(&base, QLatin1String(prompt), to);
    by = result == kInputNone ? base.asVector() : to - base;
    return result;
}

void move() {
    Ids ids;
    MxGePoint3d base;
    MxGeVector3d by;
    if (!getEditableSelection(ids) || !askPoint("Base point: ", base))
        return;
    const int result = askDisplacement(base, "Second point <base point as displacement>: ", by);
    if (result == kInputNormal || result == kInputNone)
        transformEntities(ids, MxGeMatrix3d::translation(by));
}

void copy() {
    Ids ids;
    MxGePoint3d base;
    MxGeVector3d by;
    if (getSelection(QStringLiteral("Select objects: "), ids) != kInputNormal || !askPoint("Base point: ", base))
        return;
    int result = askDisplacement(base, "Second point <base point as displacement>: ", by);
    if (result == kInputNormal || result == kInputNone)
        copyEntities(ids, MxGeMatrix3d::translation(by));
    while (result == kInputNormal) {
        result = askDisplacement(base, "Next second point <end>: ", by);
        if (result == kInputNormal)
            copyEntities(ids, MxGeMatrix3d::translation(by));
    }
}

/// The angle that turns a direction in the drawing into another.
int askReferenceAngle(const MxGePoint3d& base, double& angle) {
    Prompter& prompter = Prompter::instance();
    double from = 0.0, to = 0.0;
    const int result = prompter.getAngle(nullptr, QStringLiteral("Reference angle <0>: "), from);
    if (result != kInputNormal && result != kInputNone)
        return result;
    prompter.init(Prompter::kNotEmpty, {});
    const int second = prompter.getAngle(&base, QStringLiteral("New angle: "), to);
    angle = to - from;
    return second;
}

void rotate() {
    Prompter& prompter = Prompter::instance();
    Ids ids;
    MxGePoint3d base;
    if (!getEditableSelection(ids) || !askPoint("Base point: ", base))
        return;
    double angle = 0.0;
    prompter.init(Prompter::kNotEmpty, QStringLiteral("Reference"));
    int result = prompter.getAngle(&base, QStringLiteral("Rotation angle or [Reference]: "), angle);
    if (result == kInputKeyword)
        result = askReferenceAngle(base, angle);
    if (result == kInputNormal)
        transformEntities(ids, MxGeMatrix3d::about(base, MxGeMatrix3d::rotation(angle)));
}

int askReferenceFactor(const MxGePoint3d& base, double& factor) {
    constexpr int kMeasure = Prompter::kNotZero | Prompter::kNotNegative;
    Prompter& prompter = Prompter::instance();
    double from = 1.0, to = 1.0;
    prompter.init(kMeasure, {});
    const int result = prompter.getDistance(nullptr, QStringLiteral("Reference length <1>: "), from);
    if (result != kInputNormal && result != kInputNone)
        return result;
    prompter.init(kMeasure | Prompter::kNotEmpty, {});
    const int second = prompter.getDistance(&base, QStringLiteral("New length: "), to);
    factor = to / from;
    return second;
}

void scale() {
    Prompter& prompter = Prompter::instance();
    Ids ids;
    MxGePoint3d base;
    if (!getEditableSelection(ids) || !askPoint("Base point: ", base))
        return;
    double factor = 1.0;
    prompter.init(Prompter::kNotEmpty | Prompter::kNotZero | Prompter::kNotNegative, QStringLiteral("Reference"));
    int result = prompter.getDistance(&base, QStringLiteral("Scale factor or [Reference]: "), factor);
    if (result == kInputKeyword)
        result = askReferenceFactor(base, factor);
    if (result != kInputNormal)
        return;
    if (!std::isfinite(factor) || factor == 0.0)
        tell(QStringLiteral("The factor is out of range."));
    else
        transformEntities(ids, MxGeMatrix3d::about(base, MxGeMatrix3d::scaling(factor, factor, factor)));
}

void mirror() {
    Prompter& prompter = Prompter::instance();
    Ids ids;
    MxGePoint3d first, second;
    if (!getEditableSelection(ids) || !askPoint("First point of the mirror line: ", first) ||
        !askPoint("Second point of the mirror line: ", second, &first))
        return;
    if (first.x == second.x && first.y == second.y) {
        tell(QStringLiteral("The mirror line has no direction."));
        return;
    }
    prompter.init(0, QStringLiteral("Yes No"));
    QString erase = QStringLiteral("No");
    const int result = prompter.getKeyword(QStringLiteral("Erase the source objects? [Yes/No] <No>: "), erase);
    if (result != kInputNormal && result != kInputNone)
        return;
    const MxGeMatrix3d map = mirrorAbout(first, second - first);
    if (erase == QLatin1String("Yes"))
        transformEntities(ids, map);
    else
        copyEntities(ids, map);
}

bool staysInReach(const MxDbEntity& entity) {
    MxDbExtents box;
    return entity.getGeomExtents(box) != Mx::eOk || box.isEmpty() ||
           (isInReach(box.minPoint()) && isInReach(box.maxPoint()));
}

} // namespace

MxGeMatrix3d mirrorAbout(const MxGePoint3d& point, const MxGeVector3d& along) {
    const double size = std::hypot(along.x, along.y), x = along.x / size, y = along.y / size;
    const double c = (x - y) * (x + y), s = 2 * x * y; // of twice the line's angle
    MxGeMatrix3d map;
    map.x = {c, s, 0};
    map.y = {s, -c, 0};
    return MxGeMatrix3d::about(point, map);
}

void transformEntities(const Ids& ids, const MxGeMatrix3d& map) {
    if (!isFinite(map)) {
        tell(QStringLiteral("That is out of range."));
        return;
    }
    int refused = 0;
    for (const MxDbObjectId id : ids) {
        Opened<MxDbEntity> entity(id, Mx::kForWrite);
        if (entity && entity->transformBy(map) == Mx::eOk && staysInReach(*entity))
            continue;
        entity.cancel();
        ++refused;
    }
    if (refused > 0)
        tell(QStringLiteral("%1 could not be changed.").arg(refused));
}

void registerTransformCommands(CommandStack& stack) {
    const auto add = [&](const wchar_t* name, const char* alias, MxEdCommandFunction function) {
        stack.addCommand(kHostGroup, name, name, 0, function);
        stack.addAlias(QLatin1String(alias), QString::fromWCharArray(name));
    };
    add(L"MOVE", "M", move);
    add(L"COPY", "CO", copy);
    add(L"ROTATE", "RO", rotate);
    add(L"SCALE", "SC", scale);
    add(L"MIRROR", "MI", mirror);
    stack.addAlias(QStringLiteral("CP"), QStringLiteral("COPY"));
}

} // namespace merix::ed
