// SPDX-License-Identifier: MIT
#include "merix/ed/host_functions.h"

#include "host/rx/app.h"
#include "merix/ed/console.h"
#include "merix/rx/module_loader.h"

#include <algorithm>

namespace merix::ed {

HostFunctions& HostFunctions::instance() {
    static HostFunctions* const functions =
        new HostFunctions; // never destroyed: modules may still call at the very end
    return *functions;
}

void HostFunctions::dropContext(const void* context) {
    std::erase_if(m_functions, [&](const Function& f) { return f.context == context; });
    if (m_context == context)
        m_context = nullptr;
}

void HostFunctions::dropModule(const rx::Module* module) {
    std::erase_if(m_functions, [&](const Function& f) { return f.module == module; });
}

const HostFunctions::Function* HostFunctions::find(const QString& name) const {
    const auto found = std::find_if(m_functions.begin(), m_functions.end(), [&](const Function& f) {
        return f.context == m_context && f.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == m_functions.end() ? nullptr : &*found;
}

bool HostFunctions::define(const QString& name, int code) {
    rx::Module* module = rx::ModuleLoader::instance().currentModule();
    if (name.isEmpty() || !module || !m_context)
        return false;
    std::erase_if(m_functions, [&](const Function& f) {
        return f.context == m_context && f.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    m_functions.push_back({m_context, module, name, code});
    return true;
}

bool HostFunctions::undefine(const QString& name, int code) {
    return std::erase_if(m_functions, [&](const Function& f) {
               return f.context == m_context && f.code == code && f.name.compare(name, Qt::CaseInsensitive) == 0;
           }) > 0;
}

bool HostFunctions::callLine(const QString& line) {
    Console& console = Console::instance();
    const QString call = line.trimmed();
    console.print(QStringLiteral("\nCommand: ") + call);
    const QString name = call.mid(1, call.size() - 2).trimmed();
    if (!call.startsWith(QLatin1Char('(')) || !call.endsWith(QLatin1Char(')')) || name.isEmpty()) {
        console.print(QStringLiteral("\nA function is called as (Name)."));
        return false;
    }
    const Function* function = find(name);
    if (!function) {
        console.print(QStringLiteral("\nUnknown function \"%1\".").arg(name));
        return false;
    }
    const auto outerCode = std::exchange(m_code, function->code);
    const auto outerResult = std::exchange(m_result, std::nullopt);
    rx::ModuleLoader::instance().sendMessage(*function->module, kInvkSubrMsg);
    console.print(QLatin1Char('\n') + (m_result ? QString::number(*m_result) : QStringLiteral("nil")));
    m_code = outerCode;
    m_result = outerResult;
    return true;
}

} // namespace merix::ed
