// SPDX-License-Identifier: MIT
// Host-language functions: names that modules define per drawing, called as `(Name)`. Main thread only.
#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace merix::rx {
struct Module;
}

namespace merix::ed {

class HostFunctions {
public:
    static HostFunctions& instance();

    /// The drawing that definitions and calls belong to, as an opaque key; null when none is open.
    void setContext(const void* context) { m_context = context; }
    const void* context() const { return m_context; }
    /// A drawing goes: forgets what is still defined for it.
    void dropContext(const void* context);
    /// A module goes: forgets what it left defined anywhere.
    void dropModule(const rx::Module* module);

    /// Of the module that is handling a message. A second definition of a name replaces the first.
    bool define(const QString& name, int code);
    bool undefine(const QString& name, int code);

    /// Calls what `(Name)` names and prints the result (nil when the function set none), or one line that says why not.
    bool callLine(const QString& line);

    std::optional<int> codeBeingCalled() const { return m_code; }
    void setResult(int value) { m_result = value; }

private:
    struct Function {
        const void* context;
        rx::Module* module;
        QString name;
        int code;
    };
    const Function* find(const QString& name) const;

    std::vector<Function> m_functions;
    const void* m_context = nullptr;
    std::optional<int> m_code, m_result;
};

} // namespace merix::ed
