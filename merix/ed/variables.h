// SPDX-License-Identifier: MIT
// The system variables behind mxedGetVar and mxedSetVar. Main thread only.
#pragma once

#include "host/ed/variables.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace merix::ed {

struct Variable {
    enum class Type { kInteger, kReal, kText, kPoint };
    const char* name; ///< upper case
    Type type;
    /// Nothing while there is no drawing, or no view of one.
    std::optional<MxEdVariableValue> (*get)();
    /// Null: read only. The value is of the variable's type.
    Mx::ErrorStatus (*set)(const MxEdVariableValue& value);
};

/// All of them, by name.
const std::vector<Variable>& systemVariables();
/// Null when there is none of that name (case ignored).
const Variable* systemVariable(const QString& name);
/// What a person would type for the value.
QString formatValue(const MxEdVariableValue& value);
/// CMDECHO: what modules run is shown.
bool isCommandEchoOn();
/// SAVETIME: after how many minutes of unsaved change a drawing is copied, 0 to 600; 0: never. Kept in the user's
/// settings, 5 unless set there.
int saveTime();
/// `listener` is called with each new value of SAVETIME. There is one; null takes it away.
void setSaveTimeListener(std::function<void(int)> listener);

} // namespace merix::ed
