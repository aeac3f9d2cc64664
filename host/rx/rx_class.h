// SPDX-License-Identifier: MIT
// Run-time classes: every class that the host creates by name or tests at run time has one descriptor.
// Main thread only.
#pragma once

#include "host/rx/heap.h"
#include "host/rx/text.h"

#include <new>

class MxRxClass;

/// Root of all classes with a run-time descriptor.
class MxRxObject {
public:
    virtual ~MxRxObject();

    static MxRxClass* desc();
    virtual MxRxClass* isA() const;
    /// True when the object's class is `aClass` or derives from it; false for null.
    bool isKindOf(const MxRxClass* aClass) const;

    static void* operator new(std::size_t size) {
        void* block = mxHeapAlloc(size);
        if (!block)
            throw std::bad_alloc();
        return block;
    }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) { mxHeapFree(block); }
    static void operator delete(void*, void*) noexcept {}

protected:
    MxRxObject() = default;
    MxRxObject(const MxRxObject&) = default;
    MxRxObject& operator=(const MxRxObject&) = default;
};

/// Makes a default instance on the host heap, or returns null when that fails.
using MxRxPseudoConstructor = MxRxObject* (*)();

/// Asked for the application name under which a class is saved to an older file version. May be null.
using MxRxAppNameChange = void (*)(const MxRxClass* aClass, CStdStr<wchar_t>& appName, int saveVersion);

/// A run-time class descriptor, owned by the class registry until deleteMxRxClass.
class MxRxClass : public MxRxObject {
public:
    virtual const wchar_t* name() const = 0;
    /// The record name in DXF; empty for classes that are never filed.
    virtual const wchar_t* dxfName() const = 0;
    /// The application description, `|`-separated fields; empty when none was given.
    virtual const wchar_t* appName() const = 0;
    virtual int dwgVersion() const = 0;
    virtual int maintenanceVersion() const = 0;
    virtual int proxyFlags() const = 0;
    /// The parent, or null for the root and for a parent not registered yet (see mxrxBuildClassHierarchy).
    virtual MxRxClass* myParent() const = 0;
    /// A new default instance that the caller owns, or null for abstract classes.
    virtual MxRxObject* create() const = 0;
    /// True for the class itself and for every ancestor.
    bool isDerivedFrom(const MxRxClass* aClass) const;
};

/// Registers a class that is filed in drawings. All texts are copied. Returns the descriptor; registering a name
/// twice returns null.
MxRxClass* newMxRxClass(const wchar_t* name, const wchar_t* parentName, int dwgVersion, int maintenanceVersion,
                        int proxyFlags, MxRxPseudoConstructor constructor, const wchar_t* dxfName,
                        const wchar_t* appName, MxRxAppNameChange appNameChange = nullptr);

/// Registers a class that is not filed.
MxRxClass* newMxRxClass(const wchar_t* name, const wchar_t* parentName, int version, MxRxPseudoConstructor constructor);

/// Unregisters and deletes a descriptor; null is ignored. Objects of the class in open drawings become records kept
/// as they are, and objects again when the class comes back.
void deleteMxRxClass(MxRxClass* aClass);

/// The descriptor registered under `name`, or null.
MxRxClass* mxrxFindMxRxClass(const wchar_t* name);

/// Resolves the parents of all classes registered so far.
void mxrxBuildClassHierarchy();

/// Stops the host with a message: for states that must never be.
[[noreturn]] void mxrx_abort(const wchar_t* message);
