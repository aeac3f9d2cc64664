// SPDX-License-Identifier: MIT
#include "merix/rx/module_loader.h"

#include "merix/rx/class_registry.h"

#include <cstdio>
#include <exception>
#include <filesystem>

#include <dlfcn.h>

MERIX_RX_CLASS(MxRxDynamicLinker, "MxRxDynamicLinker", MxRxObject, nullptr, "")

namespace merix::rx {

namespace {

class DynamicLinker final : public MxRxDynamicLinker {
public:
    void setUnloadable(void* appId, bool unloadable) override {
        if (Module* module = find(appId))
            module->unloadable = unloadable;
    }
    void setServesSeveralDocuments(void* appId, bool several) override {
        if (Module* module = find(appId))
            module->servesSeveralDocuments = several;
    }

private:
    static Module* find(const void* appId) {
        for (const auto& module : ModuleLoader::instance().modules()) {
            if (module.get() == appId)
                return module.get();
        }
        return nullptr;
    }
};

std::string loaderError() {
    const char* text = dlerror();
    return text ? text : "unknown error";
}

/// The text of dlerror begins with the path; one mention of it is enough.
std::string withoutPath(std::string text, const std::string& path) {
    const std::string head = path + ": ";
    return text.starts_with(head) ? text.substr(head.size()) : text;
}

bool isMapped(const std::string& path) {
    void* again = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
    if (!again)
        return false;
    dlclose(again);
    return true;
}

} // namespace

std::string versionText(unsigned version) {
    return std::to_string(version >> 16) + "." + std::to_string(version & 0xFFFFU);
}

ModuleLoader::ModuleLoader()
    : m_linker(std::make_unique<DynamicLinker>()) {}
ModuleLoader::~ModuleLoader() = default;

ModuleLoader& ModuleLoader::instance() {
    // Never destroyed: static objects of modules still call the host at the very end of the process.
    static ModuleLoader* const loader = new ModuleLoader;
    return *loader;
}

MxRxDynamicLinker& ModuleLoader::dynamicLinker() {
    return *m_linker;
}

Module& ModuleLoader::entry(const std::string& path) {
    std::error_code failed;
    auto absolute = std::filesystem::weakly_canonical(std::filesystem::absolute(path, failed), failed).string();
    if (failed)
        absolute = path;
    for (const auto& module : m_modules) {
        if (module->path == absolute)
            return *module;
    }
    m_modules.push_back(std::make_unique<Module>());
    m_modules.back()->path = absolute;
    return *m_modules.back();
}

std::string ModuleLoader::open(Module& module) {
    std::error_code failed;
    if (!std::filesystem::is_regular_file(module.path, failed))
        return "there is no such file";
    module.library = dlopen(module.path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module.library)
        return withoutPath(loaderError(), module.path);
    ++module.loads;
    const auto getVersion = reinterpret_cast<MxRxGetApiVersion>(dlsym(module.library, "mxrxGetApiVersion"));
    module.entryPoint = reinterpret_cast<MxRxEntryPoint>(dlsym(module.library, "mxrxEntryPoint"));
    if (!getVersion || !module.entryPoint)
        return "it is no module: mxrxGetApiVersion or mxrxEntryPoint is missing";
    module.apiVersion = getVersion();
    if (module.apiVersion != kMxRxApiVersion)
        return "it was built for host API " + versionText(module.apiVersion) + ", this host has " +
               versionText(kMxRxApiVersion);
    return {};
}

void ModuleLoader::close(Module& module) {
    if (module.library)
        dlclose(module.library);
    module.library = nullptr;
    module.entryPoint = nullptr;
    module.unloadable = module.servesSeveralDocuments = false;
}

bool ModuleLoader::end(Module& module) {
    const bool ended = deliver(module, kUnloadAppMsg) == 0; // else something of it may still be registered
    if (m_beforeUnmap)
        m_beforeUnmap(module);
    if (!ended)
        module.library = nullptr; // never closed
    close(module);
    return ended;
}

std::string ModuleLoader::start(Module& module) {
    const auto answer = deliver(module, kInitAppMsg);
    if (answer == 0)
        return {};
    // It may have registered things before it failed; ending it takes them back.
    const std::string why =
        answer ? "its initialisation answered " + std::to_string(*answer) : std::string("its initialisation failed");
    return end(module) ? why : why + "; it failed at its end too and stays mapped";
}

ModuleResult ModuleLoader::load(const std::string& path) {
    Module& module = entry(path);
    const auto fail = [&](const std::string& why) {
        module.error = "cannot load module " + module.path + ": " + why;
        return ModuleResult{nullptr, module.error};
    };
    if (module.state == ModuleState::kLoaded)
        return {&module, "module " + module.path + " is loaded already"};
    module.state = ModuleState::kFailed;
    if (const std::string why = open(module); !why.empty()) {
        close(module);
        return fail(why);
    }
    std::string why;
    inTurn([&] { why = start(module); });
    if (!why.empty())
        return fail(why);
    module.state = ModuleState::kLoaded;
    module.error.clear();
    forEachDrawing([&] { sendMessage(module, kLoadDwgMsg); });
    return {&module, {}};
}

ModuleResult ModuleLoader::unload(Module& module) {
    if (module.state != ModuleState::kLoaded)
        return {nullptr, "module " + module.path + " is not loaded"};
    if (!module.unloadable)
        return {&module, "module " + module.path + " cannot be unloaded while the host runs"};
    if (m_current == &module)
        return {&module, "module " + module.path + " is at work"};
    if (m_beforeUnload)
        m_beforeUnload();
    bool closed = false;
    inTurn([&] {
        forEachDrawing([&] { sendMessage(module, kUnloadDwgMsg); });
        closed = end(module);
    });
    module.state = ModuleState::kUnloaded;
    module.error.clear();
    if (!closed)
        module.error = "module " + module.path + " failed at its end: it was unloaded but stays mapped";
    else if (isMapped(module.path))
        module.error = "module " + module.path + " was unloaded but stays mapped";
    return {&module, module.error};
}

void ModuleLoader::unloadAll() {
    for (auto module = m_modules.rbegin(); module != m_modules.rend(); ++module) {
        if ((*module)->state != ModuleState::kLoaded)
            continue;
        (*module)->unloadable = true;
        if (const ModuleResult result = unload(**module); !result)
            std::fprintf(stderr, "merix: %s\n", result.error.c_str());
    }
}

void ModuleLoader::drawingLoaded() {
    for (std::size_t i = 0; i < m_modules.size(); ++i) {
        if (m_modules[i]->state == ModuleState::kLoaded)
            sendMessage(*m_modules[i], kLoadDwgMsg);
    }
}

void ModuleLoader::drawingToBeUnloaded() {
    for (std::size_t i = 0; i < m_modules.size(); ++i) {
        if (m_modules[i]->state == ModuleState::kLoaded)
            sendMessage(*m_modules[i], kUnloadDwgMsg);
    }
}

int ModuleLoader::sendMessage(Module& module, int message) {
    return module.entryPoint ? deliver(module, message).value_or(-1) : 0;
}

std::optional<int> ModuleLoader::deliver(Module& module, int message) {
    Module* const before = m_current;
    m_current = &module;
    std::optional<int> answer;
    // A module that throws has broken the contract; the host goes on without what the message should have done.
    try {
        answer = module.entryPoint(message, &module);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "merix: module %s failed at message %d: %s\n", module.path.c_str(), message, e.what());
    } catch (...) {
        std::fprintf(stderr, "merix: module %s failed at message %d\n", module.path.c_str(), message);
    }
    m_current = before;
    return answer;
}

void ModuleLoader::inTurn(const std::function<void()>& turn) {
    if (m_aroundTurn)
        m_aroundTurn(turn);
    else
        turn();
}

void ModuleLoader::forEachDrawing(const std::function<void()>& call) {
    if (m_forEachDrawing)
        m_forEachDrawing(call);
}

} // namespace merix::rx
