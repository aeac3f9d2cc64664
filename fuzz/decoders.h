// SPDX-License-Identifier: MIT
// One entry per decoder of untrusted bytes. A fuzzer calls them with bytes of its making; the tests replay the stored
// cases with them. They must return for any bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace merix::fuzz {

using Decoder = void (*)(const std::uint8_t* bytes, std::size_t size);

/// A text DXF: read and written again.
void dxf(const std::uint8_t* bytes, std::size_t size);
/// A binary DXF, with or without its sentinel: made text and binary again, which must give the same bytes.
void binaryDxf(const std::uint8_t* bytes, std::size_t size);
/// Packed bytes of a native drawing, the first four giving the size claimed.
void packed(const std::uint8_t* bytes, std::size_t size);
/// Texts in every code page.
void encoding(const std::uint8_t* bytes, std::size_t size);

struct NamedDecoder {
    const char* name;
    Decoder run;
};
inline constexpr NamedDecoder kDecoders[] = {
    {"dxf", dxf}, {"binary_dxf", binaryDxf}, {"packed", packed}, {"encoding", encoding}};

} // namespace merix::fuzz
