// SPDX-License-Identifier: MIT
// What hot grips can do: bring their own points along with the hand, or the whole selection in one of four ways.
#pragma once

#include "host/ge/matrix.h"

#include <QString>

#include <optional>

namespace merix::ui {

enum class GripMode { kStretch, kMove, kRotate, kScale, kMirror };
constexpr int kGripModes = 5;

/// Enter leads through all of them, round and round.
GripMode nextMode(GripMode mode);
/// What a typed word or its only beginning names: a mode, `Base` or `Copy`; empty when it is none.
QString optionNamed(const QString& word);
std::optional<GripMode> modeNamed(const QString& option);

/// What reactors of the editor are told of as a command.
const wchar_t* commandOf(GripMode mode);
/// What the step is called that undo takes back.
const wchar_t* undoNameOf(GripMode mode);
/// What the command line offers besides: another base, copies except for a stretch, the other modes.
QString optionsOf(GripMode mode);
/// What it asks for, with the options and what Enter does.
QString promptOf(GripMode mode, bool copies);

/// Where the whole selection goes when the hand has gone from `base` to `at`: by the way between them, by its
/// direction, by its length as a factor, or mirrored in the line through both. Nothing while it is at the base and in
/// kStretch.
std::optional<MxGeMatrix3d> mapOf(GripMode mode, const MxGePoint3d& base, const MxGePoint3d& at);
/// The same with an angle (radians) or a factor that was typed; nothing in modes that take none.
std::optional<MxGeMatrix3d> mapOf(GripMode mode, const MxGePoint3d& base, double number);

} // namespace merix::ui
