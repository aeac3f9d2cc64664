// SPDX-License-Identifier: MIT
#include "merix/rx/system_registry.h"

#include "merix/rx/module_loader.h"

#include <map>
#include <string>

namespace merix::rx {

namespace {

class SystemRegistry final : public MxRxSystemRegistry {
public:
    SystemRegistry() { m_entries[L"DynamicLinker"] = &ModuleLoader::instance().dynamicLinker(); }

    MxRxObject* at(const wchar_t* key) const override {
        const auto found = m_entries.find(key ? key : L"");
        return found == m_entries.end() ? nullptr : found->second;
    }

    void set(const wchar_t* key, MxRxObject* object) {
        if (object)
            m_entries[key] = object;
        else
            m_entries.erase(key);
    }

private:
    std::map<std::wstring, MxRxObject*> m_entries;
};

SystemRegistry& systemRegistry() {
    static SystemRegistry* const instance = new SystemRegistry;
    return *instance;
}

} // namespace

void setSystemRegistryEntry(const wchar_t* key, MxRxObject* object) {
    systemRegistry().set(key, object);
}

} // namespace merix::rx

MxRxSystemRegistry* mxrxSysRegistry() {
    return &merix::rx::systemRegistry();
}
