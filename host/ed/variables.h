// SPDX-License-Identifier: MIT
// System variables: settings of the session, of the drawing's header and of the active view, by name. Main thread only.
#pragma once

#include "host/ge/geometry.h"
#include "host/rx/status.h"

#include <string>
#include <variant>

using MxEdVariableValue = std::variant<int, double, std::wstring, MxGePoint3d>;

/// Puts the value of the variable (case ignored) into `value`, which is left alone on failure. eKeyNotFound;
/// eNoDatabase for a variable of the drawing or of its view while none is open.
Mx::ErrorStatus mxedGetVar(const wchar_t* name, MxEdVariableValue& value);

/// Sets it; a whole number does for a real one. A change of the drawing's header is a step that can be undone.
/// eKeyNotFound, eReadOnly, eNoDatabase; eInvalidInput for a value of another type, eOutOfRange for one that the
/// variable does not take (also the name of a layer or line type that the drawing lacks).
Mx::ErrorStatus mxedSetVar(const wchar_t* name, const MxEdVariableValue& value);
