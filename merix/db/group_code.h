// SPDX-License-Identifier: MIT
#pragma once

namespace merix::db {

enum class GroupKind { kText, kReal, kPoint, kInt16, kInt32, kInt64, kBool, kBinary, kHandle };

/// The kind of value that a DXF group code carries. Codes that no range covers are text. A point's code is its x
/// (10 to 18, 110 to 112, 210, 211, 1010 to 1013): 20 and 30 more are its y and z.
GroupKind groupKind(int code);

} // namespace merix::db
