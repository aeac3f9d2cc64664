// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/note_type.h"

#include "phonomark/dbutil/texts.h"

#include <array>
#include <string_view>

namespace {
constexpr unsigned kFirstTypeText = 256;
constexpr std::array<std::wstring_view, 4> kKeywords{L"Point", L"Region", L"Object", L"Reply"};
} // namespace

std::wstring PhonomarkType(int code) {
    if (code < kPointNote || code > kReplyNote)
        return L"Point";
    return resourceText(kFirstTypeText + static_cast<unsigned>(code));
}

int PhonomarkType(const wchar_t* keyword) {
    for (std::size_t code = 0; keyword && code < kKeywords.size(); ++code)
        if (kKeywords[code] == keyword)
            return static_cast<int>(code);
    return kPointNote;
}
