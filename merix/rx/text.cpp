// SPDX-License-Identifier: MIT
#include "merix/rx/text.h"

#include <QChar>

namespace merix::rx {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t c) {
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

/// Decodes the sequence at `at`, which moves past it; past one byte when it is malformed.
char32_t decodeOne(std::string_view bytes, std::size_t& at) {
    const auto lead = static_cast<unsigned char>(bytes[at++]);
    if (lead < 0x80)
        return lead;
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() - at < static_cast<std::size_t>(more))
        return kReplacement;
    char32_t c = lead & (0x3FU >> more);
    for (int i = 0; i < more; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
        if ((byte & 0xC0) != 0x80)
            return kReplacement;
        c = c << 6 | (byte & 0x3FU);
    }
    constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
    if (c < kLeast[more] || c > 0x10FFFF)
        return kReplacement;
    at += static_cast<std::size_t>(more);
    return c;
}

} // namespace

std::string toUtf8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (const wchar_t w : text) {
        const auto c = static_cast<char32_t>(w);
        appendUtf8(out, c > 0x10FFFF ? kReplacement : c);
    }
    return out;
}

std::wstring fromUtf8(std::string_view bytes) {
    std::wstring out;
    out.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();)
        out.push_back(static_cast<wchar_t>(decodeOne(bytes, at)));
    return out;
}

std::wstring foldCase(std::wstring_view name) {
    std::wstring folded(name);
    for (wchar_t& c : folded) {
        if (c < 0x80)
            c = c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c;
        else if (c <= 0x10FFFF)
            c = static_cast<wchar_t>(QChar::toCaseFolded(static_cast<uint>(c)));
    }
    return folded;
}

} // namespace merix::rx
