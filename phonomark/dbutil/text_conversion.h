// SPDX-License-Identifier: MIT
// Between the contract's wide strings (four bytes a character, UCS-4) and Qt's.
#pragma once

#include <QString>

#include <string>
#include <string_view>

inline QString toQString(std::wstring_view text) {
    static_assert(sizeof(wchar_t) == sizeof(char32_t));
    return QString::fromWCharArray(text.data(), static_cast<int>(text.size()));
}

inline std::wstring toWide(const QString& text) {
    return text.toStdWString();
}
