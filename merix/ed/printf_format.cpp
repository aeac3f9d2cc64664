// SPDX-License-Identifier: MIT
#include "merix/ed/printf_format.h"

#include <cerrno>
#include <cwchar>
#include <string_view>

namespace merix::ed {

namespace {

/// The same format in the C library's terms, where %s is narrow and %ls wide.
std::wstring toLibraryFormat(std::wstring_view format) {
    std::wstring out;
    for (std::size_t i = 0; i < format.size(); ++i) {
        out += format[i];
        if (format[i] != L'%')
            continue;
        const std::size_t end = format.find_first_not_of(L"-+ #0123456789.*'", i + 1);
        if (end == std::wstring_view::npos)
            return out + std::wstring(format.substr(i + 1));
        out += format.substr(i + 1, end - i - 1);
        i = end;
        const wchar_t kind = format[i];
        if (kind == L's' || kind == L'c')
            out += L'l';
        if (kind != L'h' || i + 1 >= format.size() || (format[i + 1] != L's' && format[i + 1] != L'c')) {
            out += kind;
        } else {
            out += format[++i]; // %hs: the library's narrow %s
        }
    }
    return out;
}

} // namespace

std::wstring formatWide(const wchar_t* format, std::va_list arguments) {
    if (!format)
        return {};
    constexpr std::size_t kGiveUp = std::size_t{1} << 26;
    const std::wstring libraryFormat = toLibraryFormat(format);
    // The wide formatter does not tell the length that it needs.
    std::wstring text(std::wcslen(format) + 256, L'\0');
    for (;;) {
        std::va_list copy;
        va_copy(copy, arguments);
        errno = 0;
        const int length = std::vswprintf(text.data(), text.size() + 1, libraryFormat.c_str(), copy);
        va_end(copy);
        if (length >= 0) {
            text.resize(static_cast<std::size_t>(length));
            return text;
        }
        if (errno == EILSEQ || text.size() >= kGiveUp)
            return text.substr(0, std::wcslen(text.c_str()));
        text.assign(text.size() * 2, L'\0');
    }
}

} // namespace merix::ed
