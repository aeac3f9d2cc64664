// SPDX-License-Identifier: MIT
// Values of DXF tags: what a group code's value is, and conversions that are safe on any text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace merix::io {

enum class DxfKind { kString, kDouble, kInteger, kBinary, kHandle };

/// What the format says that values of this group code are.
DxfKind dxfKind(int code);
/// True for the code of a point's x; its y and z stand under code + 10 and code + 20.
bool isPointCode(int code);

/// 0 for anything that is no finite number.
double toDouble(std::string_view text);
/// 0 for anything that is no number; brought to the nearest bound when it does not fit.
std::int64_t toInteger(std::string_view text);
/// 0 for anything but 1 to 16 hexadecimal digits.
std::uint64_t toHandle(std::string_view text);
/// False when the text is no sequence of pairs of hexadecimal digits.
bool toBytes(std::string_view text, std::vector<std::uint8_t>& bytes);

/// The shortest text that reads back as the same double, with a decimal point: "12.5", "12.0", "1e+20".
std::string fromDouble(double value);
std::string fromHandle(std::uint64_t handle);
std::string fromBytes(const void* bytes, std::size_t count);

/// True when both texts mean the same value of this group code.
bool sameValue(int code, std::string_view left, std::string_view right);

} // namespace merix::io
