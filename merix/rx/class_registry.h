// SPDX-License-Identifier: MIT
// The registry of run-time classes as the host sees it.
#pragma once

#include "host/rx/rx_class.h"

#include <string_view>

namespace merix::rx {

/// Told of classes that come and go while drawings are open. Main thread only.
class ClassListener {
public:
    virtual ~ClassListener() = default;
    /// The class is still whole; afterwards nothing may refer to it.
    virtual void classAboutToBeDeleted(const MxRxClass& aClass) = 0;
    /// All parents known are resolved.
    virtual void hierarchyBuilt() = 0;
};

/// The registry does not own its listeners.
void addClassListener(ClassListener* listener);

/// The class filed under `dxfName` (case matters not), or null. The one registered last wins.
MxRxClass* findClassByDxfName(std::wstring_view dxfName);

/// Registers a class of the host itself. Its name must be free.
MxRxClass* registerHostClass(const wchar_t* name, const MxRxClass* parent, MxRxPseudoConstructor constructor = nullptr,
                             const wchar_t* dxfName = L"");

template <class T> MxRxObject* makeObject() {
    try {
        return new T;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace merix::rx

#define MERIX_RX_JOIN2(a, b) a##b
#define MERIX_RX_JOIN(a, b) MERIX_RX_JOIN2(a, b)

/// Defines desc() and isA() of a host class and registers it while the host is loaded, so that it is known by name
/// before anything asks for it.
#define MERIX_RX_CLASS(Type, name, Parent, constructor, dxfName)                                                       \
    MxRxClass* Type::desc() {                                                                                          \
        static MxRxClass* const descriptor =                                                                           \
            merix::rx::registerHostClass(L##name, Parent::desc(), constructor, L##dxfName);                            \
        return descriptor;                                                                                             \
    }                                                                                                                  \
    MxRxClass* Type::isA() const {                                                                                     \
        return Type::desc();                                                                                           \
    }                                                                                                                  \
    [[maybe_unused]] static const MxRxClass* const MERIX_RX_JOIN(registeredClass, __LINE__) = Type::desc();
