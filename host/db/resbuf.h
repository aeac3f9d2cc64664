// SPDX-License-Identifier: MIT
// Result-buffer chains: lists of group code and value, the contents of an extended record.
#pragma once

#include "host/db/object_id.h"
#include "host/ge/geometry.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

using MxDbValue = std::variant<std::monostate, std::int64_t, double, MxGePoint3d, std::wstring,
                               std::vector<std::uint8_t>, MxDbHandle>;

/// One element of a chain.
struct resbuf {
    resbuf* rbnext = nullptr;
    short restype = 0;
    MxDbValue resval;
};

/// A chain of one element with a text value, which the caller owns; null when memory is exhausted.
resbuf* mxutBuildList(short code, const wchar_t* text);

/// Frees a whole chain; null is allowed.
void mxutRelRb(resbuf* chain);
