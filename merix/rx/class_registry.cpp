// SPDX-License-Identifier: MIT
#include "merix/rx/class_registry.h"

#include "merix/rx/text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace merix::rx {

namespace {

class RegisteredClass final : public MxRxClass {
public:
    const wchar_t* name() const override { return m_name.c_str(); }
    const wchar_t* dxfName() const override { return m_dxfName.c_str(); }
    const wchar_t* appName() const override { return m_appName.c_str(); }
    int dwgVersion() const override { return m_dwgVersion; }
    int maintenanceVersion() const override { return m_maintenanceVersion; }
    int proxyFlags() const override { return m_proxyFlags; }
    MxRxClass* myParent() const override { return m_parent; }
    MxRxObject* create() const override { return m_constructor ? m_constructor() : nullptr; }

    std::wstring m_name, m_parentName, m_dxfName, m_appName;
    int m_dwgVersion = 0, m_maintenanceVersion = 0, m_proxyFlags = 0;
    MxRxPseudoConstructor m_constructor = nullptr;
    MxRxAppNameChange m_appNameChange = nullptr;
    MxRxClass* m_parent = nullptr;
};

struct Registry {
    std::unordered_map<std::wstring, std::unique_ptr<RegisteredClass>> byName;
    std::unordered_map<std::wstring, std::vector<RegisteredClass*>> byDxfName; // folded, in order of registration
    std::vector<ClassListener*> listeners;
};

/// Never destroyed: modules and static objects refer to classes until the very end of the process.
Registry& registry() {
    static Registry* const instance = new Registry;
    return *instance;
}

const wchar_t* orEmpty(const wchar_t* text) {
    return text ? text : L"";
}

MxRxClass* add(std::unique_ptr<RegisteredClass> made) {
    Registry& all = registry();
    RegisteredClass* added = made.get();
    if (added->m_name.empty() || !all.byName.try_emplace(added->m_name, std::move(made)).second)
        return nullptr;
    if (!added->m_parent)
        added->m_parent = mxrxFindMxRxClass(added->m_parentName.c_str());
    if (!added->m_dxfName.empty())
        all.byDxfName[foldCase(added->m_dxfName)].push_back(added);
    return added;
}

void removeDxfName(const RegisteredClass& aClass) {
    Registry& all = registry();
    const auto found = all.byDxfName.find(foldCase(aClass.m_dxfName));
    if (found == all.byDxfName.end())
        return;
    std::erase(found->second, &aClass);
    if (found->second.empty())
        all.byDxfName.erase(found);
}

} // namespace

void addClassListener(ClassListener* listener) {
    registry().listeners.push_back(listener);
}

MxRxClass* findClassByDxfName(std::wstring_view dxfName) {
    const auto& names = registry().byDxfName;
    const auto found = names.find(foldCase(dxfName));
    return found == names.end() ? nullptr : found->second.back();
}

MxRxClass* registerHostClass(const wchar_t* name, const MxRxClass* parent, MxRxPseudoConstructor constructor,
                             const wchar_t* dxfName) {
    auto made = std::make_unique<RegisteredClass>();
    made->m_name = name;
    made->m_parentName = parent ? parent->name() : L"";
    made->m_dxfName = dxfName;
    made->m_constructor = constructor;
    MxRxClass* added = add(std::move(made));
    if (!added)
        mxrx_abort((std::wstring(L"class registered twice: ") + name).c_str());
    return added;
}

} // namespace merix::rx

using merix::rx::RegisteredClass;

MxRxObject::~MxRxObject() = default;

MxRxClass* MxRxObject::desc() {
    static MxRxClass* const descriptor = merix::rx::registerHostClass(L"MxRxObject", nullptr);
    return descriptor;
}

MxRxClass* MxRxObject::isA() const {
    return MxRxObject::desc();
}

bool MxRxObject::isKindOf(const MxRxClass* aClass) const {
    const MxRxClass* own = isA();
    return own && aClass && own->isDerivedFrom(aClass);
}

bool MxRxClass::isDerivedFrom(const MxRxClass* aClass) const {
    if (!aClass)
        return false;
    for (const MxRxClass* c = this; c; c = c->myParent()) {
        if (c == aClass)
            return true;
    }
    return false;
}

MxRxClass* newMxRxClass(const wchar_t* name, const wchar_t* parentName, int dwgVersion, int maintenanceVersion,
                        int proxyFlags, MxRxPseudoConstructor constructor, const wchar_t* dxfName,
                        const wchar_t* appName, MxRxAppNameChange appNameChange) {
    auto made = std::make_unique<RegisteredClass>();
    made->m_name = merix::rx::orEmpty(name);
    made->m_parentName = merix::rx::orEmpty(parentName);
    made->m_dxfName = merix::rx::orEmpty(dxfName);
    made->m_appName = merix::rx::orEmpty(appName);
    made->m_dwgVersion = dwgVersion;
    made->m_maintenanceVersion = maintenanceVersion;
    made->m_proxyFlags = proxyFlags;
    made->m_constructor = constructor;
    made->m_appNameChange = appNameChange;
    return merix::rx::add(std::move(made));
}

MxRxClass* newMxRxClass(const wchar_t* name, const wchar_t* parentName, int version,
                        MxRxPseudoConstructor constructor) {
    return newMxRxClass(name, parentName, version, 0, 0, constructor, nullptr, nullptr);
}

void deleteMxRxClass(MxRxClass* aClass) {
    auto& all = merix::rx::registry();
    const auto found = std::find_if(all.byName.begin(), all.byName.end(),
                                    [aClass](const auto& entry) { return entry.second.get() == aClass; });
    if (!aClass || found == all.byName.end())
        return;
    for (auto* listener : all.listeners)
        listener->classAboutToBeDeleted(*aClass);
    for (auto& [name, other] : all.byName) {
        if (other->m_parent == aClass)
            other->m_parent = nullptr;
    }
    merix::rx::removeDxfName(*found->second);
    all.byName.erase(found);
}

MxRxClass* mxrxFindMxRxClass(const wchar_t* name) {
    const auto& all = merix::rx::registry().byName;
    const auto found = all.find(merix::rx::orEmpty(name));
    return found == all.end() ? nullptr : found->second.get();
}

void mxrxBuildClassHierarchy() {
    auto& all = merix::rx::registry();
    for (auto& [name, aClass] : all.byName) {
        if (!aClass->m_parent)
            aClass->m_parent = mxrxFindMxRxClass(aClass->m_parentName.c_str());
    }
    for (auto* listener : all.listeners)
        listener->hierarchyBuilt();
}

void mxrx_abort(const wchar_t* message) {
    const std::string text = merix::rx::toUtf8(merix::rx::orEmpty(message));
    std::fprintf(stderr, "merix: %s\n", text.c_str());
    std::fflush(stderr);
    std::abort();
}
