// SPDX-License-Identifier: MIT
// A list of reactors that may be changed by the very notification that walks it.
#pragma once

#include "merix/ed/console.h"

#include <algorithm>
#include <vector>

namespace merix::ed {

/// Runs foreign code (a module's reactor, command or monitor). An exception stops here: `what` is named on the
/// console and false is returned.
template <class Function> bool guarded(const char* what, Function&& function) {
    try {
        function();
        return true;
    } catch (const std::exception& error) {
        Console::instance().print(
            QStringLiteral("\n%1 failed: %2").arg(QLatin1String(what), QLatin1String(error.what())));
    } catch (...) {
        Console::instance().print(QStringLiteral("\n%1 failed.").arg(QLatin1String(what)));
    }
    return false;
}

template <class Reactor> class ReactorList {
public:
    /// False when it was in the list already or is null.
    bool add(Reactor* reactor) {
        if (!reactor || contains(reactor))
            return false;
        m_reactors.push_back(reactor);
        return true;
    }
    bool remove(Reactor* reactor) { return std::erase(m_reactors, reactor) > 0; }
    bool contains(const Reactor* reactor) const {
        return std::find(m_reactors.begin(), m_reactors.end(), reactor) != m_reactors.end();
    }

    /// Calls `notify` with every reactor in the order of adding. One removed meanwhile is not called any more, one
    /// added meanwhile is not called yet.
    template <class Notify> void forEach(const char* what, Notify&& notify) const {
        const std::vector<Reactor*> walked = m_reactors;
        for (Reactor* reactor : walked)
            if (contains(reactor))
                guarded(what, [&] { notify(*reactor); });
    }

private:
    std::vector<Reactor*> m_reactors;
};

} // namespace merix::ed
