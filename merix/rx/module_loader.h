// SPDX-License-Identifier: MIT
// Loads and unloads modules (.mrx): checks that they were built for this host, tells them of drawings, and sees to it
// that nothing of an unloaded module stays mapped. Main thread only.
#pragma once

#include "host/rx/app.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace merix::rx {

enum class ModuleState { kLoaded, kFailed, kUnloaded };

/// One module that was asked for in this run. Its address is the module's application id.
struct Module {
    std::string path; ///< absolute
    ModuleState state = ModuleState::kFailed;
    std::string error;       ///< UTF-8, one line; empty unless loading or unloading failed
    unsigned apiVersion = 0; ///< that it was built for; 0 before it was asked
    bool unloadable = false;
    bool servesSeveralDocuments = false;
    void* library = nullptr;
    MxRxEntryPoint entryPoint = nullptr; ///< null while it is not open
    unsigned loads = 0; ///< how often it was opened: what an earlier load left behind is not of this one
};

/// A host API version for the user: "2025.0".
std::string versionText(unsigned version);

/// The outcome of loading or unloading; `error` is one line for the user, in UTF-8.
struct ModuleResult {
    Module* module = nullptr; ///< set when loaded
    std::string error;
    explicit operator bool() const { return error.empty(); }
};

class ModuleLoader {
public:
    static ModuleLoader& instance();

    /// Opens the file, checks its host API version and sends message 1, then 3 for every open drawing. A module that
    /// fails at message 1 gets message 2 and is closed.
    ModuleResult load(const std::string& path);
    /// Sends 4 for every open drawing, then 2, and closes the library. Refused for a module that did not declare itself
    /// unloadable. An error that says that the module stays mapped leaves it unloaded nevertheless.
    ModuleResult unload(Module& module);
    /// Unloads all modules, unloadable or not, last loaded first: the host is about to end.
    void unloadAll();

    /// Messages 3 and 4 to all loaded modules, for the drawing that is current while it is called.
    void drawingLoaded();
    void drawingToBeUnloaded();

    /// Sends one message; the answer is the module's, 0 for a module not loaded, -1 for one that threw.
    int sendMessage(Module& module, int message);
    /// The module whose message is being handled, or null.
    Module* currentModule() const { return m_current; }

    /// Every module asked for, in order; a path asked for again appears once.
    const std::vector<std::unique_ptr<Module>>& modules() const { return m_modules; }

    /// Calls the function given once for each open drawing, with that drawing current.
    using ForEachDrawing = std::function<void(const std::function<void()>&)>;
    void setForEachDrawing(ForEachDrawing forEach) { m_forEachDrawing = std::move(forEach); }

    /// Runs the function given, which starts a module (message 1, and 2 when that fails) or ends one (4 and 2).
    using AroundTurn = std::function<void(const std::function<void()>&)>;
    void setAroundTurn(AroundTurn around) { m_aroundTurn = std::move(around); }

    /// Called after message 2, while the module's code is still there: what others hold of it (windows, functions)
    /// goes.
    using BeforeUnmap = std::function<void(const Module&)>;
    void setBeforeUnmap(BeforeUnmap beforeUnmap) { m_beforeUnmap = std::move(beforeUnmap); }
    /// Called before a module that can be unloaded is sent its last messages: what the user is at ends as ever, and
    /// what it changes can still be undone.
    void setBeforeUnload(std::function<void()> beforeUnload) { m_beforeUnload = std::move(beforeUnload); }

    MxRxDynamicLinker& dynamicLinker();

private:
    ModuleLoader();
    ~ModuleLoader();
    Module& entry(const std::string& path);
    std::string open(Module& module);
    void close(Module& module);
    /// Nothing when the module threw.
    std::optional<int> deliver(Module& module, int message);
    /// Sends message 2, calls the function set by setBeforeUnmap and closes the library. A module that throws may have
    /// left anything behind that points into its code: it stays mapped, and the answer is false.
    bool end(Module& module);
    void forEachDrawing(const std::function<void()>& call);
    void inTurn(const std::function<void()>& turn);
    /// Sends message 1. Why the module cannot be used, empty when it can.
    std::string start(Module& module);

    std::vector<std::unique_ptr<Module>> m_modules;
    ForEachDrawing m_forEachDrawing;
    AroundTurn m_aroundTurn;
    BeforeUnmap m_beforeUnmap;
    std::function<void()> m_beforeUnload;
    std::unique_ptr<MxRxDynamicLinker> m_linker;
    Module* m_current = nullptr;
};

} // namespace merix::rx
