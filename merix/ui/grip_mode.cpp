// SPDX-License-Identifier: MIT
#include "merix/ui/grip_mode.h"

#include "merix/ed/arc_geometry.h"
#include "merix/ed/keywords.h"
#include "merix/ed/transform_commands.h"

namespace merix::ui {

namespace {

struct Mode {
    const char* name;
    const wchar_t *command, *undoName;
    const char* question;
};

/// In the order of GripMode.
constexpr Mode kModes[kGripModes] = {
    {"Stretch", L"GRIP_STRETCH", L"Grip stretch", "Stretch to"},
    {"Move", L"GRIP_MOVE", L"Grip move", "Move to"},
    {"Rotate", L"GRIP_ROTATE", L"Grip rotate", "Rotation angle"},
    {"Scale", L"GRIP_SCALE", L"Grip scale", "Scale factor"},
    {"Mirror", L"GRIP_MIRROR", L"Grip mirror", "Second point of the mirror line"},
};

const Mode& entry(GripMode mode) {
    return kModes[static_cast<int>(mode)];
}

} // namespace

GripMode nextMode(GripMode mode) {
    return static_cast<GripMode>((static_cast<int>(mode) + 1) % kGripModes);
}

QString optionNamed(const QString& word) {
    QString all = QStringLiteral("Base Copy");
    for (const Mode& mode : kModes)
        all += QLatin1Char(' ') + QLatin1String(mode.name);
    const auto keywords = ed::parseKeywords(all);
    const ed::Keyword* meant = ed::matchKeyword(keywords, word).keyword;
    return meant ? meant->global : QString();
}

std::optional<GripMode> modeNamed(const QString& option) {
    for (int i = 0; i < kGripModes; ++i)
        if (option == QLatin1String(kModes[i].name))
            return static_cast<GripMode>(i);
    return {};
}

const wchar_t* commandOf(GripMode mode) {
    return entry(mode).command;
}

const wchar_t* undoNameOf(GripMode mode) {
    return entry(mode).undoName;
}

QString optionsOf(GripMode mode) {
    QString options = mode == GripMode::kStretch ? QStringLiteral("Base") : QStringLiteral("Base Copy");
    for (GripMode other = nextMode(mode); other != mode; other = nextMode(other))
        options += QLatin1Char(' ') + QLatin1String(entry(other).name);
    return options;
}

QString promptOf(GripMode mode, bool copies) {
    return QStringLiteral("%1%2 or [%3] <%4>: ")
        .arg(QLatin1String(entry(mode).question), copies ? QStringLiteral(" (copies)") : QString(),
             optionsOf(mode).replace(QLatin1Char(' '), QLatin1Char('/')), QLatin1String(entry(nextMode(mode)).name));
}

std::optional<MxGeMatrix3d> mapOf(GripMode mode, const MxGePoint3d& base, const MxGePoint3d& at) {
    const MxGeVector3d way = at - base;
    if (mode == GripMode::kStretch || (way.x == 0.0 && way.y == 0.0))
        return {};
    if (mode == GripMode::kMove)
        return MxGeMatrix3d::translation(way);
    if (mode == GripMode::kMirror)
        return ed::mirrorAbout(base, way);
    return mapOf(mode, base, mode == GripMode::kRotate ? ed::directionTo(base, at) : way.length());
}

std::optional<MxGeMatrix3d> mapOf(GripMode mode, const MxGePoint3d& base, double number) {
    if (mode == GripMode::kRotate)
        return MxGeMatrix3d::about(base, MxGeMatrix3d::rotation(number));
    if (mode == GripMode::kScale)
        return MxGeMatrix3d::about(base, MxGeMatrix3d::scaling(number, number, number));
    return {};
}

} // namespace merix::ui
