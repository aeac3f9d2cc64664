// SPDX-License-Identifier: MIT
// SETVAR: shows and sets the system variables.
#include "merix/ed/setvar_command.h"

#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/variables.h"
#include "merix/ed/view_commands.h"

namespace merix::ed {

namespace {

QString valueOf(const Variable& variable) {
    const auto value = variable.get();
    return value ? formatValue(*value) : QStringLiteral("(none)");
}

void list() {
    for (const Variable& variable : systemVariables())
        tell(QStringLiteral("%1 = %2%3")
                 .arg(QLatin1String(variable.name), valueOf(variable),
                      variable.set ? QString() : QStringLiteral(" (read only)")));
}

template <class T> std::optional<MxEdVariableValue> given(int result, const T& value) {
    return result == kInputNormal ? std::optional<MxEdVariableValue>(value) : std::nullopt;
}

std::optional<MxEdVariableValue> askValue(const Variable& variable) {
    Prompter& prompter = Prompter::instance();
    const QString prompt =
        QStringLiteral("New value of %1 <%2>: ").arg(QLatin1String(variable.name), valueOf(variable));
    switch (variable.type) {
    case Variable::Type::kInteger: {
        int value = 0;
        const int result = prompter.getInteger(prompt, value);
        return given(result, value);
    }
    case Variable::Type::kReal: {
        double value = 0.0;
        const int result = prompter.getReal(prompt, value);
        return given(result, value);
    }
    case Variable::Type::kPoint: {
        MxGePoint3d value;
        const int result = prompter.getPoint(nullptr, prompt, value);
        return given(result, value);
    }
    case Variable::Type::kText:
        break;
    }
    QString value;
    const int result = prompter.getString(true, prompt, value);
    return given(result, value.toStdWString());
}

void setvar() {
    QString name;
    if (Prompter::instance().getString(false, QStringLiteral("Variable name or [?]: "), name) != kInputNormal)
        return;
    if (name == QLatin1String("?")) {
        list();
        return;
    }
    const Variable* variable = systemVariable(name);
    if (!variable) {
        tell(QStringLiteral("There is no variable %1.").arg(name));
        return;
    }
    if (!variable->set) {
        tell(QStringLiteral("%1 = %2 (read only)").arg(QLatin1String(variable->name), valueOf(*variable)));
        return;
    }
    const auto value = askValue(*variable);
    if (value && mxedSetVar(name.toStdWString().c_str(), *value) != Mx::eOk)
        tell(QStringLiteral("%1 does not take the value %2.").arg(QLatin1String(variable->name), formatValue(*value)));
}

} // namespace

void registerSetvarCommand(CommandStack& stack) {
    stack.addCommand(kHostGroup, L"SETVAR", L"SETVAR", 0, setvar);
    stack.addAlias(QStringLiteral("SET"), QStringLiteral("SETVAR"));
}

} // namespace merix::ed
