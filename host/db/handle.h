// SPDX-License-Identifier: MIT
#pragma once

#include <compare>
#include <cstdint>

/// The name of an object inside one drawing, kept for the object's life and across files. 0 is no handle.
class MxDbHandle {
public:
    constexpr MxDbHandle() = default;
    constexpr explicit MxDbHandle(std::uint64_t value)
        : m_value(value) {}
    /// Reads hexadecimal text (either case, up to 16 digits); anything else gives the null handle.
    explicit MxDbHandle(const wchar_t* text);

    constexpr std::uint64_t value() const { return m_value; }
    constexpr bool isNull() const { return m_value == 0; }
    /// Writes upper-case hexadecimal digits without leading zeros, and a terminator, into `buffer` of at least 17
    /// wide characters.
    void getIntoAsciiBuffer(wchar_t* buffer) const;

    auto operator<=>(const MxDbHandle&) const = default;

private:
    std::uint64_t m_value = 0;
};
