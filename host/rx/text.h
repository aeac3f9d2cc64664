// SPDX-License-Identifier: MIT
// The text types of the contract. All texts are wide strings of UCS-4 code points (wchar_t has four bytes).
#pragma once

#include <string>

/// A wide string that a caller owns and an operation fills.
template <class Char> class CStdStr : public std::basic_string<Char> {
public:
    using std::basic_string<Char>::basic_string;
    CStdStr() = default;
    CStdStr(const std::basic_string<Char>& text)
        : std::basic_string<Char>(text) {}
};

/// A stored text. A null pointer is taken as the empty text.
class MxString {
public:
    MxString() = default;
    MxString(const wchar_t* text)
        : m_text(text ? text : L"") {}
    MxString(std::wstring text)
        : m_text(std::move(text)) {}

    const wchar_t* text() const { return m_text.c_str(); }
    const std::wstring& str() const { return m_text; }
    bool isEmpty() const { return m_text.empty(); }
    bool operator==(const MxString& other) const { return m_text == other.m_text; }

private:
    std::wstring m_text;
};
