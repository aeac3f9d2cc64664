// SPDX-License-Identifier: MIT
#include "merix/io/dxf_value.h"

#include "merix/io/dxf_tag.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace merix::io {
namespace {

bool between(int code, int low, int high) {
    return code >= low && code <= high;
}

int digitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

std::string_view withoutPlus(std::string_view text) {
    text = trimmed(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    return text;
}

constexpr std::array<char, 16> kDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                          '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'};

} // namespace

DxfKind dxfKind(int code) {
    if (between(code, 10, 59) || between(code, 110, 149) || between(code, 210, 239) || between(code, 460, 469) ||
        between(code, 1010, 1059))
        return DxfKind::kDouble;
    if (between(code, 60, 99) || between(code, 160, 179) || between(code, 270, 299) || between(code, 370, 389) ||
        between(code, 400, 409) || between(code, 420, 429) || between(code, 440, 459) || between(code, 1060, 1071))
        return DxfKind::kInteger;
    if (between(code, 310, 319) || code == 1004)
        return DxfKind::kBinary;
    if (code == 5 || code == 105 || between(code, 320, 369) || between(code, 390, 399) || between(code, 480, 481) ||
        code == 1005)
        return DxfKind::kHandle;
    return DxfKind::kString;
}

bool isPointCode(int code) {
    return between(code, 10, 18) || between(code, 110, 112) || code == 210 || code == 211 || between(code, 1010, 1013);
}

double toDouble(std::string_view text) {
    text = withoutPlus(text);
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && std::isfinite(value) ? value : 0.0;
}

std::int64_t toInteger(std::string_view text) {
    text = withoutPlus(text);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range)
        return text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                                   : std::numeric_limits<std::int64_t>::max();
    if (error == std::errc() && end == text.data() + text.size())
        return value;
    const double number = toDouble(text);
    constexpr double kBound = 9.2e18;
    return static_cast<std::int64_t>(std::clamp(number, -kBound, kBound));
}

std::uint64_t toHandle(std::string_view text) {
    text = trimmed(text);
    if (text.empty() || text.size() > 16)
        return 0;
    std::uint64_t value = 0;
    for (const char c : text) {
        const int digit = digitValue(c);
        if (digit < 0)
            return 0;
        value = value << 4 | static_cast<std::uint64_t>(digit);
    }
    return value;
}

bool toBytes(std::string_view text, std::vector<std::uint8_t>& bytes) {
    text = trimmed(text);
    bytes.clear();
    if (text.size() % 2 != 0)
        return false;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = digitValue(text[i]);
        const int low = digitValue(text[i + 1]);
        if (high < 0 || low < 0)
            return false;
        bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
    return true;
}

std::string fromDouble(double value) {
    if (!std::isfinite(value))
        value = 0.0;
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value + 0.0).ptr;
    std::string text(digits.data(), end);
    if (text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

std::string fromHandle(std::uint64_t handle) {
    std::string text;
    do {
        text.insert(text.begin(), kDigits[handle & 15]);
        handle >>= 4;
    } while (handle != 0);
    return text;
}

std::string fromBytes(const void* bytes, std::size_t count) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    std::string text;
    text.reserve(count * 2);
    for (std::size_t i = 0; i < count; ++i) {
        text += kDigits[from[i] >> 4];
        text += kDigits[from[i] & 15];
    }
    return text;
}

bool sameValue(int code, std::string_view left, std::string_view right) {
    switch (dxfKind(code)) {
    case DxfKind::kDouble:
        return toDouble(left) == toDouble(right);
    case DxfKind::kInteger:
        return toInteger(left) == toInteger(right);
    case DxfKind::kHandle:
        return toHandle(left) == toHandle(right);
    case DxfKind::kBinary: {
        const auto lower = [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c; };
        left = trimmed(left);
        right = trimmed(right);
        return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                          [lower](char a, char b) { return lower(a) == lower(b); });
    }
    case DxfKind::kString:
        break;
    }
    return left == right;
}

} // namespace merix::io
