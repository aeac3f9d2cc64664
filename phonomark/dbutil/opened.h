// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object.h"
#include "phonomark/dbutil/border.h"

#include <utility>

/// An object of a drawing that is closed when this goes, whatever ends the work on it. Main thread only.
template <class T> class Opened {
public:
    Opened() = default;
    /// Takes over an object that is open; null for none.
    explicit Opened(T* open)
        : m_object(open) {}
    /// Empty when the object cannot be opened; status() tells why.
    Opened(MxDbObjectId id, Mx::OpenMode mode, bool openErased = false)
        : m_status(mxdbOpenObject(m_object, id, mode, openErased)) {}
    ~Opened() {
        guarded("closing an object", [this] { close(); });
    }
    Opened(Opened&& other) noexcept
        : m_object(std::exchange(other.m_object, nullptr))
        , m_status(other.m_status) {}
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    Opened& operator=(Opened&&) = delete;

    explicit operator bool() const { return m_object != nullptr; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    T* get() const { return m_object; }
    /// How the opening went.
    Mx::ErrorStatus status() const { return m_status; }

    /// Leaves it open: whoever takes it closes it.
    T* release() { return std::exchange(m_object, nullptr); }

    /// Closes it before its time. eNotOpen when empty.
    Mx::ErrorStatus close() {
        T* const object = std::exchange(m_object, nullptr);
        return object ? object->close() : Mx::eNotOpen;
    }

private:
    T* m_object = nullptr;
    Mx::ErrorStatus m_status = Mx::eOk;
};
