// SPDX-License-Identifier: MIT
// The kinds of voice notes.
#pragma once

#include <string>

enum PhonomarkTypeCode : int {
    kPointNote = 0,  ///< at a picked point
    kRegionNote = 1, ///< over a picked rectangle
    kObjectNote = 2, ///< attached to a drawing object
    kReplyNote = 3,  ///< not placed; replies to a note
};

/// The user's word for a type (resource texts 256 to 259); "Point" for any other code.
std::wstring PhonomarkType(int code);

/// The type of the keyword "Point", "Region", "Object" or "Reply", case as written; 0 for any other text.
int PhonomarkType(const wchar_t* keyword);
